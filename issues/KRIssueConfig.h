#pragma once

#include <atomic>
#include <cstdint>

#include "platform/KRObject.h"
#include "platform/KRText.h"

class KRKeyedUnarchiver;

/// Which parts of a name the search for duplicate names compares, kept in the preferences: bit 0 (1) first names, bit 1
/// (2) middle names, bit 2 (4) last names. Higher bits are kept but mean nothing.
///
/// The setting may be read on any thread while the host changes it; a running find may or may not see the change.
class KRIssueConfig : public KRObject {
 public:
  /// The shared configuration: made on first use from what the preferences hold, else by `init`. It lives as long as
  /// the process. Any thread.
  static KRIssueConfig& shareObject();
  /// Has the next use make the shared configuration anew from the preferences, for a host that has put another store in
  /// their place. The former one stays valid, but is the shared one no more.
  static void reloadShared();

  /// All three parts (7), not saved (written form: `init`).
  static KRRef<KRIssueConfig> init();
  /// The configuration of a stored archive (written form: `initWithCoder:`). A value with one of the three bits is
  /// written back at once; any other reads as 7 and is not.
  static KRRef<KRIssueConfig> initWithCoder(KRKeyedUnarchiver& coder);
  /// The configuration of archived bytes; nothing when they are none.
  static KRRef<KRIssueConfig> unarchive(std::string_view data);

  int64_t duplicateNameScanSetting() const noexcept { return setting_.load(std::memory_order_relaxed); }
  /// Keeps the whole number and saves it. A number without any of the three bits is ignored.
  void setDuplicateNameScanSetting(int64_t setting);

  bool duplicateNameScanFirst() const noexcept { return (duplicateNameScanSetting() & 1) != 0; }
  bool duplicateNameScanMiddle() const noexcept { return (duplicateNameScanSetting() & 2) != 0; }
  bool duplicateNameScanLast() const noexcept { return (duplicateNameScanSetting() & 4) != 0; }
  /// Whether the setting is exactly 7; with a higher bit set it is not, on purpose.
  bool duplicateNameScanFull() const noexcept { return duplicateNameScanSetting() == 7; }

  /// Writes the setting into the preferences and flushes them to the disk.
  void saveToDefault();

  KRText archiveClassName() const override;
  void encodeWithCoder(KRKeyedArchiver& coder) const override;

 private:
  template <class T, class... Arguments>
  friend KRRef<T> krMake(Arguments&&...);
  explicit KRIssueConfig(int64_t setting) noexcept : setting_(setting) {}

  std::atomic<int64_t> setting_;
};
