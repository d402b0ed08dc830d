#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "contacts/stores/KRStoreConflicts.h"
#include "contacts/stores/KRVCardEdition.h"
#include "contacts/stores/KRVCardGroupEdition.h"
#include "contacts/stores/KRVCardStaging.h"
#include "contacts/stores/KRVCardStore.h"
#include "contacts/undo/KRUndoRecorder.h"

/// The store of a folder of vCards, one contact a file, as programs that synchronise address books keep them. Files
/// whose names end in ".vcf" count, in the order of their names; hidden ones and folders inside do not. Files of
/// several contacts are understood too.
///
/// A save writes the files of changed contacts only. New contacts get files named after their identifiers; the file of
/// a removed one is removed. All new content is written beside first, in a hidden folder, so that a full disk leaves
/// everything as it was, and then moved in place file by file: new contacts, then changed ones, then removals. When one
/// of these fails, those before it are taken back, so that the folder is as it was; where even that fails, the sentence
/// says so, the contacts of the files that stay are saved and the others are not.
///
/// A contact's place is the number of its file. Groups are cards as well: `KRVCardGroupEdition`; a new one gets a file
/// of its own. Those of files that another program changed since are not written to.
class KRVCardFolderStore : public KRVCardStore {
 public:
  using KRVCardStore::KRVCardStore;

  KRString kind() const override { return "folder"_kr; }
  KRResult<size_t> count() override;
  KRResult<KRStoreContent> read() override;
  KRResult<void> write(KRStoreChanges& changes) override;

 private:
  struct File {
    std::string name;
    uint64_t mark;
    /// Those whose cards stand in it.
    std::vector<KRVCardGroup> groups{};
  };
  /// What is to happen to one file.
  struct Step {
    size_t file;
    KRVCardEdition edition;
    /// The file before, and as it is to be; without cards where there is none.
    KRVCardFile before{};
    KRVCardFile content{};

    bool isRemoved() const noexcept { return content.cards().empty(); }
    bool isWritten() const noexcept { return !isRemoved() && content.bytes() != before.bytes(); }
    bool wasThere() const noexcept { return !before.cards().empty(); }
  };
  using UIDs = std::unordered_map<const IKRPerson*, KRString>;

  std::string pathOf(std::string_view name) const;
  KRError error(const KRError& cause, std::string_view name) const;
  /// The names of the files of contacts, in their order.
  static KRResult<std::vector<std::string>> namesIn(KRText folder);
  KRResult<KRUndoNote> recordUndo(const std::vector<Step>& steps) const;
  std::vector<Step> stepsOf(KRStoreChanges& changes) const;
  KRResult<void> edit(Step& step, const KRStoreChanges& changes, const UIDs& names, KRStoreConflicts& conflicts) const;
  /// Reads the file of a step that has no contacts to change. `Changed` when it is another one by now.
  KRResult<void> open(Step& step) const;
  KRResult<void> editGroups(const KRStoreChanges& changes, std::vector<Step>& edits,
                            std::unordered_set<std::string>& newNames);
  /// The version of the contacts, for the card of a new group.
  static KRVCardVersion versionOf(const KRStoreChanges& changes);
  KRResult<void> addFile(KRStoreChanges::Added& addition, const UIDs& names, std::vector<Step>& steps,
                         std::unordered_set<std::string>& newNames);
  std::string freshName(KRText ID, const std::unordered_set<std::string>& newNames) const;
  /// Refuses what is to happen to a file that is read-only.
  KRResult<void> checkReplaced(const Step& step) const;
  KRResult<void> finish(std::vector<Step>& steps);
  KRResult<void> finish(const Step& step, const std::string& staged);
  KRResult<void> takeBack(const Step& step, size_t index, const KRVCardStaging& staging);
  /// Takes back as many of the first steps, which are done; `cause` is why, which becomes the error.
  KRError takeBack(std::vector<Step>& steps, size_t done, const KRVCardStaging& staging, KRUndoNote& note,
                   const KRError& cause);

  /// Files keep their numbers, also when one is removed.
  std::vector<File> files_;
};
