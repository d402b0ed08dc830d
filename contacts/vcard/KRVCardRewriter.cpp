#include "contacts/vcard/KRVCardRewriter.h"

#include <algorithm>
#include <optional>

#include "contacts/vcard/KRVCardComposer.h"
#include "contacts/vcard/KRVCardEntryRewriter.h"
#include "contacts/vcard/KRVCardPlan.h"
#include "contacts/vcard/KRVCardText.h"
#include "contacts/vcard/KRVCardWriter.h"

namespace {

using M = KRVCardMeaning;
using O = KROrdinal;
using Line = KRVCardOutline::Line;

constexpr O kTexts[] = {
    O::PhoneticFirstName, O::PhoneticMiddleName, O::PhoneticLastName, O::Nickname, O::JobTitle, O::Role, O::Note};
constexpr O kPhonetic[] = {O::PhoneticFirstName, O::PhoneticMiddleName, O::PhoneticLastName};
constexpr size_t kNameParts = 5;
constexpr size_t kOrganisationParts = 2;

/// One card while it is written again.
class Rewriting {
 public:
  Rewriting(const ABPerson& person, std::string_view charset)
      : person_(person),
        original_(krMake<ABPerson>(person.record())),
        outline_(person.card()),
        plan_(outline_, charset),
        composer_(outline_.version()) {
    for (const Line& line : outline_.lines()) {
      composer_.takeGroup(line.group);
      if (krEqualsIgnoringCase(line.name, "ANNIVERSARY")) composer_.takeAnniversary();
    }
  }

  std::vector<KRVCardEdit> edits() {
    nameAndOrganisation();
    for (const O property : kTexts) {
      if (person_.isChanged(property)) text(property);
    }
    readings();
    if (person_.isChanged(O::Birthday)) birthday();
    if (person_.isChanged(O::Thumbnail)) photo();
    if (person_.isChanged(O::Tags)) tags();
    for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
      if (!property->isMultiple() || !person_.isChanged(property->ordinal())) continue;
      KRVCardEntryRewriter(person_, *original_, property->ordinal(), outline_, composer_, plan_).plan();
    }
    return plan_.edits();
  }

 private:
  /// What stays of a line of one value.
  KRVCardRemainder remainder(const Line* line, size_t shownParts = 0) const {
    KRVCardRemainder rest;
    if (line == nullptr) return rest;
    const KRVCardParameterParts parts = krPartParameters(line->parameters);
    rest.group = line->group;
    rest.parameters = parts.types + parts.ranks + parts.others;
    if (shownParts == 0) return rest;
    const std::string value = outline_.decodedValue(*line);
    rest.parts = value.substr(krFurtherParts(value, shownParts));
    return rest;
  }

  void put(const Line* line, const KRVCardNewLine& made) {
    if (line != nullptr) {
      plan_.replace(*line, {made});
    } else {
      plan_.insertAtEnd({made});
    }
  }

  void dropAll(KRVCardMeaning meaning, const Line* but = nullptr) {
    for (const Line& line : outline_.lines()) {
      if (line.meaning == meaning && &line != but) plan_.drop(line);
    }
  }

  bool isText(O property) const {
    KRHold hold;
    return !person_.readText(property, hold).isEmpty();
  }

  const Line* nameLine() const {
    for (const uint8_t what : {static_cast<uint8_t>(KRCardPart::LastName), static_cast<uint8_t>(KRCardPart::FirstName),
                               static_cast<uint8_t>(KRCardPart::MiddleName), static_cast<uint8_t>(O::Title),
                               static_cast<uint8_t>(O::Suffix)}) {
      if (const Line* line = outline_.lineOf(what, 0)) return line;
    }
    return nullptr;
  }

