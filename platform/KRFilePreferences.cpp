#include "platform/KRFilePreferences.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>
#include <time.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "platform/KRAtomic.h"
#include "platform/KRDescriptor.h"
#include "platform/KRFile.h"
#include "platform/KRFileWriter.h"
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

using Observer = std::function<void(const KRFilePreferences::Observed&)>;

/// Never destroyed, as a detached thread may still write while the process ends.
KRAtomic<std::shared_ptr<const Observer>>& observer() {
  static auto* const only = new KRAtomic<std::shared_ptr<const Observer>>;
  return *only;
}

}  // namespace

void KRFilePreferences::setObserver(Observer told) {
  observer().set(told ? std::make_shared<const Observer>(std::move(told)) : nullptr);
}

KRString KRFilePreferences::pathForHost() {
  const KRString folder = KRLocations::configurationFolder();
  if (folder.isNothing()) return {};
  return krConcat({folder, "/", KRHostInfo::fileName(), ".plist"});
}

KRRef<KRFilePreferences> KRFilePreferences::forHost() {
  return krMake<KRFilePreferences>(pathForHost());
}

KRValue KRFilePreferences::valueInFile(KRText key) const {
  return krValueOfPlist(list_, list_.find(list_.root(), key));
}

KRValue KRFilePreferences::value(KRText key) {
  const std::lock_guard lock(lock_);
  const KRPreferenceChanges::Entry* changed = changes_.find(key);
  if (changed != nullptr && changed->isWhole) return changed->appliedTo(KRValue());
  refresh();
  return changed != nullptr ? changed->appliedTo(valueInFile(key)) : valueInFile(key);
}

// What cannot be written stays among the changes, and `flush` tells why.

void KRFilePreferences::setValue(const KRValue& value, KRText forKey) {
  const std::lock_guard lock(lock_);
  changes_.set(forKey, value);
  static_cast<void>(writeChanges());
}

void KRFilePreferences::update(KRText key, const Change& change) {
  const std::lock_guard lock(lock_);
  changes_.update(key, change);
  static_cast<void>(writeChanges());
}

void KRFilePreferences::remove(KRText key) {
  setValue(KRValue(), key);
}

KRResult<void> KRFilePreferences::flush() {
  const std::lock_guard lock(lock_);
  return writeChanges();
}

void KRFilePreferences::refresh() {
  const std::optional<KRFileStamp> now = KRFileStamp::of(path_);
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
    // What may not be read is not known to be damaged, and is not replaced.
    return read.error();
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
  if (changes_.isEmpty()) return {};
  if (path_.isEmpty()) return KRError{KRErrorCode::InvalidArgument, "there is no folder to keep preferences in"};
  if (KRResult<void> made = KRFile::createFolders(folderOf(path_), true); !made) return made;
  const KRResult<KRDescriptor> held = lockFor(path_);
  if (!held) return held.error();

  KRFileWriter::removeLeftovers(path_);
  if (KRResult<void> loaded = load(); !loaded) return loaded;
  const std::vector<Observed> made = differences();
  if (!made.empty()) {
    if (const std::shared_ptr<const Observer> told = observer().get()) std::for_each(made.begin(), made.end(), *told);
    const std::string content = contentWith(made);
    if (content_ == Content::Damaged) {
      if (const KRResult<KRString> aside = KRFile::setAside(path_, "damaged"); !aside) return aside.error();
    }
    KRFile::WriteOptions options;
    options.isPrivate = true;
    if (KRResult<void> written = KRFile::write(path_, content, options); !written) return written;
  }
  changes_.clear();
  return {};
}

std::vector<KRFilePreferences::Observed> KRFilePreferences::differences() const {
  std::vector<Observed> made;
  for (const KRPreferenceChanges::Entry& each : changes_.entries()) {
    KRValue before = valueInFile(each.key);
    KRValue after = each.appliedTo(before);
    // What values have no kind for is there all the same.
    const bool goes = after.isNothing() && list_.find(list_.root(), each.key) != KRBinaryPlist::kNone;
    if (goes || !before.isEqual(after)) made.push_back({path_, each.key, std::move(before), std::move(after)});
  }
  return made;
}

std::string KRFilePreferences::contentWith(const std::vector<Observed>& differences) {
  const Node root = list_.root();
  std::vector<Node> keys(list_.keys(root).begin(), list_.keys(root).end());
  std::vector<Node> values(list_.values(root).begin(), list_.values(root).end());
  for (const Observed& each : differences) {
    const auto place =
        std::find_if(keys.begin(), keys.end(), [&](Node key) { return sameText(list_.text(key), each.key); });
    const auto index = place - keys.begin();
    if (place != keys.end()) {
      keys.erase(place);
      values.erase(values.begin() + index);
    }
    // Every value here is a copy that came through a list already.
    if (const std::optional<Node> value = krAddToPlist(list_, each.after)) {
      keys.insert(keys.begin() + index, list_.addText(each.key));
      values.insert(values.begin() + index, *value);
    }
  }
  // The list now holds the changes; what the file holds is read again when it is asked for.
  stamp_.reset();
  list_.setRoot(list_.addDictionary(keys, values));
  return list_.write();
}
