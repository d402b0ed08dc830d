#pragma once

#include <string_view>

#include "platform/KRObject.h"
#include "platform/KRStringTable.h"

class KRData;

/// The texts and images that are compiled into the library. Thread-safe; whatever is returned lives as long as the
/// process, or as long as it is referred to.
class KRResources {
 public:
  /// The bytes of a file by its path in the resources, "images/pic_G.png"; a null view when there is none.
  static std::string_view file(KRText path) noexcept;

  /// An image by its name without folder and ending, "pic_trash_logo1"; nothing for a name that there is not. Every
  /// call for one name gives the same object.
  static KRRef<KRData> imageNamed(KRText name);

  /// The table "Localizable" of a language for which there are texts ("en", "fr"), read on the first call; an empty one
  /// for others.
  static const KRStringTable& strings(KRText language);

  /// The languages for which there is a table, sorted.
  static KRStringList languages();
};
