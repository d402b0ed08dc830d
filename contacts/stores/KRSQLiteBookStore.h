#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "contacts/stores/KRBookStore.h"
#include "contacts/stores/KRSQLite.h"
#include "contacts/stores/KRStoreConflicts.h"

/// The store of one book of a library. A save is one transaction: all of it or nothing. A contact's place is its row,
/// its stamp the row's revision, which every change of it counts up.
class KRSQLiteBookStore : public KRBookStore {
 public:
  KRSQLiteBookStore(std::shared_ptr<KRSQLiteDatabase> database, int64_t book, KRString ID, KRString name)
      : database_(std::move(database)), book_(book), ID_(std::move(ID)), name_(std::move(name)) {}

  KRString ID() const override { return ID_; }
  KRString name() const override { return name_; }
  KRString kind() const override { return "sqlite"_kr; }
  KRString place() const override { return KRString(database_->path()); }
  KRResult<size_t> count() override;
  KRResult<KRStoreContent> read() override;
  KRResult<void> write(KRStoreChanges& changes) override;
  bool canChangeGroups() const override { return true; }

 private:
  /// A row of a group and one of a contact in it.
  using Membership = std::pair<int64_t, int64_t>;

  KRStoreContent readAll();
  void requireBook();
  void update(KRStoreChanges& changes);
  void remove(KRStoreChanges& changes);
  void insert(KRStoreChanges& changes);
  std::map<std::string, int64_t> writeGroups(const std::vector<KRStoredGroup>& groups);
  std::vector<Membership> membershipsOf(const KRStoreChanges& changes, const std::map<std::string, int64_t>& rows);
  void writeMemberships(const std::vector<Membership>& memberships);

  const std::shared_ptr<KRSQLiteDatabase> database_;
  const int64_t book_;
  const KRString ID_;
  const KRString name_;
  /// The groups by identifier with their rows, and the memberships in order, as they were last read or written: only
  /// what differs from them is written, so that what another program did to other groups stays.
  std::map<std::string, int64_t> groups_;
  std::vector<Membership> memberships_;
  /// The contacts of a write that another program changed.
  KRStoreConflicts conflicts_;
};
