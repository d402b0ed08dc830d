#include "platform/KRFilePreferences.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "platform/KRDescriptor.h"
#include "platform/KRFile.h"
#include "platform/KRHostInfo.h"
#include "platform/KRLocations.h"
#include "platform/KRPlistValue.h"

namespace {

using Node = KRBinaryPlist::Node;

/// A file younger than this when it was read may be replaced by another that bears the same time.
constexpr int64_t kSettledSeconds = 2;

KRString pathTo(KRText path, std::string_view ending) {
  return krConcat({path, ending});
}

KRText folderOf(KRText path) {
  const size_t slash = path.view().rfind('/');
  if (slash == std::string_view::npos) return ".";
  return path.view().substr(0, slash == 0 ? 1 : slash);
}

/// The lock of this file among all processes and stores, held as long as the descriptor is open.
KRResult<KRDescriptor> lockFor(KRText path) {
  const KRString name = pathTo(path, ".lock");
  KRDescriptor descriptor(open(std::string(name.view()).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  if (!descriptor) return KRFile::systemError(errno, "open", name);
  while (flock(descriptor.number(), LOCK_EX) != 0) {
    if (errno != EINTR) return KRFile::systemError(errno, "lock", name);
  }
  return descriptor;
}

std::string nowInUtc() {
  const time_t now = time(nullptr);
  tm parts = {};
  char text[32] = "";
  if (gmtime_r(&now, &parts) != nullptr) strftime(text, sizeof text, "%Y%m%dT%H%M%SZ", &parts);
  return text;
}

bool exists(const std::string& path) {
  struct stat status = {};
  return lstat(path.c_str(), &status) == 0;
}

}  // namespace

KRString KRFilePreferences::pathForHost() {
  const KRString folder = KRLocations::configurationFolder();
  if (folder.isNothing()) return {};
  const KRString identifier = KRHostInfo::identifier();
  std::string name(identifier.isNothing() ? std::string_view("(null)") : identifier.view());
  // An identifier is one name, whatever it holds.
  std::replace(name.begin(), name.end(), '/', '_');
  return krConcat({folder, "/", KRText(std::string_view(name)), ".plist"});
}

KRRef<KRFilePreferences> KRFilePreferences::forHost() {
  return krMake<KRFilePreferences>(pathForHost());
}

KRValue KRFilePreferences::value(KRText key) {
  const std::lock_guard lock(lock_);
  const auto changed =
      std::find_if(changes_.begin(), changes_.end(), [&](const Change& each) { return each.key == key; });
  if (changed != changes_.end()) return krCopyThroughPlist(changed->value);
  refresh();
  return krValueOfPlist(list_, list_.find(list_.root(), key));
}

void KRFilePreferences::setValue(const KRValue& value, KRText forKey) {
  if (value.isNothing()) return remove(forKey);
  KRValue copy = krCopyThroughPlist(value);
  if (!copy.isNothing()) change(forKey, std::move(copy));
}

void KRFilePreferences::remove(KRText key) {
  change(key, KRValue());
}

void KRFilePreferences::change(KRText key, KRValue value) {
  if (key.isNothing()) return;
  const std::lock_guard lock(lock_);
  const auto changed =
      std::find_if(changes_.begin(), changes_.end(), [&](const Change& each) { return each.key == key; });
  if (changed != changes_.end()) {
    changed->value = std::move(value);
  } else {
    changes_.push_back({KRString(key), std::move(value)});
  }
  // What cannot be written stays among the changes, and `flush` tells why.
  static_cast<void>(writeChanges());
}

KRResult<void> KRFilePreferences::flush() {
  const std::lock_guard lock(lock_);
  return writeChanges();
}

std::optional<KRFilePreferences::Stamp> KRFilePreferences::stamp() const {
  struct stat status = {};
  if (stat(std::string(path_.view()).c_str(), &status) != 0) return std::nullopt;
  Stamp stamp;
  stamp.device = status.st_dev;
  stamp.number = status.st_ino;
  stamp.size = status.st_size;
  stamp.seconds = status.st_mtim.tv_sec;
  stamp.nanoseconds = status.st_mtim.tv_nsec;
  return stamp;
}

void KRFilePreferences::refresh() {
  const std::optional<Stamp> now = stamp();
  if (now && now == stamp_) return;
  const KRResult<void> loaded = load();
  const bool isSettled = loaded && now && time(nullptr) - now->seconds >= kSettledSeconds;
  stamp_ = isSettled ? now : std::nullopt;
}

KRResult<void> KRFilePreferences::load() {
  list_ = KRBinaryPlist();
  bytes_ = KRBuffer();
  stamp_.reset();
  content_ = Content::Absent;
  KRResult<KRBuffer> read = KRFile::read(path_);
  if (!read) {
    if (read.error().code == KRErrorCode::NotFound) return {};
    if (read.error().code != KRErrorCode::NotAllowed) return read.error();
    content_ = Content::Damaged;
    return {};
  }
  bytes_ = std::move(*read);
  std::optional<KRBinaryPlist> list = KRBinaryPlist::read(bytes_);
  if (list && list->kind(list->root()) == KRBinaryPlist::Kind::Dictionary) {
    list_ = std::move(*list);
    content_ = Content::Good;
  } else {
    content_ = Content::Damaged;
  }
  return {};
}

KRResult<void> KRFilePreferences::writeChanges() {
  if (changes_.empty()) return {};
  if (path_.isEmpty()) return KRError{KRErrorCode::InvalidArgument, "there is no folder to keep preferences in"};
  if (KRResult<void> made = KRFile::createFolders(folderOf(path_), true); !made) return made;
  const KRResult<KRDescriptor> held = lockFor(path_);
  if (!held) return held.error();

  if (KRResult<void> loaded = load(); !loaded) return loaded;
  const std::optional<std::string> content = changedContent();
  // The list now holds the changes; what the file holds is read again when it is asked for.
  stamp_.reset();
  if (content) {
    if (content_ == Content::Damaged) {
      if (KRResult<void> aside = setAside(); !aside) return aside;
    }
    KRFile::WriteOptions options;
    options.isPrivate = true;
    if (KRResult<void> written = KRFile::write(path_, *content, options); !written) return written;
  }
  changes_.clear();
  return {};
}

KRResult<void> KRFilePreferences::setAside() const {
  const std::string former(path_.view());
  const std::string dated = former + ".damaged-" + nowInUtc();
  std::string name = dated;
  for (int number = 2; exists(name); ++number) name = dated + "-" + std::to_string(number);
  if (std::rename(former.c_str(), name.c_str()) != 0) return KRFile::systemError(errno, "put aside", path_);
  return {};
}

std::optional<std::string> KRFilePreferences::changedContent() {
  const Node root = list_.root();
  std::vector<Node> keys(list_.keys(root).begin(), list_.keys(root).end());
  std::vector<Node> values(list_.values(root).begin(), list_.values(root).end());
  bool hasChanged = false;
  for (const Change& each : changes_) {
    const auto place =
        std::find_if(keys.begin(), keys.end(), [&](Node key) { return sameText(list_.text(key), each.key); });
    const auto index = place - keys.begin();
    if (each.value.isNothing()) {
      if (place == keys.end()) continue;
      keys.erase(place);
      values.erase(values.begin() + index);
      hasChanged = true;
      continue;
    }
    const std::optional<Node> value = krAddToPlist(list_, each.value);
    if (!value) continue;
    hasChanged = true;
    if (place == keys.end()) {
      keys.push_back(list_.addText(each.key));
      values.push_back(*value);
    } else {
      values[static_cast<size_t>(index)] = *value;
    }
  }
  if (!hasChanged) return std::nullopt;
  list_.setRoot(list_.addDictionary(keys, values));
  return list_.write();
}
