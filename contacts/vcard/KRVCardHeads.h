#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "contacts/vcard/KRVCardParameters.h"
#include "contacts/vcard/KRVCardProperty.h"

/// What stands before the colon of a line, told apart.
struct KRVCardHead {
  /// A part of the head by its place in it.
  struct Part {
    size_t offset = 0;
    size_t size = 0;

    std::string_view of(const char* head) const noexcept { return {head + offset, size}; }
  };

  /// Without blanks around it; empty for none.
  Part group;
  Part name;
  /// From the first ";" to the end.
  Part parameterText;
  /// What the name means; never null.
  const KRVCardProperty* property = nullptr;
  KRVCardParameters parameters;
};

/// Tells heads apart and remembers them by their exact bytes, as a file repeats few different ones: a few dozen stand
/// before nearly all its values. Holds some hundred heads at most, none of them long, whatever a file has. Not locked.
class KRVCardHeads {
 public:
  /// What the head says; valid until the next call.
  const KRVCardHead& find(std::string_view head);

 private:
  static constexpr size_t kSlots = 512;
  static constexpr size_t kLongest = 128;

  struct Known {
    std::array<char, kLongest> text;
    size_t size = 0;
    KRVCardHead head;
  };

  static bool isSame(const Known* known, std::string_view head) noexcept;
  const KRVCardHead& keep(std::string_view head, size_t slot);

  /// Each head stands in its slot or in the one beside it.
  std::array<std::unique_ptr<Known>, kSlots> slots_;
  KRVCardHead other_;
};
