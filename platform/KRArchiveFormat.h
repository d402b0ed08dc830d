#pragma once

#include <cstdint>
#include <string>

#include "platform/KRText.h"

/// The names of the keyed-archive format, for its writer and its reader.
namespace KRArchiveFormat {

inline constexpr KRText kArchiverKey = "$archiver";
inline constexpr KRText kArchiver = "NSKeyedArchiver";
inline constexpr KRText kVersionKey = "$version";
inline constexpr int64_t kVersion = 100000;
inline constexpr KRText kTopKey = "$top";
inline constexpr KRText kRootKey = "root";
inline constexpr KRText kObjectsKey = "$objects";
/// What stands at the first place of "$objects" and means nothing.
inline constexpr KRText kNull = "$null";

inline constexpr KRText kClassKey = "$class";
inline constexpr KRText kClassNameKey = "$classname";
inline constexpr KRText kClassesKey = "$classes";
inline constexpr KRText kRootClass = "NSObject";

inline constexpr KRText kElementsKey = "NS.objects";
inline constexpr KRText kKeysKey = "NS.keys";
inline constexpr KRText kInstantKey = "NS.time";
inline constexpr KRText kBytesKey = "NS.data";
inline constexpr KRText kTextKey = "NS.string";

/// A calendar date is a record of our own.
inline constexpr KRText kCalendarDate = "KRDate";
inline constexpr KRText kYearKey = "year";
inline constexpr KRText kMonthKey = "month";
inline constexpr KRText kDayKey = "day";

/// A field's key as the record has it: keys that begin with '$' are the format's own, so another is put before it.
/// `room` holds the key where it had to be changed.
inline KRText escaped(KRText key, std::string& room) {
  if (!key.view().starts_with('$')) return key;
  room = "$";
  room += key.view();
  return KRText(room);
}

}  // namespace KRArchiveFormat
