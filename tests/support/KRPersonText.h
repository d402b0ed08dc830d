#pragma once

#include <string>

#include "contacts/model/IKRPerson.h"

/// Everything that a person holds in standard properties, a line each, such as "phone home: 123"; nothing is told from
/// empty. Two persons of the same text are the same contact.
inline std::string krPersonText(const IKRPerson& person) {
  const auto shown = [](KRText text) {
    return text.isNothing() ? std::string("-") : "'" + std::string(text.view()) + "'";
  };
  std::string all;
  KRHold hold;
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const std::string name(property->name().view());
    if (property->ordinal() == KROrdinal::Name) {
      const KRNameView parts = person.readName(hold);
      if (parts.isPresent) all += name + ": " + shown(parts.first) + shown(parts.middle) + shown(parts.last) + "\n";
    } else if (property->ordinal() == KROrdinal::Thumbnail) {
      if (const auto image = person.imageData()) all += name + ": " + std::string(image->description().view()) + "\n";
    } else if (property->isMultiple() || property->ordinal() == KROrdinal::Tags) {
      person.readEntries(property->ordinal(), hold, [&](const KREntryView& entry) {
        all += name + " " + shown(entry.label) + ": " + shown(entry.text);
        if (!entry.server.isNothing()) all += " at " + shown(entry.server);
        if (entry.address != nullptr) {
          for (const KRText field : entry.address->fields) all += shown(field);
          all += shown(entry.address->countryCode);
        }
        all += "\n";
        return true;
      });
    } else if (const KRText text = person.readText(property->ordinal(), hold); !text.isNothing()) {
      all += name + ": " + shown(text) + "\n";
    }
  }
  return all;
}
