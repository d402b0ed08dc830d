#include "platform/KRObject.h"

#include <cinttypes>
#include <cstdio>

#include "platform/KRHash.h"
#include "platform/KRString.h"

bool KRObject::isEqual(const KRObject* other) const {
  return this == other;
}

uint64_t KRObject::hash() const {
  return krHashMix(reinterpret_cast<uintptr_t>(this), 0);
}

KRString KRObject::description() const {
  char text[40];
  const int size = std::snprintf(text, sizeof text, "<object 0x%" PRIxPTR ">", reinterpret_cast<uintptr_t>(this));
  return KRString(std::string_view(text, static_cast<size_t>(size)));
}

KRText KRObject::archiveClassName() const {
  return {};
}

void KRObject::encodeWithCoder(KRKeyedArchiver&) const {}

void KRObject::firstReference() const noexcept {}

void KRObject::releaseInGraph() const noexcept {}
