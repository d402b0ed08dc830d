#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "contacts/model/ABPerson.h"
#include "contacts/vcard/KRVCardComposer.h"
#include "contacts/vcard/KRVCardOutline.h"
#include "contacts/vcard/KRVCardPlan.h"

/// Plans the lines of one multiple value that has changed: which entries stay, which line each changed one goes on, and
/// where new ones stand.
class KRVCardEntryRewriter {
 public:
  /// `original` is the person as its card has it.
  KRVCardEntryRewriter(const ABPerson& person, const ABPerson& original, KROrdinal property,
                       const KRVCardOutline& outline, KRVCardComposer& composer, KRVCardPlan& plan);

  void plan();

 private:
  struct Entry {
    KREntryView view;
    KRAddressView address;
    bool isMain = false;
  };

  static std::vector<Entry> entriesOf(const ABPerson& person, KROrdinal property, KRHold& hold);
  void settleMain();
  KRVCardComposer::Lines lines(const Entry& entry, const KRVCardRemainder& remainder);
  void change(size_t old, size_t made);
  KRVCardRemainder remainder(const KRVCardOutline::Line& line, const Entry& old, const Entry& made);
  void keepMainFirst(const std::vector<std::optional<size_t>>& match);
  const KRVCardOutline::Line* lineOf(size_t old) const { return outline_.lineOf(property_, old); }

  KROrdinal property_;
  const KRVCardOutline& outline_;
  KRVCardComposer& composer_;
  KRVCardPlan& plan_;
  KRHold hold_;
  std::vector<Entry> old_;
  std::vector<Entry> new_;
};
