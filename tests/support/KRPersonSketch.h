#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "contacts/KRTempPerson.h"
#include "contacts/model/ABPerson.h"
#include "contacts/model/KRObjectEmail.h"
#include "contacts/model/KRObjectPersonName.h"
#include "contacts/model/KRObjectPhone.h"
#include "tests/support/KRHostPerson.h"

/// Every kind of person that rules must treat alike.
using KRPersonKinds = testing::Types<KRHostPerson, KRTempPerson, ABPerson>;
/// Those for which setting a value of nothing clears the property.
using KRClearingPersonKinds = testing::Types<KRHostPerson, ABPerson>;

/// What a test says about a person; what it leaves out, the person does not hold.
struct KRPersonSketch {
  KRString first{};
  KRString middle{};
  KRString last{};
  /// Gives a name value although all three parts are nothing.
  bool hasName = false;
  KRString title{};
  KRString suffix{};
  KRString nickname{};
  KRString note{};
  KRString company{};
  KRString jobTitle{};
  std::vector<KRString> phones{};
  std::vector<KRString> emails{};
  bool isOrganization = false;
};

inline KRRef<KRMutableSingleValue> krLabelled(KRValue value, int32_t type, const KRString& label = "home"_kr) {
  auto labelled = krMake<KRMutableSingleValue>();
  labelled->setValue(std::move(value));
  labelled->setLabel(krMake<KRLabel>(label));
  labelled->setType(type);
  return labelled;
}

/// A multiple value with an `Object` for every text.
template <class Object>
KRRef<KRMutableMultipleValue> krEntries(const std::vector<KRString>& texts, int32_t type) {
  auto entries = krMake<KRMutableMultipleValue>();
  for (const KRString& text : texts) entries->addValue(krLabelled(krMake<Object>(text), type));
  return entries;
}

/// Sets what the sketch has, through the person protocol.
inline void krFill(IKRPerson& person, const KRPersonSketch& sketch) {
  const auto set = [&](const KRString& property, const KRString& text) {
    if (!text.isNothing()) person.setValue(krLabelled(text, KRValueType::Text), property);
  };
  if (sketch.hasName || !sketch.first.isNothing() || !sketch.middle.isNothing() || !sketch.last.isNothing()) {
    auto name = krMake<KRObjectPersonName>(sketch.first, sketch.middle, sketch.last);
    person.setValue(krLabelled(std::move(name), KRValueType::PersonName), KRProPertyName);
  }
  set(KRProPertyTitle, sketch.title);
  set(KRProPertySuffix, sketch.suffix);
  set(KRProPertyNickname, sketch.nickname);
  set(KRProPertyNote, sketch.note);
  set(KRProPertyCompany, sketch.company);
  set(KRProPertyJobTitle, sketch.jobTitle);
  if (sketch.isOrganization) set(KRProPertyIsOrganization, "YES"_kr);
  if (!sketch.phones.empty()) {
    person.setValue(krEntries<KRObjectPhone>(sketch.phones, KRValueType::Phone), KRProPertyPhone);
  }
  if (!sketch.emails.empty()) {
    person.setValue(krEntries<KRObjectEmail>(sketch.emails, KRValueType::Email), KRProPertyEmail);
  }
}

/// A new person of that kind, filled.
template <class Person>
KRRef<IKRPerson> krPerson(const KRPersonSketch& sketch) {
  const KRRef<IKRPerson> person = krMake<Person>();
  krFill(*person, sketch);
  return person;
}
