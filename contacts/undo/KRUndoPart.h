#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "contacts/undo/KRUndoRecords.h"
#include "platform/KRFilePreferences.h"
#include "platform/KRResult.h"
#include "platform/KRString.h"
#include "platform/KRValue.h"

/// One write of a run, as its record has it.
struct KRUndoPart {
  /// The kinds of parts: files, a preference, rows of a library, cards of a book of the desktop.
  static constexpr KRText kFiles = "files";
  static constexpr KRText kPreference = "preference";
  static constexpr KRText kRows = "rows";
  static constexpr KRText kCards = "cards";

  int64_t number = 0;
  std::string kind;
  std::string fields;

  /// `Damaged`, and the errors of files.
  static KRResult<KRUndoPart> read(const KRUndoRecords::Run& run, int64_t number);
  /// Puts the part into the run's folder, whole or not at all.
  KRResult<void> write(const KRUndoRecords::Run& run) const;
};

/// Files that were replaced, made or removed: one, or some of a folder.
struct KRUndoFiles {
  struct File {
    /// Whole, or in `folder`.
    std::string path;
    /// The marks of the content before and after; nothing for no file.
    std::optional<uint64_t> before{};
    std::optional<uint64_t> after{};
    /// The file's mode before.
    int64_t mode = 0;
    /// What a removed one was a link to, as the link says it; empty for one that was none.
    std::string link{};
  };

  /// Empty for a file that stands for itself.
  std::string folder{};
  std::string lockedAt{};
  /// What is kept of the file at index i is in the record's file of that number.
  std::vector<File> files{};

  std::string pathOf(const File& file) const { return folder.empty() ? file.path : folder + "/" + file.path; }
  std::string fields() const;
  static std::optional<KRUndoFiles> read(std::string_view fields);
};

/// One preference in a file of preferences.
struct KRUndoPreference {
  std::string path{};
  KRString key{};
  KRValue before{};
  KRValue after{};

  /// A mark of a preference's value; nothing for nothing.
  static std::optional<uint64_t> markOf(const KRValue& value);
  static std::string of(const KRFilePreferences::Observed& change);
  static std::optional<KRUndoPreference> read(std::string_view fields);
};
