#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "contacts/model/IKRPerson.h"
#include "platform/KRPrefetch.h"

/// For a walk over all persons of a list in order: asks for the memory of those that come next, so that reading them
/// does not wait for it. Persons of a large book lie scattered, and each is reached in two steps, the person and then
/// its record.
class KRPersonAhead {
 public:
  explicit KRPersonAhead(const KRPersonList& persons) noexcept : persons_(persons) {}
  enum class Reach : uint8_t { Places, Value };
  /// For a walk that reads records only where they hold the property: where its values stand, or the first one, too.
  KRPersonAhead(const KRPersonList& persons, std::optional<KROrdinal> property, Reach reach = Reach::Value) noexcept
      : persons_(persons), property_(property), reach_(reach) {}

  /// To be called before the person at that place is read.
  void reach(size_t place) const {
    const size_t count = persons_.count();
    if (place + kFar < count) krPrefetch(persons_.at(place + kFar));
    if (!property_) {
      if (place + kNear < count) persons_.at(place + kNear)->prefetch();
      return;
    }
    if (place + kNear < count) persons_.at(place + kNear)->prefetchPlaces(*property_);
    if (reach_ == Reach::Value && place + kNext < count) persons_.at(place + kNext)->prefetchValue(*property_);
  }

 private:
  static constexpr size_t kNext = 12;
  static constexpr size_t kNear = 24;
  static constexpr size_t kFar = 48;

  const KRPersonList& persons_;
  std::optional<KROrdinal> property_;
  Reach reach_ = Reach::Value;
};
