#pragma once

#include <string>
#include <vector>

#include "import/KRCSVReading.h"
#include "platform/KRBuffer.h"

/// The bytes as the text of a delimited file.
inline KRCSVText krCSVText(std::string_view bytes) {
  KRBuffer buffer;
  static_cast<void>(buffer.append(bytes));
  return KRCSVText::of(std::move(buffer), KRCSVText::Fallback::Western);
}

inline KRCSVReading krCSVReading(std::string_view bytes, const KRCSVDialect& dialect = KRCSVDialect::rfc4180()) {
  return KRCSVReading::of(krCSVText(bytes), dialect);
}

/// The persons of a reading, and the notes about them.
struct KRCSVPersons {
  std::vector<KRRef<KRTempPerson>> persons;
  std::vector<KRPersonLoadNote> notes;

  static KRCSVPersons of(KRCSVReading reading) {
    KRCSVPersons all;
    reading.persons(
        [&](const KRRef<KRTempPerson>& person, size_t) {
          all.persons.push_back(person);
          return true;
        },
        [&](const KRPersonLoadNote& note) { all.notes.push_back(note); });
    return all;
  }
  static KRCSVPersons of(std::string_view bytes) { return of(krCSVReading(bytes)); }
};
