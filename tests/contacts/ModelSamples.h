#pragma once

#include <map>
#include <random>
#include <string>

#include "contacts/model/IKRPerson.h"
#include "contacts/model/KRInstantMessageServer.h"
#include "contacts/model/KRObjectAddress.h"
#include "contacts/model/KRObjectInstantMessage.h"
#include "contacts/model/KRObjectPersonName.h"

/// A host's own kind of person: it implements what it must and inherits everything else.
class HostPerson : public IKRPerson {
 public:
  KRString ID() const override { return "host-1"_kr; }
  KRString addressBookID() const override { return "host-book"_kr; }
  KRString displayName() const override { return "Host Person"_kr; }
  using IKRPerson::setValue;
  KRRef<KRStoredValue> valueByPropertyName(const KRString& name) const override {
    const auto found = values_.find(std::string(name.view()));
    return found != values_.end() ? found->second : KRRef<KRStoredValue>();
  }
  void setValue(KRRef<KRStoredValue> value, const KRString& byPropertyName) override {
    if (value) {
      values_[std::string(byPropertyName.view())] = std::move(value);
    } else {
      values_.erase(std::string(byPropertyName.view()));
    }
  }

 private:
  std::map<std::string, KRRef<KRStoredValue>> values_;
};

/// Makes random values of the contact model from a small stock of texts, so that equal ones come up often.
class ModelSamples {
 public:
  explicit ModelSamples(uint32_t seed) : random_(seed) {}

  size_t upTo(size_t most) { return std::uniform_int_distribution<size_t>(0, most)(random_); }
  bool chance(size_t of) { return upTo(of - 1) == 0; }

  KRString text() {
    static constexpr KRString stock[] = {
        KRString(),    ""_kr,    " "_kr,      "Ann"_kr,          "ann"_kr,     "Lee"_kr,
        "A\"b"_kr,     "a\\"_kr, "(null)"_kr, "\xE6\x9D\x8E"_kr, "x, y: z"_kr, "line\nbreak"_kr,
        "tab\tstop"_kr};
    return stock[upTo(std::size(stock) - 1)];
  }
  KRValue textValue() { return text(); }
  KRRef<KRObjectPersonName> name() { return krMake<KRObjectPersonName>(text(), text(), text()); }
  KRRef<KRObjectAddress> address() {
    auto address = krMake<KRObjectAddress>();
    if (chance(2)) address->setCountryCode(text());
    for (size_t i = upTo(3); i > 0; --i) {
      const size_t place = upTo(kKRAddressFieldCount + 1);
      address->setStringValue(text(), place < kKRAddressFieldCount ? kKRAddressFieldNames[place] : text());
    }
    return address;
  }
  KRRef<KRObjectInstantMessage> account() {
    return krMake<KRObjectInstantMessage>(text(), KRInstantMessageServer::serverWithName(text()));
  }
  KRDate date() {
    const auto day = static_cast<int>(upTo(2)) + 1;
    return *KRDate::make(chance(3) ? std::nullopt : std::optional<int>(1990), 3, day);
  }
  KRRef<KRLabel> label() { return chance(4) ? KRRef<KRLabel>() : krMake<KRLabel>(text()); }

  /// A value of the kind that a type code stands for; sometimes nothing.
  KRValue value(int32_t type) {
    if (chance(8)) return {};
    switch (type) {
      case KRValueType::Date:
        return date();
      case KRValueType::PersonName:
        return name();
      case KRValueType::Phone:
        return krMake<KRObjectPhone>(text());
      case KRValueType::Email:
        return krMake<KRObjectEmail>(text());
      case KRValueType::Address:
        return address();
      case KRValueType::TextList:
        return KRRef<KRObject>(krMake<KRValueList>(std::vector<KRValue>{"friends"_kr, text(), text()}));
      case KRValueType::Data:
        return krMake<KRData>(text().view());
      case KRValueType::InstantMessage:
        return account();
      default:
        return text();
    }
  }
  KRRef<KRMutableSingleValue> single(int32_t type) { return krMake<KRMutableSingleValue>(value(type), label(), type); }
  KRRef<KRMutableMultipleValue> multiple(int32_t type) {
    auto values = krMake<KRMutableMultipleValue>();
    for (size_t i = upTo(3); i > 0; --i) values->addValue(single(type));
    if (chance(2)) values->setMainIndex(upTo(3));
    return values;
  }
  KRRef<KRStoredValue> stored(const KRProperty& property) {
    if (property.isMultiple()) return multiple(property.subValueType());
    return single(property.valueType());
  }
  /// A stored value of any kind, also of one that its property does not hold.
  KRRef<KRStoredValue> anyStored() {
    const auto& all = KRProperty::StandardPropertyArray();
    return stored(*all[upTo(all.size() - 1)]);
  }

 private:
  std::mt19937 random_;
};
