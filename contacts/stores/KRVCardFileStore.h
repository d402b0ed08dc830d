#pragma once

#include <cstdint>
#include <string_view>

#include "contacts/stores/KRVCardStore.h"
#include "contacts/vcard/KRVCardFile.h"

/// The store of a file of vCards. The file is read whole and written whole; everything in it that is not of a changed
/// contact keeps its bytes. Contacts stand in the file's order, new ones behind the others; a contact's key says
/// nothing. A file that another program changed since it was read is not written to, whatever the change.
///
/// An empty file is an empty book. Groups are cards of the file: `KRVCardGroupEdition`.
class KRVCardFileStore : public KRVCardStore {
 public:
  using KRVCardStore::KRVCardStore;

  KRString kind() const override { return "vcard"_kr; }
  KRResult<size_t> count() override;
  /// `InvalidArgument` for a file that holds something but no card, so that nothing is ever written into it.
  KRResult<KRStoreContent> read() override;
  KRResult<void> write(KRStoreChanges& changes) override;

 private:
  /// The file as it is now, if it is as it was read.
  KRResult<KRVCardFile> unchanged() const;
  bool isThere(std::string_view bytes) const;
  /// The file with its groups as they are wanted; its contacts are as they should be.
  static KRResult<KRVCardFile> withGroups(const KRVCardFile& file, const KRStoreChanges& changes);
  KRError error(const KRError& cause) const;

  uint64_t mark_ = 0;
};
