#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "contacts/vcard/KRVCardComposer.h"
#include "contacts/vcard/KRVCardLineWriter.h"
#include "contacts/vcard/KRVCardOutline.h"
#include "contacts/vcard/KRVCardRewriter.h"

/// What is to become of each line of a card. Lines are those of the outline, which must live as long.
class KRVCardPlan {
 public:
  KRVCardPlan(const KRVCardOutline& outline, std::string_view charset);

  /// The line goes.
  void drop(const KRVCardOutline::Line& line);
  /// New lines stand in its place.
  void replace(const KRVCardOutline::Line& line, const KRVCardComposer::Lines& lines);
  /// New lines stand before it, respectively behind it and what its group says of it.
  void insertBefore(const KRVCardOutline::Line& line, const KRVCardComposer::Lines& lines);
  void insertBehind(const KRVCardOutline::Line& line, const KRVCardComposer::Lines& lines);
  /// New lines stand before the END line.
  void insertAtEnd(const KRVCardComposer::Lines& lines);

  bool isKept(const KRVCardOutline::Line& line) const { return at(line).fate == Fate::Kept; }
  /// The edits, in order. Labels and country codes of groups that nobody is in any more go too.
  std::vector<KRVCardEdit> edits();

 private:
  enum class Fate { Kept, Dropped, Replaced };
  struct Step {
    Fate fate = Fate::Kept;
    std::string before{};
    std::string text{};
    std::string behind{};
    /// The group of the new lines, when there is one.
    std::string group{};
  };

  size_t place(const KRVCardOutline::Line& line) const;
  const Step& at(const KRVCardOutline::Line& line) const { return steps_[place(line)]; }
  Step& at(const KRVCardOutline::Line& line) { return steps_[place(line)]; }
  std::string text(const KRVCardComposer::Lines& lines) const;
  void dropEmptyGroups();

  const KRVCardOutline& outline_;
  KRVCardLineWriter writer_;
  std::vector<Step> steps_;
  std::string atEnd_;
};
