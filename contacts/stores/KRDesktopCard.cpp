#include "contacts/stores/KRDesktopCard.h"

#include <algorithm>

#include "contacts/vcard/KRVCardEscapes.h"
#include "contacts/vcard/KRVCardRewriter.h"
#include "contacts/vcard/KRVCardText.h"
#include "contacts/vcard/KRVCardValues.h"
#include "contacts/vcard/KRVCardWriter.h"
#include "platform/KRFile.h"
#include "platform/KRHash.h"

namespace {

/// Larger files are no pictures of contacts.
constexpr size_t kLargestPicture = size_t{16} << 20U;
constexpr std::string_view kFileScheme = "file://";
/// What the paths of the service's own files have in them.
constexpr std::string_view kOwnFolder = "/evolution/addressbook/";
/// The folder beside each of its books that holds pictures and nothing else.
constexpr std::string_view kPictures = "/photos/";

bool isNamed(const KRVCardLine& line, std::string_view name) {
  return krEqualsIgnoringCase(line.name(), name);
}

/// Whether the path is one of the service's own files. A card that came from a server may name any file, and would take
/// it there with the next change.
bool isOwnFile(std::string_view path) {
  return path.starts_with('/') && path.find(kOwnFolder) != std::string_view::npos &&
         path.find("/../") == std::string_view::npos && KRFile::kind(path) == KRFile::Kind::Regular;
}

/// Whether the file of the service is a picture of a contact, of whatever format. Elsewhere than among its pictures,
/// where whole address books stand too, it must be one that is known.
bool isPictureFile(std::string_view path, std::string_view content) {
  return path.substr(0, path.rfind('/') + 1).ends_with(kPictures) || krIsPicture(content);
}

/// The line with the picture itself where it names a file that holds one; empty when it does not.
std::string withPicture(const KRVCardLine& line) {
  if (!krStartsIgnoringCase(line.value, kFileScheme)) return {};
  const std::string decoded = krDecodePercent(line.value.substr(kFileScheme.size()));
  const std::string_view path(decoded);
  if (!isOwnFile(path)) return {};
  const KRResult<KRBuffer> file = KRFile::read(path);
  if (!file || file->view().size() > kLargestPicture || !isPictureFile(path, file->view())) return {};
  KRDesktopLine written(line);
  written.removeParameter("VALUE");
  written.parameters.emplace_back("ENCODING=b");
  written.value = krEncodeBase64(file->view());
  return written.text();
}

/// Whether the card can be sent as it stands, but for lines of changed values.
bool isOfTheService(std::string_view card, KRText UID) {
  if (!krIsWellFormed(card)) return false;
  bool is30 = false;
  bool isNamedSo = false;
  KRVCardLines lines;
  KRVCardLine line;
  lines.start(card, true, 1);
  while (lines.next(line) == KRVCardLines::Result::Line) {
    if (line.means(KRVCardMeaning::Version)) is30 = krTrimmedBlanks(line.value) == "3.0";
    if (line.means(KRVCardMeaning::UID)) isNamedSo = krUndoEscapes(line.value, KREscapes::Full) == UID.view();
    if (line.parameters->encoding == KRVCardParameters::QuotedPrintable) return false;
  }
  return is30 && isNamedSo;
}

}  // namespace

KRDesktopCard KRDesktopCardReader::read(std::string_view card) {
  KRDesktopCard result;
  result.text.reserve(card.size());
  uint64_t stamp = 0;
  KRVCardLine line;
  lines_.start(card, true, 1);
  while (lines_.next(line) == KRVCardLines::Result::Line) {
    KRDesktopLine written(line);
    stamp = krHashMix(stamp, written.stamp());
    if (isNamed(line, "UID") && result.UID.empty()) {
      result.UID = krUndoEscapes(krTrimmedBlanks(line.value), KREscapes::Full);
    } else if (isNamed(line, "X-EVOLUTION-LIST")) {
      result.isList = result.isList || krEqualsIgnoringCase(krTrimmedBlanks(line.value), "TRUE");
    }
    const bool isPicture = line.means(KRVCardMeaning::Photo) || isNamed(line, "LOGO");
    const std::string picture = isPicture ? withPicture(line) : std::string();
    if (!picture.empty()) {
      result.text += picture;
    } else if (written.removeParameter(kKRDesktopPhoneParameter)) {
      result.text += written.text();
    } else {
      result.text += line.bytes;
    }
  }
  result.stamp = static_cast<int64_t>(stamp);
  return result;
}

std::string krCardForDesktop(const ABPerson& person, KRText UID) {
  if (isOfTheService(person.card(), UID)) return KRVCardRewriter::rewritten(person);
  return KRVCardWriter(KRVCardVersion::V30).card(person, UID);
}

std::string krWithRevisionOf(std::string_view card, std::string_view other) {
  std::string revision;
  KRVCardLines lines;
  KRVCardLine line;
  lines.start(other, true, 1);
  while (lines.next(line) == KRVCardLines::Result::Line) {
    if (isNamed(line, "REV")) revision += line.bytes;
  }
  std::string result;
  lines.start(card, true, 1);
  while (lines.next(line) == KRVCardLines::Result::Line) {
    if (isNamed(line, "REV")) continue;
    if (line.isEnd()) result += revision;
    result += line.bytes;
  }
  return result;
}
