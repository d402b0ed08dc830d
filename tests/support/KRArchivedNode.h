#pragma once

#include <span>
#include <string>
#include <utility>

#include "platform/KRKeyedArchiver.h"
#include "platform/KRKeyedUnarchiver.h"

/// An object for archives in tests: a field of each kind.
class KRArchivedNode : public KRObject {
 public:
  KRArchivedNode() = default;
  explicit KRArchivedNode(KRString name) : name(std::move(name)) {}

  KRText archiveClassName() const override { return "KRArchivedNode"; }

  void encodeWithCoder(KRKeyedArchiver& coder) const override {
    coder.encode(name, "name");
    coder.encodeInteger(number, "number");
    coder.encodeBool(flag, "flag");
    coder.encodeNumber(weight, "weight");
    if (!value.isNothing()) coder.encode(value, "value");
  }

  static KRRef<KRObject> decode(KRKeyedUnarchiver& coder) {
    auto node = krMake<KRArchivedNode>(coder.decode("name").text());
    node->number = coder.decodeInteger("number").value_or(0);
    node->flag = coder.decodeBool("flag").value_or(false);
    node->weight = coder.decodeNumber("weight").value_or(0);
    node->value = coder.decode("value");
    return node;
  }

  static std::span<const KRArchiveClass> classes() {
    static constexpr KRArchiveClass only[] = {{"KRArchivedNode", KRArchivedNode::decode}};
    return only;
  }

  bool isEqual(const KRObject* other) const override {
    const auto* node = dynamic_cast<const KRArchivedNode*>(other);
    return node != nullptr && node->name == name && node->number == number && node->flag == flag &&
           node->weight == weight && node->value.isEqual(value);
  }
  uint64_t hash() const override { return name.hash(); }
  KRString description() const override {
    return krConcat({name, "#", KRString(std::to_string(number)), flag ? "+" : "-", KRString(std::to_string(weight)),
                     "=", value.description()});
  }

  KRString name;
  int64_t number = 0;
  bool flag = false;
  double weight = 0;
  KRValue value;
};
