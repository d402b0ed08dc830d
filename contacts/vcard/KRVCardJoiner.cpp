#include "contacts/vcard/KRVCardJoiner.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "contacts/vcard/KRVCardCarrier.h"
#include "contacts/vcard/KRVCardComposer.h"
#include "contacts/vcard/KRVCardLineWriter.h"
#include "contacts/vcard/KRVCardOutline.h"
#include "contacts/vcard/KRVCardProperty.h"
#include "contacts/vcard/KRVCardReader.h"
#include "contacts/vcard/KRVCardText.h"

namespace {

using M = KRVCardMeaning;

bool isUnknown(M meaning) noexcept {
  return meaning == M::Unknown || meaning == M::AndroidCustom || meaning == M::Sound || meaning == M::Agent;
}

bool tellsOfGroup(const KRVCardNewLine& line) {
  const M meaning = krVCardProperty(line.name).meaning;
  return meaning == M::GroupLabel || meaning == M::GroupCountryCode;
}

/// The line without its group. Names of properties are the same in any case.
std::string content(const KRVCardNewLine& line) {
  return krLowerASCII(line.name) + line.parameters + (line.isBase64 ? ";b:" : ":") + line.value;
}

/// Gathers lines and writes them.
class Joiner {
 public:
  void add(const ABPerson& person);
  KRCardRecord record() const;

 private:
  /// The name for a group of the card that is being added: its own, or another where an earlier card has that.
  static std::string groupName(const std::string& group, const std::set<std::string>& earlier);
  std::vector<KRVCardNewLine> newLines(const std::vector<KRVCardNewLine>& carried);
  /// Whether a further line of a text is to be kept, which is so for the first person who has that text. The line that
  /// counts is put in front then.
  bool isKeptText(KROrdinal property);
  void putPicture(std::string& card, const KRVCardLineWriter& writer) const;

  std::optional<KRVCardVersion> version_;
  std::vector<const ABPerson*> persons_;
  std::vector<KRVCardNewLine> lines_;
  /// What was gathered, in a form that is the same for equal lines; and the groups in use (lower case).
  std::set<std::string> known_;
  std::set<std::string> groups_;
  /// The texts with further lines, and their first lines.
  std::set<KROrdinal> texts_;
  std::vector<KRVCardNewLine> firsts_;
  bool hasPictureLine_ = false;
};

std::string Joiner::groupName(const std::string& group, const std::set<std::string>& earlier) {
  std::string name = group;
  for (size_t i = 1; earlier.count(krLowerASCII(name)) != 0; ++i) name = group + "-" + std::to_string(i);
  return name;
}

bool Joiner::isKeptText(KROrdinal property) {
  const ABPerson& person = *persons_.back();
  KRHold hold;
  const KRText text = person.readText(property, hold);
  if (text.isEmpty()) return false;
  const bool isFirst = std::none_of(persons_.begin(), persons_.end() - 1, [&](const ABPerson* each) {
    KRHold other;
    return !each->readText(property, other).isNothing();
  });
  if (isFirst && texts_.insert(property).second) {
    firsts_.push_back(KRVCardComposer(*version_).text(property, text));
    known_.insert(content(firsts_.back()));
  }
  return isFirst;
}

/// The lines that are new, and behind them what the card says of their groups.
std::vector<KRVCardNewLine> Joiner::newLines(const std::vector<KRVCardNewLine>& carried) {
  std::map<std::string, std::string> saidOf;
  for (const KRVCardNewLine& line : carried) {
    if (tellsOfGroup(line)) saidOf[krLowerASCII(line.group)] += "\n" + content(line);
  }
  std::vector<KRVCardNewLine> lines;
  std::set<std::string> taken;
  for (const KRVCardNewLine& line : carried) {
    const KRVCardProperty& property = krVCardProperty(line.name);
    const bool isPicture = property.meaning == M::Photo;
    const bool isText = property.meaning == M::FirstText && isKeptText(property.ordinal);
    if (!isUnknown(property.meaning) && !isPicture && !isText) continue;
    // What is said of a group is part of each line in it.
    const auto said = saidOf.find(krLowerASCII(line.group));
    if (!known_.insert(content(line) + (said != saidOf.end() ? said->second : std::string())).second) continue;
    hasPictureLine_ = hasPictureLine_ || isPicture;
    lines.push_back(line);
    taken.insert(krLowerASCII(line.group));
  }
  for (const KRVCardNewLine& line : carried) {
    if (tellsOfGroup(line) && taken.count(krLowerASCII(line.group)) != 0) lines.push_back(line);
  }
  return lines;
}

void Joiner::add(const ABPerson& person) {
  persons_.push_back(&person);
  if (person.card().empty()) return;
  if (!version_) version_ = krCardVersion(person);
  const std::set<std::string> earlier = groups_;
  for (KRVCardNewLine& line : newLines(KRVCardCarrier(person, *version_).lines())) {
    if (!line.group.empty()) {
      line.group = groupName(line.group, earlier);
      groups_.insert(krLowerASCII(line.group));
    }
    lines_.push_back(std::move(line));
  }
}

void Joiner::putPicture(std::string& card, const KRVCardLineWriter& writer) const {
  for (const ABPerson* person : persons_) {
    const KRRef<KRData> picture = person->imageData();
    if (!picture || picture->bytes().empty()) continue;
    writer.append(KRVCardComposer(*version_).photo(picture->bytes()), card);
    return;
  }
}

KRCardRecord Joiner::record() const {
  if (lines_.empty()) return {};
  std::string card = "BEGIN:VCARD\r\nVERSION:" + std::string(krVCardVersionName(*version_)) + "\r\n";
  const KRVCardLineWriter writer(*version_);
  // Places for the name of the new person: a card without these lines is none to many programs.
  writer.append({{}, "N", {}, ";;;;"}, card);
  writer.append({{}, "FN", {}, {}}, card);
  for (const KRVCardNewLine& line : firsts_) writer.append(line, card);
  if (hasPictureLine_) putPicture(card, writer);
  for (const KRVCardNewLine& line : lines_) writer.append(line, card);
  card += "END:VCARD\r\n";
  const KRRef<ABPerson> read = KRVCardReader::readOne(card);
  if (!read) return {};
  // A card that shows anything else after all would add to the person.
  const auto& rows = read->record().rows();
  const bool showsMore = std::any_of(rows.begin(), rows.end(), [&](const KRCardRow& row) {
    const bool isText = texts_.count(static_cast<KROrdinal>(row.what)) != 0;
    return !isText && !(hasPictureLine_ && row.what == static_cast<uint8_t>(KROrdinal::Thumbnail));
  });
  return showsMore ? KRCardRecord() : read->record();
}

}  // namespace

KRCardRecord krJoinedCard(const std::vector<const ABPerson*>& persons) {
  Joiner joiner;
  for (const ABPerson* person : persons) joiner.add(*person);
  return joiner.record();
}

std::vector<std::string> krUnshownLines(const ABPerson& person, KRVCardVersion version) {
  std::vector<std::string> texts;
  if (person.card().empty()) return texts;
  for (const KRVCardNewLine& line : KRVCardCarrier(person, version).lines()) {
    if (!tellsOfGroup(line)) texts.push_back(content(line));
  }
  return texts;
}

KRVCardVersion krCardVersion(const ABPerson& person) {
  return person.card().empty() ? KRVCardVersion::V30 : KRVCardOutline(person.card()).version();
}
