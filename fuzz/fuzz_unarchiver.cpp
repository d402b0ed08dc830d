// Any bytes as a keyed archive: what reads as one is archived and read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/KRKeyedArchiver.h"
#include "platform/KRKeyedUnarchiver.h"

namespace {

/// An object with a field of each kind, under the name that the archives among the test data have.
class KRArchivedNode : public KRObject {
 public:
  KRText archiveClassName() const override { return "KRArchivedNode"; }
  void encodeWithCoder(KRKeyedArchiver& coder) const override {
    coder.encode(name_, "name");
    if (number_) coder.encodeInteger(*number_, "number");
    if (flag_) coder.encodeBool(*flag_, "flag");
    if (weight_) coder.encodeNumber(*weight_, "weight");
    coder.encode(value_, "value");
  }
  static KRRef<KRObject> decode(KRKeyedUnarchiver& coder) {
    auto node = krMake<KRArchivedNode>();
    node->name_ = coder.decode("name");
    node->number_ = coder.decodeInteger("number");
    node->flag_ = coder.decodeBool("flag");
    node->weight_ = coder.decodeNumber("weight");
    node->value_ = coder.decode("value");
    return node;
  }

 private:
  KRValue name_;
  std::optional<int64_t> number_;
  std::optional<bool> flag_;
  std::optional<double> weight_;
  KRValue value_;
};

constexpr KRArchiveClass kClasses[] = {{"KRArchivedNode", KRArchivedNode::decode}};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto value = KRKeyedUnarchiver::unarchive({reinterpret_cast<const char*>(data), size}, kClasses);
  if (!value) return 0;
  const std::string archive = KRKeyedArchiver::archivedData(*value);
  const auto again = KRKeyedUnarchiver::unarchive(archive, kClasses);
  // What may be held grows with the file, so a smaller archive may hold less.
  if (!again && archive.size() >= size) std::abort();
  // Equal data may have become one object, which then stays one.
  if (again) {
    const std::string second = KRKeyedArchiver::archivedData(*again);
    const auto third = KRKeyedUnarchiver::unarchive(second, kClasses);
    if (third && KRKeyedArchiver::archivedData(*third) != second) std::abort();
  }
  return 0;
}
