#include "platform/KRBinaryPlistSource.h"

namespace {

/// Number of no value.
constexpr uint64_t kNone = 0xFFFFFFFFU;

void set(KRBinaryPlistValue& value, KRBinaryPlistKind kind, uint64_t bits) noexcept {
  value.kind = static_cast<uint8_t>(kind);
  value.bits = bits;
}

}  // namespace

std::optional<KRBinaryPlistSource> KRBinaryPlistSource::open(std::string_view bytes) {
  if (bytes.size() < kKRBinaryPlistMagic.size() + kKRBinaryPlistTrailerSize || !bytes.starts_with(kKRBinaryPlistMagic))
    return std::nullopt;
  KRBinaryPlistSource source;
  source.bytes_ = bytes;
  const uint64_t trailer = bytes.size() - kKRBinaryPlistTrailerSize;
  source.offsetSize_ = static_cast<unsigned char>(bytes[trailer + 6]);
  source.referenceSize_ = static_cast<unsigned char>(bytes[trailer + 7]);
  source.count_ = source.number(trailer + 8, 8);
  source.root_ = source.number(trailer + 16, 8);
  source.tableOffset_ = source.number(trailer + 24, 8);
  const auto isSize = [](unsigned size) { return size >= 1 && size <= 8; };
  if (!isSize(source.offsetSize_) || !isSize(source.referenceSize_)) return std::nullopt;
  if (source.tableOffset_ < kKRBinaryPlistMagic.size() || source.tableOffset_ > trailer) return std::nullopt;
  if (source.count_ >= kNone || source.root_ >= source.count_) return std::nullopt;
  // Every value has at least one byte.
  if (source.count_ > (trailer - source.tableOffset_) / source.offsetSize_ || source.count_ > source.room()) {
    return std::nullopt;
  }
  return source;
}

uint64_t KRBinaryPlistSource::room() const noexcept {
  return tableOffset_ - kKRBinaryPlistMagic.size();
}

bool KRBinaryPlistSource::fits(uint64_t offset, uint64_t count, uint64_t size) const noexcept {
  return offset <= tableOffset_ && count <= (tableOffset_ - offset) / size;
}

KRBinaryPlistSource::Found KRBinaryPlistSource::find(uint64_t place) const noexcept {
  const uint64_t begin = number(tableOffset_ + place * offsetSize_, offsetSize_);
  if (begin < kKRBinaryPlistMagic.size() || !fits(begin, 1, 1)) return {};
  const auto marker = static_cast<unsigned char>(bytes_[begin]);
  const unsigned info = marker & 0x0FU;
  uint64_t at = begin + 1;
  Found found;
  Value& value = found.value;
  bool isGood = false;
  switch (marker >> 4U) {
    case 0x0:
      isGood = readSimple(info, value);
      break;
    case 0x1:
      isGood = readInteger(at, info, value);
      break;
    case 0x2:
    case 0x3:
      isGood = readReal(at, marker, value);
      break;
    case 0x4:
      isGood = readSized(at, info, Kind::Data, 1, value);
      break;
    case 0x5:
      isGood = readSized(at, info, Kind::Text, 1, value);
      break;
    case 0x6:
      isGood = readSized(at, info, Kind::Text, 2, value);
      value.home = Value::Wide;
      break;
    case 0x8:
      isGood = readUid(at, info, value);
      break;
    case 0xA:
      isGood = readSized(at, info, Kind::Array, referenceSize_, value);
      break;
    case 0xD:
      isGood = readSized(at, info, Kind::Dictionary, referenceSize_ * 2, value);
      break;
    default:
      // Sets, and what no program writes.
      break;
  }
  if (!isGood) return {};
  found.size = at - begin;
  return found;
}

KRBinaryPlistLinks KRBinaryPlistSource::links(const Value& container) const noexcept {
  const size_t count = container.linkCount();
  return count == 0 ? KRBinaryPlistLinks() : KRBinaryPlistLinks(bytes_.data() + container.bits, referenceSize_, count);
}

bool KRBinaryPlistSource::readSimple(unsigned info, Value& value) const noexcept {
  switch (info) {
    case 0x0:
      set(value, Kind::Null, 0);
      return true;
    case 0x8:
    case 0x9:
      set(value, Kind::Truth, info - 0x8);
      return true;
    default:
      return false;
  }
}

bool KRBinaryPlistSource::readInteger(uint64_t& at, unsigned info, Value& value) const noexcept {
  if (info > 4) return false;
  const unsigned size = 1U << info;
  if (!fits(at, 1, size)) return false;
  const uint64_t from = at;
  at += size;
  if (size < 16) {
    // Numbers of fewer than eight bytes have no sign.
    set(value, Kind::Integer, number(from, size));
    return true;
  }
  const uint64_t high = number(from, 8);
  const uint64_t low = number(from + 8, 8);
  if (high == 0) {
    set(value, low > INT64_MAX ? Kind::Unsigned : Kind::Integer, low);
    return true;
  }
  set(value, Kind::Integer, low);
  return high == UINT64_MAX && low > INT64_MAX;
}

bool KRBinaryPlistSource::readReal(uint64_t& at, unsigned marker, Value& value) const noexcept {
  const unsigned info = marker & 0x0FU;
  const bool isInstant = marker >> 4U == 0x3;
  if (info != 3 && (isInstant || info != 2)) return false;
  const unsigned size = 1U << info;
  if (!fits(at, 1, size)) return false;
  uint64_t bits = number(at, size);
  if (size == 4) bits = std::bit_cast<uint64_t>(static_cast<double>(std::bit_cast<float>(static_cast<uint32_t>(bits))));
  at += size;
  set(value, isInstant ? Kind::Instant : Kind::Real, bits);
  return true;
}

bool KRBinaryPlistSource::readUid(uint64_t& at, unsigned info, Value& value) const noexcept {
  const unsigned size = info + 1;
  if (size > 8 || !fits(at, 1, size)) return false;
  set(value, Kind::Uid, number(at, size));
  at += size;
  return true;
}

bool KRBinaryPlistSource::readSized(uint64_t& at, unsigned info, Kind kind, unsigned width,
                                    Value& value) const noexcept {
  uint64_t count = 0;
  if (!readCount(at, info, count) || !fits(at, count, width)) return false;
  set(value, kind, at);
  // A file has fewer bytes than 48 bits can count.
  value.size = count & 0xFFFFFFFFFFFFU;
  at += count * width;
  return true;
}

bool KRBinaryPlistSource::readCount(uint64_t& at, unsigned info, uint64_t& count) const noexcept {
  if (info != 0xF) {
    count = info;
    return true;
  }
  // A longer count is an integer of its own, right behind the marker.
  if (!fits(at, 1, 1)) return false;
  const auto marker = static_cast<unsigned char>(bytes_[at]);
  const unsigned size = 1U << (marker & 0x0FU);
  if (marker >> 4U != 0x1 || size > 8 || !fits(at + 1, 1, size)) return false;
  count = number(at + 1, size);
  at += size + 1;
  return true;
}