  void nameAndOrganisation() {
    const bool nameChanged = person_.isChanged(O::Name) || person_.isChanged(O::Title) || person_.isChanged(O::Suffix);
    const bool companyChanged = person_.isChanged(O::Company);
    const bool markChanged = person_.isOrganization() != original_->isOrganization();
    const bool hasName = KRVCardComposer::hasNameParts(person_);
    if (markChanged) mark();
    // The reader makes a name or a company of FN where there is none: what it made so far gets a line of its own before
    // that text changes or comes to mean something else.
    const bool showsCompany = person_.isOrganization() || original_->isOrganization() || !hasName;
    const bool formattedChanges = nameChanged || ((companyChanged || markChanged) && showsCompany);
    if (nameChanged || ((companyChanged || markChanged) && hasName && nameLine() == nullptr)) name(hasName);
    if (companyChanged || person_.isChanged(O::Department)) {
      organisation();
    } else if (formattedChanges && isText(O::Company) && outline_.lineOf(O::Company, 0) == nullptr) {
      put(nullptr, composer_.organisation(person_));
    }
    if (formattedChanges) formattedName();
  }

  void name(bool hasName) {
    const Line* line = nameLine();
    if (line == nullptr) line = outline_.firstOf(M::Name);
    if (line == nullptr && !hasName) return;
    put(line, composer_.name(person_, remainder(line, kNameParts)));
    if (!hasName) dropAll(M::Name, line);
  }

  void formattedName() {
    const Line* line = outline_.firstOf(M::FormattedName);
    if (line == nullptr) return;
    const KRVCardNewLine made = composer_.formattedName(person_, remainder(line));
    put(line, made);
    if (made.value.empty()) dropAll(M::FormattedName, line);
  }

  void organisation() {
    const Line* line = outline_.lineOf(O::Company, 0);
    if (line == nullptr) line = outline_.firstOf(M::Organisation);
    if (!isText(O::Company) && !isText(O::Department)) {
      dropAll(M::Organisation);
      return;
    }
    put(line, composer_.organisation(person_, remainder(line, kOrganisationParts)));
    // Another line must not take the place of the company or the department that went.
    if (!isText(O::Company) || !isText(O::Department)) dropAll(M::Organisation, line);
  }

  void mark() {
    const auto says = [&](const Line& line, std::initializer_list<std::string_view> words) {
      const std::string_view value = krTrimmedBlanks(line.value);
      return std::any_of(words.begin(), words.end(),
                         [&](std::string_view word) { return krEqualsIgnoringCase(value, word); });
    };
    if (!person_.isOrganization()) {
      for (const Line& line : outline_.lines()) {
        if (line.meaning == M::Kind && says(line, {"org", "organization"})) plan_.drop(line);
        if (line.meaning == M::ShowAs && says(line, {"COMPANY"})) plan_.drop(line);
      }
      return;
    }
    const bool hasKind = outline_.version() == KRVCardVersion::V40;
    put(hasKind ? outline_.firstOf(M::Kind) : outline_.firstOf(M::ShowAs), composer_.organisationMark());
  }

  void text(O property) {
    KRHold hold;
    const KRText text = person_.readText(property, hold);
    if (text.isEmpty()) {
      // All of them, as the next one would count.
      for (const Line& line : outline_.lines()) {
        if ((line.meaning == M::FirstText && line.ordinal == property) || line.makes(property)) plan_.drop(line);
      }
      return;
    }
    const Line* line = outline_.lineOf(property, 0);
    KRVCardRemainder rest;
    if (line != nullptr && line->meaning == M::FirstText) {
      rest = remainder(line);
      rest.name = line->name;
    }
    put(line, composer_.text(property, text, rest));
  }

  /// The reading of a name that a phone keeps in one line gives way to lines of its own.
  void readings() {
    const bool areChanged = std::any_of(std::begin(kPhonetic), std::end(kPhonetic),
                                        [&](O property) { return person_.isChanged(property); });
    if (!areChanged) return;
    bool isFound = false;
    for (const Line& line : outline_.lines()) {
      if (line.meaning != M::Sound || !krParseParameters(line.parameters).hasType("irmc-n")) continue;
      plan_.drop(line);
      isFound = true;
    }
    if (!isFound) return;
    KRHold hold;
    for (const O property : kPhonetic) {
      const KRText text = person_.readText(property, hold);
      if (person_.isChanged(property) || text.isEmpty() || outline_.lineOf(property, 0) != nullptr) continue;
      put(nullptr, composer_.text(property, text));
    }
  }

