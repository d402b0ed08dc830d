#include "app/PersonRows.h"

#include <utility>

#include "contacts/model/KRAddressFormater.h"
#include "contacts/model/KRInstantMessageServer.h"
#include "contacts/model/KRProperty.h"

namespace {

class CardRows {
 public:
  enum class Kind { Card, Whole };

  CardRows(const IKRPerson& person, Kind kind) : person_(person), isWhole_(kind == Kind::Whole) {
    isWhole_ ? addNameParts() : addName();
    for (const KRProperty* property : KRProperty::StandardPropertyArray()) add(*property);
    addPhoneticName();
    addPhoto();
    if (!isWhole_) rows_.push_back({"ID", {}, std::string(person.ID().view())});
  }

  std::vector<PersonRow> take() { return std::move(rows_); }

 private:
  /// The name of a company's contact; a person's own stands above the rows.
  void addName() {
    if (!person_.isOrganization() || person_.displayName().isEmpty()) return;
    rows_.push_back({heading(KROrdinal::Name), {}, std::string(person_.displayName().view())});
  }

  /// Every part on a row of its own, so that what is wrong with one can be seen.
  void addNameParts() {
    addText(heading(KROrdinal::Title), person_.readText(KROrdinal::Title, hold_).view());
    const KRNameView name = person_.readName(hold_);
    addText("First Name", name.first.view());
    addText("Middle Name", name.middle.view());
    addText("Last Name", name.last.view());
    addText(heading(KROrdinal::Suffix), person_.readText(KROrdinal::Suffix, hold_).view());
    if (person_.isOrganization()) addText("Company Card", "yes");
  }

  void add(const KRProperty& property) {
    switch (property.ordinal()) {
      case KROrdinal::Name:
      case KROrdinal::Title:
      case KROrdinal::Suffix:
      case KROrdinal::PhoneticFirstName:
      case KROrdinal::PhoneticMiddleName:
      case KROrdinal::PhoneticLastName:
      case KROrdinal::IsOrganization:
      case KROrdinal::Thumbnail:
        return;
      case KROrdinal::Company:
        // The name of a company's own contact stands above the rows already.
        if (person_.isOrganization() && !isWhole_) return;
        break;
      default:
        break;
    }
    if (property.valueType() == KRValueType::TextList) {
      addList(property.ordinal());
    } else if (property.isMultiple()) {
      addEntries(property.ordinal());
    } else {
      addText(heading(property.ordinal()), person_.readText(property.ordinal(), hold_).view());
    }
  }

  void addText(const std::string& heading, std::string_view text) {
    if (!text.empty()) rows_.push_back({heading, {}, std::string(text)});
  }

  void addList(KROrdinal property) {
    std::string all;
    person_.readEntries(property, hold_, [&](const KREntryView& entry) {
      all.append(all.empty() ? "" : ", ").append(entry.text.view());
      return true;
    });
    addText(heading(property), all);
  }

  void addEntries(KROrdinal property) {
    person_.readEntries(property, hold_, [&](const KREntryView& entry) {
      std::string text(entry.text.view());
      if (entry.address != nullptr) text = postal(*entry.address);
      if (property == KROrdinal::InstantMessage && !entry.server.isEmpty()) text += " (" + service(entry.server) + ")";
      rows_.push_back({heading(property), std::string(entry.label.view()), std::move(text)});
      return true;
    });
  }

  void addPhoneticName() {
    std::string name;
    for (const KROrdinal part :
         {KROrdinal::PhoneticFirstName, KROrdinal::PhoneticMiddleName, KROrdinal::PhoneticLastName}) {
      const std::string_view text = person_.readText(part, hold_).view();
      if (!text.empty()) name.append(name.empty() ? "" : " ").append(text);
    }
    addText("Phonetic Name", name);
  }

  void addPhoto() {
    const KRRef<KRData> photo = person_.thumbnail();
    if (!photo) return;
    const size_t size = photo->bytes().size();
    addText(heading(KROrdinal::Thumbnail),
            size < 1024 ? std::to_string(size) + " bytes" : std::to_string(size / 1024) + " kB");
  }

  static std::string heading(KROrdinal property) {
    return std::string(KRProperty::propertyWithOrdinal(property)->displayName().view());
  }

  static std::string service(KRText name) {
    const KRInstantMessageServer* server = KRInstantMessageServer::serverWithName(name);
    return std::string(server == nullptr ? name.view() : server->displayName().view());
  }

  /// The address in the order of the user's country; a postal code stands beside its city or region.
  static std::string postal(const KRAddressView& address) {
    std::string text;
    bool isBeforeCode = false;
    bool wasCode = false;
    for (const KRAddressFieldItem* item : KRAddressFormater::fieldArrayLocal()) {
      const std::string_view field = address.fields[static_cast<size_t>(item->field())].view();
      if (field.empty()) continue;
      const bool isCode = item->field() == KRAddressField::PostalCode;
      const bool isPlace = item->field() == KRAddressField::City || item->field() == KRAddressField::Region;
      text += text.empty() ? "" : (isCode && isBeforeCode) || (wasCode && isPlace) ? " " : ", ";
      appendInOneLine(text, field);
      isBeforeCode = isPlace;
      wasCode = isCode;
    }
    if (address.further != nullptr) {
      for (const KRObjectAddress::Field& field : *address.further) {
        text += text.empty() ? "" : ", ";
        appendInOneLine(text, field.value.view());
      }
    }
    const std::string_view code = address.countryCode.view();
    const bool namesCountry = !address.fields[static_cast<size_t>(KRAddressField::Country)].isEmpty();
    if (!code.empty() && !namesCountry) text.append(text.empty() ? "" : ", ").append(code);
    return text;
  }

  static void appendInOneLine(std::string& text, std::string_view field) {
    for (const char c : field) {
      if (c == '\n') {
        text += ", ";
      } else if (c != '\r') {
        text += c;
      }
    }
  }

  const IKRPerson& person_;
  bool isWhole_;
  KRHold hold_;
  std::vector<PersonRow> rows_;
};

}  // namespace

std::vector<PersonRow> PersonRows::ofCard(const IKRPerson& person) {
  return CardRows(person, CardRows::Kind::Card).take();
}

std::vector<PersonRow> PersonRows::whole(const IKRPerson& person) {
  return CardRows(person, CardRows::Kind::Whole).take();
}
