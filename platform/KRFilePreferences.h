#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/KRBinaryPlist.h"
#include "platform/KRBuffer.h"
#include "platform/KRFileStamp.h"
#include "platform/KRPreferenceChanges.h"
#include "platform/KRPreferences.h"

/// Preferences in one file, a binary property list whose root is a dictionary.
///
/// A change takes a lock (a file beside, with ".lock" at its end, which stays there), reads the file again, changes its
/// own keys and puts a new file in the place of the old one: keys that another process wrote meanwhile stay, and with
/// `update` what it wrote under the same key; no moment leaves half a file. While another process writes, a change
/// waits for it. A change after which everything is as it was writes nothing. What other processes write is seen by the
/// next `value`.
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

  /// A change of one key that is about to be written; nothing is no value.
  struct Observed {
    KRText path;
    KRText key;
    KRValue before;
    KRValue after;
  };
  /// Has every change of every such file of this process told before it is written, on the thread that writes; an
  /// empty function ends that. What is called does not touch the same file of preferences.
  static void setObserver(std::function<void(const Observed&)> observer);

  KRValue value(KRText key) override;
  void setValue(const KRValue& value, KRText forKey) override;
  void update(KRText key, const Change& change) override;
  void remove(KRText key) override;
  KRResult<void> flush() override;

 private:
  enum class Content : uint8_t { Absent, Good, Damaged };

  KRValue valueInFile(KRText key) const;
  /// Reads the file when it may not be the one that was read last.
  void refresh();
  /// Reads the file. An error is one that may pass, such as too many open files, and says nothing about the content.
  KRResult<void> load();
  KRResult<void> writeChanges();
  /// What the changes make of the file that was read, where they make a difference.
  std::vector<Observed> differences() const;
  std::string contentWith(const std::vector<Observed>& differences);

  const KRString path_;
  std::mutex lock_;
  /// What was read last; `list_` looks at `bytes_`.
  KRBuffer bytes_;
  KRBinaryPlist list_;
  Content content_ = Content::Absent;
  /// Nothing when the file has to be read again in any case.
  std::optional<KRFileStamp> stamp_;
  /// What is not in the file yet.
  KRPreferenceChanges changes_;
};
