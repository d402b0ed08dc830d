#include "import/KRCSVLabels.h"

#include <algorithm>
#include <utility>

#include "contacts/model/KRLabelTable.h"
#include "import/KRCSVWords.h"
#include "platform/KRASCII.h"

std::string_view krCSVWithoutStar(std::string_view text) noexcept {
  text = krCSVTrimmed(text);
  if (text.starts_with("* ")) text = krCSVTrimmed(text.substr(2));
  return text;
}

std::string krCSVUsualLabel(std::string_view text) {
  constexpr std::string_view kUsual[] = {"home",      "work",     "other",    "mobile",     "main", "pager",
                                         "fax",       "home fax", "work fax", "iphone",     "cell", "other fax",
                                         "home page", "profile",  "spouse",   "anniversary"};
  const std::string lowered = krLowerASCII(text);
  if (lowered == "iphone") return "iPhone";
  if (lowered == "cell") return "mobile";
  if (lowered == "homefax") return "home fax";
  if (lowered == "workfax") return "work fax";
  return std::find(std::begin(kUsual), std::end(kUsual), lowered) != std::end(kUsual) ? lowered : std::string(text);
}

KRRef<KRLabel> krCSVSharedLabel(KRText name) {
  if (name.isNothing()) return {};
  if (const uint16_t number = KRLabelTable::number(name); number != 0) return KRLabelTable::label(number);
  return krMake<KRLabel>(KRString(name));
}

KRCSVSingles::KRCSVSingles() {
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    labels_[static_cast<size_t>(property->ordinal())] = krCSVSharedLabel(property->displayName());
  }
}

void KRCSVSingles::set(KRTempPerson& person, KROrdinal property, KRValue value) const {
  const KRProperty* descriptor = KRProperty::propertyWithOrdinal(property);
  person.setValue(
      krMake<KRMutableSingleValue>(std::move(value), labels_[static_cast<size_t>(property)], descriptor->valueType()),
      descriptor);
}
