#pragma once

#include <sys/types.h>

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/KRBinaryPlist.h"
#include "platform/KRBuffer.h"
#include "platform/KRPreferences.h"

/// Preferences in one file, a binary property list whose root is a dictionary.
///
/// A change takes a lock (a file beside, with ".lock" at its end, which stays there), reads the file again, changes its
/// own keys and puts a new file in the place of the old one: keys that another process wrote meanwhile stay, and no
/// moment leaves half a file. While another process writes, a change waits for it. What other processes write is seen
/// by the next `value`.
///
/// A file that is damaged or must not be read counts as empty. It is never overwritten: the first change puts it aside,
/// beside itself, under its name with ".damaged-" and the date and time in UTC at its end.
class KRFilePreferences : public KRPreferences {
 public:
  /// The file need not exist; it and the folders above it are made by the first change, for their owner only. Without
  /// a path, every write fails and what is set stays in memory.
  explicit KRFilePreferences(KRString path) : path_(std::move(path)) {}

  /// The file of this host: its identifier with ".plist" at its end, in the configuration folder.
  static KRRef<KRFilePreferences> forHost();
  static KRString pathForHost();

  const KRString& path() const noexcept { return path_; }

  KRValue value(KRText key) override;
  void setValue(const KRValue& value, KRText forKey) override;
  void remove(KRText key) override;
  KRResult<void> flush() override;

 private:
  /// A key that is to be written; nothing for one that is to be removed.
  struct Change {
    KRString key;
    KRValue value;
  };
  /// Tells whether the file at the path is still the one that was read.
  struct Stamp {
    dev_t device = 0;
    ino_t number = 0;
    off_t size = 0;
    int64_t seconds = 0;
    int64_t nanoseconds = 0;
    friend bool operator==(const Stamp&, const Stamp&) = default;
  };
  enum class Content : uint8_t { Absent, Good, Damaged };

  void change(KRText key, KRValue value);
  std::optional<Stamp> stamp() const;
  /// Reads the file when it may not be the one that was read last.
  void refresh();
  /// Reads the file. An error is one that may pass, such as too many open files, and says nothing about the content.
  KRResult<void> load();
  KRResult<void> writeChanges();
  KRResult<void> setAside() const;
  /// The changed content of the file that was read; nothing when the changes change nothing.
  std::optional<std::string> changedContent();

  const KRString path_;
  std::mutex lock_;
  /// What was read last; `list_` looks at `bytes_`.
  KRBuffer bytes_;
  KRBinaryPlist list_;
  Content content_ = Content::Absent;
  /// Nothing when the file has to be read again in any case.
  std::optional<Stamp> stamp_;
  /// What is not in the file yet.
  std::vector<Change> changes_;
};
