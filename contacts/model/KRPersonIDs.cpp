#include "contacts/model/KRPersonIDs.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <random>
#include <span>
#include <string>
#include <utility>

#include "contacts/model/ABPerson.h"
#include "contacts/model/KRAsRecord.h"
#include "contacts/model/KRCardIdentity.h"
#include "contacts/model/KRCardPrefetch.h"
#include "platform/KRPrefetch.h"

namespace {

uint64_t hashOf(KRText text) {
  const uint64_t hash = text.hash();
  return hash == 0 ? 1 : hash;
}

/// Which holder of the identifier `base`, whose hash is given, the next one is, from 1. `insert` takes a hash and tells
/// whether it was free.
template <class Insert>
uint32_t suffixOf(KRText base, uint64_t hash, std::unordered_map<uint64_t, uint32_t>& lastSuffix,
                  const Insert& insert) {
  if (insert(hash)) return 1;
  // Where many share one identifier, the search goes on where the last one ended.
  uint32_t& last = lastSuffix[hash];
  std::string tried;
  do {
    last = std::max(last + 1, 2U);
    tried.assign(base.view()).append("-").append(std::to_string(last));
  } while (!insert(hashOf(KRText(std::string_view(tried)))));
  return last;
}

/// How many persons get their identifiers at once.
constexpr size_t kAtOnce = 256;

/// The identifiers of some records without regard to others, and their hashes. Where there is no record it says
/// nothing. As long as the records are not changed.
class Bases {
 public:
  explicit Bases(std::span<const ABPerson* const> records) {
    std::array<std::string_view, kAtOnce> cards;
    std::array<size_t, kAtOnce> places;
    size_t made = 0;
    for (size_t i = 0; i < records.size(); ++i) {
      if (records[i] == nullptr) continue;
      const KRCardRecord& record = records[i]->record();
      const KRCardRow* UID = record.find(KRCardPart::UID);
      given_[i] = records[i]->givenID();
      texts_[i] = !given_[i].isNothing() || UID == nullptr ? given_[i].text() : record.view(*UID);
      if (!texts_[i].isNothing()) continue;
      cards[made] = record.card();
      places[made++] = i;
    }
    krCardIdentities(std::span(cards).first(made), identities_);
    for (size_t i = 0; i < made; ++i) texts_[places[i]] = identities_[i].text();
    for (size_t i = 0; i < records.size(); ++i) hashes_[i] = hashOf(texts_[i]);
  }
  Bases(const Bases&) = delete;
  Bases& operator=(const Bases&) = delete;

  KRText text(size_t i) const noexcept { return texts_[i]; }
  uint64_t hash(size_t i) const noexcept { return hashes_[i]; }

 private:
  std::array<KRString, kAtOnce> given_;
  std::array<KRCardIdentity, kAtOnce> identities_;
  std::array<KRText, kAtOnce> texts_;
  std::array<uint64_t, kAtOnce> hashes_;
};

std::atomic<uint32_t> lastSerial{0};

}  // namespace

KRString KRPersonIDs::newIdentifier() {
  static thread_local std::mt19937_64 random{[] {
    std::random_device device;
    return uint64_t{device()} << 32U | device();
  }()};
  char text[37];
  const uint64_t high = random();
  const uint64_t low = random();
  // A random UUID (version 4): fixed bits in two places, the rest drawn.
  std::snprintf(text, sizeof text, "%08x-%04x-4%03x-%04x-%012llx", static_cast<unsigned>(high >> 32U),
                static_cast<unsigned>(high >> 16U & 0xFFFFU), static_cast<unsigned>(high & 0xFFFU),
                static_cast<unsigned>((low >> 48U & 0x3FFFU) | 0x8000U),
                static_cast<unsigned long long>(low & 0xFFFFFFFFFFFFULL));
  return KRString::trusted(std::string_view(text, 36));
}

KRPersonIDs::KRPersonIDs() : serial_(++lastSerial) {}

