#pragma once

#include "contacts/stores/KRBookStore.h"

/// What the stores of vCards have in common: a book is called after its path, contacts are counted by reading them, and
/// groups are cards (`KRVCardGroupEdition`).
class KRVCardStore : public KRBookStore {
 public:
  explicit KRVCardStore(KRText path) : path_(path) {}

  KRString ID() const override;
  KRString name() const override;
  KRString place() const override { return path_; }
  bool canCount() const override { return false; }
  bool canChangeGroups() const override { return true; }

 protected:
  const KRString path_;
};
