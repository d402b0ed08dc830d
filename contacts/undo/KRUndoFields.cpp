#include "contacts/undo/KRUndoFields.h"

#include <cstring>
#include <utility>

#include "contacts/undo/KRUndoMark.h"

namespace {

constexpr std::string_view kForm = "KRUNDO1\n";
/// The length of a text of nothing.
constexpr uint64_t kNothing = ~uint64_t{0};

void append(std::string& bytes, uint64_t word) {
  // The bytes in a fixed order: a home folder may move to another machine.
  for (unsigned shift = 0; shift < 64; shift += 8) bytes += static_cast<char>(word >> shift & 0xFFU);
}

uint64_t wordAt(std::string_view bytes) noexcept {
  uint64_t word = 0;
  for (unsigned i = 8; i-- > 0;) word = word << 8U | static_cast<unsigned char>(bytes[i]);
  return word;
}

}  // namespace

KRUndoWriter::KRUndoWriter() : bytes_(kForm) {}

KRUndoWriter& KRUndoWriter::add(KRText text) {
  append(bytes_, text.isNothing() ? kNothing : text.view().size());
  bytes_ += text.view();
  return *this;
}

KRUndoWriter& KRUndoWriter::add(int64_t number) {
  append(bytes_, static_cast<uint64_t>(number));
  return *this;
}

std::string KRUndoWriter::take() {
  append(bytes_, krUndoMark(bytes_));
  return std::move(bytes_);
}

KRUndoReader::KRUndoReader(std::string_view bytes) noexcept {
  isOk_ = bytes.size() >= kForm.size() + 8 && bytes.substr(0, kForm.size()) == kForm;
  if (!isOk_) return;
  const std::string_view content = bytes.substr(0, bytes.size() - 8);
  isOk_ = wordAt(bytes.substr(content.size())) == krUndoMark(content);
  if (isOk_) rest_ = content.substr(kForm.size());
}

std::optional<uint64_t> KRUndoReader::word() noexcept {
  if (!isOk_ || rest_.size() < 8) {
    isOk_ = false;
    rest_ = {};
    return std::nullopt;
  }
  const uint64_t word = wordAt(rest_);
  rest_.remove_prefix(8);
  return word;
}

KRText KRUndoReader::text() noexcept {
  const std::optional<uint64_t> size = word();
  if (!size || *size == kNothing) return {};
  if (*size > rest_.size()) {
    isOk_ = false;
    rest_ = {};
    return {};
  }
  const std::string_view text = rest_.substr(0, *size);
  rest_.remove_prefix(*size);
  return text.data() == nullptr ? KRText("") : KRText(text);
}

int64_t KRUndoReader::number() noexcept {
  return static_cast<int64_t>(word().value_or(0));
}
