#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
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
  /// What the head says; valid until the next call. `end`, which does not lie before the head's, is how far the bytes
  /// behind it may be looked at, too: where there are some, looking is faster.
  const KRVCardHead& find(std::string_view head, const char* end);

 private:
  static constexpr size_t kSlots = 512;
  static constexpr size_t kLongest = 128;
  /// The first bytes of a head, with zeros behind it: those of nearly all are its whole text.
  using Words = std::array<uint64_t, 5>;
  static constexpr size_t kWindow = sizeof(Words);

  struct Known {
    Words words{};
    size_t size = 0;
    /// What of a longer one stands behind its words.
    std::string rest;
    KRVCardHead head;
  };

  static Words wordsOf(std::string_view head, const char* end) noexcept;
  [[gnu::noinline]] static Words copiedWordsOf(std::string_view start) noexcept;
  static std::string_view restOf(std::string_view head) noexcept;
  static bool isSame(const Known* known, const Words& words, std::string_view head) noexcept;
  /// Reads a new head; rare, and apart so that the others do not save the registers that it takes.
  [[gnu::noinline]] const KRVCardHead& keep(std::string_view head, const Words& words, size_t slot);

  /// Each head stands in its slot or in the one beside it.
  std::array<std::unique_ptr<Known>, kSlots> slots_;
  KRVCardHead other_;
};
