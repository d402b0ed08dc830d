#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "contacts/model/IKRPerson.h"

/// What two contacts of the same name have in common: of an organisation its company's name, of a person the parts of
/// the name that the setting chooses. Views, valid as the hold is.
class KRNameKey {
 public:
  struct Part {
    /// How the part is marked in the key, colon included.
    std::string_view label;
    KRText text;
  };

  /// `setting` is that of `KRIssueConfig`, read once a run.
  KRNameKey(const IKRPerson& person, int64_t setting, KRHold& hold);

  std::span<const Part> parts() const noexcept { return {parts_.data(), count_}; }
  /// Whether there is nothing to compare: such a contact shares its name with nobody.
  bool isEmpty() const noexcept { return count_ == 0; }
  /// Writes labels and texts one after the other, nothing between them.
  void append(std::string& to) const;

 private:
  void add(std::string_view label, KRText text) {
    if (!text.isNothing()) parts_[count_++] = {label, text};
  }

  std::array<Part, 3> parts_;
  size_t count_ = 0;
};