void KRPersonIDs::assign(const KRList<IKRPerson>& persons, const ABPerson* asking) {
  const std::lock_guard guard(lock_);
  const auto insertOne = [this](uint64_t hash) { return insert(hash); };
  // New persons stand at the end: those from the last assigned one on are new.
  size_t first = persons.count();
  while (first > 0) {
    const ABPerson* record = krAsRecord(*persons.at(first - 1));
    if (record != nullptr && record->isIDAssigned()) break;
    --first;
  }
  // Persons and their places in the table lie scattered: some are asked for ahead.
  constexpr size_t kAhead = 8;
  const size_t count = persons.count();
  reserve(count_ + count - first);
  for (; first < count; first += kAtOnce) {
    const size_t size = std::min(count - first, kAtOnce);
    std::array<const ABPerson*, kAtOnce> records;
    for (size_t i = 0; i < size; ++i) {
      if (first + i + kAhead < count) krPrefetchCardPlace(*persons.at(first + i + kAhead));
      records[i] = krAsRecord(*persons.at(first + i));
    }
    const Bases bases({records.data(), size});
    for (size_t i = 0; i < size; ++i) krPrefetchToWrite(used() + (bases.hash(i) & mask()));
    for (size_t i = 0; i < size; ++i) {
      if (records[i] == nullptr) {
        // A host's own kind of person, whose identifier is its own affair.
        insert(hashOf(persons.at(first + i)->ID()));
      } else {
        records[i]->setIDSuffix(suffixOf(bases.text(i), bases.hash(i), lastSuffix_, insertOne), serial_);
      }
    }
  }
  if (asking == nullptr || asking->isIDAssigned()) return;
  // A person that came back with its identifier hides those that came before it.
  for (const IKRPerson& person : persons) {
    const ABPerson* record = krAsRecord(person);
    if (record != nullptr && !record->isIDAssigned()) assignOne(person);
  }
  if (!asking->isIDAssigned()) assignOne(*asking);
}

void KRPersonIDs::assignOne(const IKRPerson& person) {
  const ABPerson* record = krAsRecord(person);
  if (record == nullptr) {
    insert(hashOf(person.ID()));
    return;
  }
  const KRString base = record->baseID();
  const auto insertOne = [this](uint64_t hash) { return insert(hash); };
  record->setIDSuffix(suffixOf(base, hashOf(base), lastSuffix_, insertOne), serial_);
}

size_t KRPersonIDs::slotOf(uint64_t hash) const noexcept {
  size_t slot = hash & mask();
  while (used()[slot] != 0 && used()[slot] != hash) slot = (slot + 1) & mask();
  return slot;
}

bool KRPersonIDs::insert(uint64_t hash) {
  reserve(count_ + 1);
  const size_t slot = slotOf(hash);
  if (used()[slot] == hash) return false;
  used()[slot] = hash;
  ++count_;
  return true;
}

void KRPersonIDs::release(const ABPerson& person) {
  const std::lock_guard guard(lock_);
  erase(hashOf(person.ID()));
}

bool KRPersonIDs::reclaim(const ABPerson& person) {
  const std::lock_guard guard(lock_);
  return insert(hashOf(person.ID()));
}

void KRPersonIDs::erase(uint64_t hash) {
  if (size_ == 0) return;
  size_t hole = slotOf(hash);
  if (used()[hole] == 0) return;
  // Those behind it that would not be found any more with a hole before them move up.
  for (size_t slot = (hole + 1) & mask(); used()[slot] != 0; slot = (slot + 1) & mask()) {
    const size_t wanted = used()[slot] & mask();
    if (((slot - wanted) & mask()) < ((slot - hole) & mask())) continue;
    used()[hole] = used()[slot];
    hole = slot;
  }
  used()[hole] = 0;
  --count_;
}

void KRPersonIDs::reserve(size_t count) {
  size_t size = std::max(size_, size_t{64});
  while (size < count * 2) size *= 2;
  if (size == size_) return;
  const KRZeroMemory former = std::exchange(memory_, KRZeroMemory(size * sizeof(uint64_t)));
  const std::span<const uint64_t> old(static_cast<const uint64_t*>(former.data()), std::exchange(size_, size));
  for (const uint64_t hash : old) {
    if (hash != 0) used()[slotOf(hash)] = hash;
  }
}
