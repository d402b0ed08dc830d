#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/KRText.h"

/// Writes the bytes of a file of an undo record: fields one behind the other, between the form's name and a mark of
/// them all, so that a file which was cut or changed is found out.
class KRUndoWriter {
 public:
  KRUndoWriter();
  /// A text of nothing comes back as nothing.
  KRUndoWriter& add(KRText text);
  KRUndoWriter& addBytes(std::string_view bytes) { return add(KRText(bytes)); }
  KRUndoWriter& add(int64_t number);
  KRUndoWriter& addMark(uint64_t mark) { return add(static_cast<int64_t>(mark)); }
  /// All of it. To be called once.
  std::string take();

 private:
  std::string bytes_;
};

/// Reads what `KRUndoWriter` wrote. Once a field is not there, or the bytes are damaged, it is not well any more, and
/// every further field is nothing or 0. The bytes must outlive it.
class KRUndoReader {
 public:
  explicit KRUndoReader(std::string_view bytes) noexcept;

  bool isOk() const noexcept { return isOk_; }
  /// Whether all fields were read.
  bool isAtEnd() const noexcept { return rest_.empty(); }
  /// Borrowed from the bytes.
  KRText text() noexcept;
  std::string_view bytes() noexcept { return text().view(); }
  int64_t number() noexcept;
  uint64_t mark() noexcept { return static_cast<uint64_t>(number()); }

 private:
  std::optional<uint64_t> word() noexcept;

  std::string_view rest_;
  bool isOk_ = true;
};
