#pragma once

#include "platform/KRObject.h"
#include "platform/KRString.h"

/// A group of contacts in an address book. Compared by identity.
class KRGroup : public KRObject {
 public:
  KRGroup(KRString uniqueId, KRString name) : uniqueId_(std::move(uniqueId)), name_(std::move(name)) {}

  KRString uniqueId() const { return uniqueId_; }
  KRString name() const { return name_; }
  KRString description() const override { return name_; }

 private:
  KRString uniqueId_;
  KRString name_;
};
