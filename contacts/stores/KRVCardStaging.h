#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/KRResult.h"

/// The hidden folder inside a folder of vCards in which the files of one save are prepared, so that a full disk is met
/// before anything has changed. Taken away in the end; those of processes that were stopped in the middle are taken
/// away first.
class KRVCardStaging {
 public:
  /// For so many files.
  KRVCardStaging(const std::string& folder, size_t count);
  KRVCardStaging(const KRVCardStaging&) = delete;
  KRVCardStaging& operator=(const KRVCardStaging&) = delete;
  ~KRVCardStaging();

  /// Where the file of that number is.
  std::string at(size_t index) const { return path_ + "/" + std::to_string(index); }
  /// Writes the bytes into it, with the mode of the file that they will replace.
  KRResult<void> put(size_t index, std::string_view bytes, const std::string& target);
  /// Gives the file at the target a second name in here, so that `putBack` needs no room. Not on file systems without
  /// second names.
  void keep(size_t index, const std::string& target);
  /// Puts back what was kept; `NotFound` when nothing was.
  KRResult<void> putBack(size_t index, const std::string& target) const;
  /// Makes sure that all of them outlive a loss of power. Nothing is moved in place before.
  KRResult<void> flush();

 private:
  KRResult<void> make();
  std::string keptAt(size_t index) const { return at(index) + ".old"; }

  const std::string path_;
  /// Whether they go to the disk one by one: thousands go there together in one thousandth of the time, a few are not
  /// worth waiting for everything else that the disk has to write.
  const bool isFlushedEach_;
  bool isMade_ = false;
};
