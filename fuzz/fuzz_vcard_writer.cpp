#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "contacts/vcard/KRVCardFile.h"
#include "contacts/vcard/KRVCardRewriter.h"
#include "contacts/vcard/KRVCardWriter.h"

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

/// All that a person shows, through the reading interface.
std::string shown(const ABPerson& person) {
  std::string text;
  KRHold hold;
  const auto add = [&](KRText part) { text.append(part.view()).push_back('\x1F'); };
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const KROrdinal ordinal = property->ordinal();
    add(property->name());
    add(person.readText(ordinal, hold));
    person.readEntries(ordinal, hold, [&](const KREntryView& entry) {
      for (const KRText part : {entry.label, entry.text, entry.server}) add(part);
      if (entry.address == nullptr) return true;
      add(entry.address->countryCode);
      for (const KRText field : entry.address->fields) add(field);
      return true;
    });
  }
  const KRNameView name = person.readName(hold);
  for (const KRText part : {name.first, name.middle, name.last}) add(part);
  if (const KRRef<KRData> image = person.imageData()) text += image->bytes();
  return text;
}

/// Whether the text has what cards do not bring back as it was: returns, and the escapes of Japanese mail text.
bool isSpecial(std::string_view text) noexcept {
  return text.find('\r') != std::string_view::npos || text.find('\x1B') != std::string_view::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const KRVCardFile file = KRVCardFile::read(std::string(reinterpret_cast<const char*>(data), size));
  KRVCardFile::Changes changes;
  for (size_t i = 0; i < file.cards().size(); ++i) {
    const KRVCardFile::Card& card = file.cards()[i];
    require(card.offset + card.size <= size);
    if (card.kind == KRVCardPlace::Kind::Group) static_cast<void>(file.groupOf(card));
    if (!card.person) continue;
    const std::string before = shown(*card.person);
    for (const KRVCardVersion version : {KRVCardVersion::V21, KRVCardVersion::V30, KRVCardVersion::V40}) {
      const std::string text = KRVCardWriter(version).card(*card.person);
      const KRRef<ABPerson> back = ABPerson::initWithVCardRepresentation(KRText(std::string_view(text)));
      require(static_cast<bool>(back));
      if (!isSpecial(before)) require(shown(*back) == before);
    }
    if (i % 3 == 1) {
      changes.removed.push_back(i);
    } else if (i % 3 == 2) {
      card.person->setTags({"tag"_kr});
      card.person->setRecordValue("first\n"_kr, kABFirstNameProperty);
      changes.changed.emplace_back(i, card.person.get());
    }
  }
  require(file.with({})->bytes() == file.bytes());
  static_cast<void>(file.with(changes));
  return 0;
}
