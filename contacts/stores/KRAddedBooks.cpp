#include "contacts/stores/KRAddedBooks.h"

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>

#include "contacts/stores/KRBookPaths.h"
#include "platform/KRBinaryPlist.h"
#include "platform/KRFile.h"
#include "platform/KRFileLock.h"
#include "platform/KRFilePreferences.h"
#include "platform/KRFileStamp.h"
#include "platform/KRLocations.h"
#include "platform/KRValue.h"

namespace {

constexpr KRText kPathsKey = "paths";
constexpr KRText kHiddenKey = "hidden";

/// One change at a time in this process; between processes the folder of the list is held.
std::mutex& changing() {
  static auto* const lock = new std::mutex;
  return *lock;
}

KRStringList textsIn(KRPreferences& list, KRText key) {
  const KRValue value = list.value(key);
  const auto* texts = value.as<KRValueList>();
  return texts != nullptr ? texts->texts() : KRStringList();
}

KRResult<bool> write(KRPreferences& list, KRText key, const KRStringList& texts) {
  list.setValue(KRValueList::ofTexts(texts), key);
  if (const KRResult<void> written = list.flush(); !written) return written.error();
  return true;
}

KRResult<KRFileLock> heldFolder() {
  const KRString folder = KRLocations::configurationFolder();
  if (folder.isNothing()) return KRError{KRErrorCode::InvalidArgument, "there is no folder to keep preferences in"};
  if (const KRResult<void> made = KRFile::createFolders(folder, true); !made) return made.error();
  return KRFileLock::hold(folder);
}

/// Whether the two paths lead to one file or folder, by whatever names: links, or several names of a file.
bool isSamePlace(const KRString& a, const KRString& b) {
  const std::optional<KRFileStamp> one = KRFileStamp::of(a);
  const std::optional<KRFileStamp> other = KRFileStamp::of(b);
  return one && other && one->device == other->device && one->number == other->number;
}

/// The place of the text; among paths, where it is not there itself, of one that leads to the same.
KRStringList::iterator placeOf(KRStringList& texts, KRText key, const KRString& text) {
  const auto place = std::find(texts.begin(), texts.end(), text);
  if (place != texts.end() || !(key == kPathsKey)) return place;
  return std::find_if(texts.begin(), texts.end(), [&](const KRString& each) { return isSamePlace(each, text); });
}

/// Adds a text at the end of one of the lists, or takes it out; whether that changed anything.
KRResult<bool> addTo(KRText key, const KRString& text) {
  const std::lock_guard lock(changing());
  const KRResult<KRFileLock> folder = heldFolder();
  if (!folder) return folder.error();
  const auto list = krMake<KRFilePreferences>(KRAddedBooks::listPath());
  KRStringList texts = textsIn(*list, key);
  if (placeOf(texts, key, text) != texts.end()) return false;
  texts.push_back(text);
  return write(*list, key, texts);
}

KRResult<bool> removeFrom(KRText key, const KRString& text) {
  const std::lock_guard lock(changing());
  const KRResult<KRFileLock> folder = heldFolder();
  if (!folder) return folder.error();
  const auto list = krMake<KRFilePreferences>(KRAddedBooks::listPath());
  KRStringList texts = textsIn(*list, key);
  const auto place = placeOf(texts, key, text);
  if (place == texts.end()) return false;
  texts.erase(place);
  return write(*list, key, texts);
}

KRString absolute(KRText path) {
  if (path.isEmpty()) return {};
  std::error_code failed;
  const std::filesystem::path whole = std::filesystem::absolute(std::filesystem::path(path.view()), failed);
  if (failed) return {};
  std::string text = whole.lexically_normal().string();
  while (text.size() > 1 && text.back() == '/') text.pop_back();
  return KRString(text);
}

}  // namespace

KRString KRAddedBooks::listPath() {
  const KRString preferences = KRFilePreferences::pathForHost();
  if (preferences.isNothing()) return {};
  std::string path(preferences.view());
  path.insert(path.rfind(".plist"), ".books");
  return KRString(path);
}

KRResult<void> KRAddedBooks::check() {
  const KRString path = listPath();
  const KRResult<KRBuffer> bytes = KRFile::read(path);
  if (!bytes) return bytes.error().code == KRErrorCode::NotFound ? KRResult<void>() : bytes.error();
  const std::optional<KRBinaryPlist> list = KRBinaryPlist::read(*bytes);
  if (list && list->kind(list->root()) == KRBinaryPlist::Kind::Dictionary) return {};
  return KRError{KRErrorCode::Damaged, "the list of added books is damaged: " + std::string(path.view())};
}

KRStringList KRAddedBooks::paths() {
  return textsIn(*krMake<KRFilePreferences>(listPath()), kPathsKey);
}

KRResult<bool> KRAddedBooks::add(KRText path) {
  const KRString whole = absolute(path);
  if (whole.isNothing()) return KRError{KRErrorCode::InvalidArgument, "cannot add a book: no path is given"};
  return addTo(kPathsKey, whole);
}

KRResult<bool> KRAddedBooks::remove(KRText path) {
  return removeFrom(kPathsKey, absolute(path));
}

KRResult<bool> KRAddedBooks::hide(KRText ID) {
  if (ID.isEmpty()) return false;
  for (const KRString& path : paths()) {
    const std::vector<KRBookSource> there = krBooksAtPath(path);
    if (there.size() == 1 && sameText(there.front().ID, ID)) return remove(path);
  }
  return addTo(kHiddenKey, KRString(ID));
}

KRResult<bool> KRAddedBooks::show(KRText ID) {
  return removeFrom(kHiddenKey, KRString(ID));
}

KRStringList KRAddedBooks::hiddenIDs() {
  return textsIn(*krMake<KRFilePreferences>(listPath()), kHiddenKey);
}

std::vector<KRBookSource> KRAddedBooks::sources() {
  std::vector<KRBookSource> all;
  KRStringList known;
  for (const KRString& path : paths()) {
    // Lists of former times, and files that have come to be one since.
    if (std::any_of(known.begin(), known.end(), [&](const KRString& each) { return isSamePlace(each, path); }))
      continue;
    known.push_back(path);
    for (KRBookSource& source : krBooksAtPath(path)) all.push_back(std::move(source));
  }
  return all;
}