  void birthday() {
    KRHold hold;
    const KRText date = person_.readText(O::Birthday, hold);
    const Line* line = outline_.lineOf(O::Birthday, 0);
    if (date.isEmpty()) {
      dropAll(M::Birthday);
      for (const Line& each : outline_.lines()) {
        if (each.makes(O::Birthday)) plan_.drop(each);
      }
      return;
    }
    const bool isOwn = line != nullptr && line->meaning == M::Birthday;
    put(line, composer_.birthday(date, isOwn ? remainder(line) : KRVCardRemainder()));
  }

  void photo() {
    const KRRef<KRData> image = person_.imageData();
    if (!image || image->bytes().empty()) {
      dropAll(M::Photo);
      return;
    }
    const Line* line = outline_.lineOf(O::Thumbnail, 0);
    KRVCardRemainder rest;
    if (line != nullptr) rest.group = line->group;
    put(line, composer_.photo(image->bytes(), rest));
    // A picture to be fetched that stands before is nothing to this library, but the picture to other programs.
    for (const Line& each : outline_.lines()) {
      if (each.meaning == M::Photo && &each != line && (line == nullptr || each.offset < line->offset))
        plan_.drop(each);
    }
  }

  /// Lines of tags that still say what comes next stay; from the first other one on they are written again.
  void tags() {
    std::vector<std::string> before;
    std::vector<std::string> now;
    KRHold hold;
    const auto gather = [&](const ABPerson& person, std::vector<std::string>& tags) {
      person.readEntries(O::Tags, hold, [&](const KREntryView& entry) {
        if (!entry.text.isEmpty()) tags.emplace_back(entry.text.view());
        return true;
      });
    };
    gather(*original_, before);
    gather(person_, now);
    size_t done = 0;
    const Line* last = nullptr;
    bool isOver = false;
    for (const Line& line : outline_.lines()) {
      if (!line.makes(O::Tags)) continue;
      last = &line;
      const size_t count = line.made.size();
      const size_t first = line.made.front().index;
      const bool isSame = !isOver && done + count <= now.size() &&
                          std::equal(now.begin() + static_cast<std::ptrdiff_t>(done),
                                     now.begin() + static_cast<std::ptrdiff_t>(done + count),
                                     before.begin() + static_cast<std::ptrdiff_t>(first));
      if (isSame) {
        done += count;
        continue;
      }
      if (isOver || done == now.size()) {
        plan_.drop(line);
      } else {
        plan_.replace(line, {tagLine(now, done, remainder(&line))});
        done = now.size();
      }
      isOver = true;
    }
    if (done == now.size()) return;
    if (last != nullptr) {
      plan_.insertBehind(*last, {tagLine(now, done, {})});
    } else {
      plan_.insertAtEnd({tagLine(now, done, {})});
    }
  }

  KRVCardNewLine tagLine(const std::vector<std::string>& tags, size_t from, const KRVCardRemainder& rest) const {
    return composer_.tags({tags.begin() + static_cast<std::ptrdiff_t>(from), tags.end()}, rest);
  }

  const ABPerson& person_;
  const KRRef<ABPerson> original_;
  const KRVCardOutline outline_;
  KRVCardPlan plan_;
  KRVCardComposer composer_;
};

}  // namespace

std::vector<KRVCardEdit> KRVCardRewriter::edits(const ABPerson& person, std::string_view charset) {
  if (!person.isChanged() || person.card().empty()) return {};
  return Rewriting(person, charset).edits();
}

std::string KRVCardRewriter::rewritten(const ABPerson& person, std::string_view charset) {
  if (person.card().empty()) return KRVCardWriter(KRVCardVersion::V30).card(person);
  return applied(person.card(), edits(person, charset));
}

std::string KRVCardRewriter::applied(std::string_view bytes, const std::vector<KRVCardEdit>& edits) {
  std::string result;
  result.reserve(bytes.size() + 128);
  size_t done = 0;
  for (const KRVCardEdit& edit : edits) {
    result.append(bytes.substr(done, edit.offset - done)).append(edit.bytes);
    done = edit.offset + edit.size;
  }
  result.append(bytes.substr(done));
  return result;
}
