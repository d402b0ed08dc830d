#pragma once

#include "platform/KRObject.h"
#include "platform/KRString.h"

/// The tags of one address book. There is one shared manager an identifier; managers live as long as the process.
/// Safe from any thread.
class KRTagManager : public KRObject {
 public:
  /// The shared manager of that identifier (written form: `tagManagerWithID:`).
  static KRTagManager* tagManagerWithID(const KRString& ID);

  explicit KRTagManager(KRString ID) : ID_(std::move(ID)) {}

  KRString ID() const { return ID_; }

 private:
  KRString ID_;
};
