#include "handles/KRMergeAccount.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "contacts/model/ABPerson.h"
#include "contacts/vcard/KRVCardJoiner.h"
#include "contacts/vcard/KRVCardReader.h"
#include "contacts/vcard/KRVCardRewriter.h"
#include "handles/KRMergedEntries.h"
#include "platform/KRHashIndex.h"

namespace {

using Fate = KRMergedValue::Fate;

const KRMutableSingleValue* asSingle(const KRStoredValue* stored) {
  return dynamic_cast<const KRMutableSingleValue*>(stored);
}

/// One property of the merged person, ready to be asked for the values of the others.
class MergedProperty {
 public:
  MergedProperty(const KRProperty& property, const IKRPerson& merged)
      : property_(property), rule_(krEntryRule(property.name())), stored_(merged.valueByProperty(&property)) {
    const auto* entries = dynamic_cast<const KRMutableMultipleValue*>(stored_.get());
    if (entries == nullptr) return;
    for (size_t i = 0; i < entries->count(); ++i) {
      const KRMutableSingleValue* entry = entries->valueAtIndex(i);
      entries_.push_back(entry);
      own_.emplace(entry, false);
      places_.add(rule_.hash(entry->value()), static_cast<uint32_t>(i));
    }
  }

  void add(const IKRPerson& person, size_t place, std::vector<KRMergedValue>& account) {
    const KRRef<KRStoredValue> value = person.valueByProperty(&property_);
    if (const auto* multiple = dynamic_cast<const KRMutableMultipleValue*>(value.get())) {
      for (size_t i = 0; i < multiple->count(); ++i) account.push_back(told(*multiple->valueAtIndex(i), place));
    } else if (const KRMutableSingleValue* single = asSingle(value.get())) {
      const auto* tags = single->value().as<KRValueList>();
      if (property_.valueType() == KRValueType::TextList && tags != nullptr) {
        addTags(*tags, place, account);
      } else {
        account.push_back(toldWhole(*value, *single, place));
      }
    }
  }

 private:
  KRMergedValue of(size_t person, KRValue value) const {
    KRMergedValue told;
    told.person = person;
    told.property = &property_;
    told.value = std::move(value);
    return told;
  }

  /// A value that is merged whole: the merged person has the very object, or one that says the same.
  KRMergedValue toldWhole(const KRStoredValue& value, const KRMutableSingleValue& single, size_t person) {
    KRMergedValue told = of(person, single.value());
    const KRMutableSingleValue* merged = asSingle(stored_.get());
    if (stored_.get() == &value) {
      // Persons may share one object; it is kept once.
      told.fate = wholeIsTold_ ? Fate::Equal : Fate::Kept;
      wholeIsTold_ = true;
    } else if (merged != nullptr && merged->value().isEqual(single.value())) {
      told.fate = Fate::Equal;
    }
    return told;
  }

  KRMergedValue told(const KRMutableSingleValue& entry, size_t person) {
    KRMergedValue told = of(person, entry.value());
    told.label = entry.label();
    if (const auto own = own_.find(&entry); own != own_.end()) {
      told.fate = own->second ? Fate::Equal : Fate::Kept;
      own->second = true;
      return told;
    }
    const uint32_t same = places_.find(rule_.hash(entry.value()), [&](uint32_t place) {
      return rule_.isSame(entries_[place]->value(), entry.value());
    });
    if (same == KRHashIndex::kNone) return told;
    told.fate = Fate::Equal;
    const KRRef<KRLabel> kept = entries_[same]->label();
    if (!krEqualObjects(kept.get(), told.label.get())) told.keptLabel = kept;
    return told;
  }

  void addTags(const KRValueList& tags, size_t person, std::vector<KRMergedValue>& account) {
    const KRMutableSingleValue* merged = asSingle(stored_.get());
    const auto* kept = merged != nullptr ? merged->value().as<KRValueList>() : nullptr;
    if (kept != nullptr && !tagsAreIndexed_) {
      for (size_t i = 0; i < kept->values().size(); ++i) {
        places_.add(kept->values()[i].hash(), static_cast<uint32_t>(i));
      }
      tagsAreIndexed_ = true;
    }
    const size_t before = tagsTold_.size();
    for (const KRValue& tag : tags.values()) {
      KRMergedValue told = of(person, tag);
      const bool isThere = kept != nullptr && places_.find(tag.hash(), [&](uint32_t place) {
        return kept->values()[place].isEqual(tag);
      }) != KRHashIndex::kNone;
      const uint32_t earlier =
          toldPlaces_.find(tag.hash(), [&](uint32_t place) { return tagsTold_[place].isEqual(tag); });
      // A tag that one person lists twice stays twice.
      if (isThere) told.fate = earlier < before ? Fate::Equal : Fate::Kept;
      if (earlier == KRHashIndex::kNone) {
        toldPlaces_.add(tag.hash(), static_cast<uint32_t>(tagsTold_.size()));
        tagsTold_.push_back(tag);
      }
      account.push_back(std::move(told));
    }
  }

  const KRProperty& property_;
  const KREntryRule& rule_;
  const KRRef<KRStoredValue> stored_;
  std::vector<const KRMutableSingleValue*> entries_;
  /// Whether each of the merged person's entries has been told of already.
  std::unordered_map<const KRMutableSingleValue*, bool> own_;
  bool wholeIsTold_ = false;
  KRHashIndex places_;
  bool tagsAreIndexed_ = false;
  /// The tags of the persons so far, each once.
  std::vector<KRValue> tagsTold_;
  KRHashIndex toldPlaces_;
};

/// The lines of the merged person's card that no property shows: those that a store will write.
class MergedLines {
 public:
  explicit MergedLines(const IKRPerson& merged) {
    const auto* record = dynamic_cast<const ABPerson*>(&merged);
    if (record == nullptr || record->card().empty()) return;
    version_ = krCardVersion(*record);
    const KRRef<ABPerson> written = KRVCardReader::readOne(KRVCardRewriter::rewritten(*record));
    if (!written) return;
    for (std::string& line : krUnshownLines(*written, version_)) lines_.insert(std::move(line));
  }

  void add(const IKRPerson& person, size_t place, std::vector<KRMergedValue>& account) {
    const auto* record = dynamic_cast<const ABPerson*>(&person);
    if (record == nullptr) return;
    for (std::string& line : krUnshownLines(*record, version_)) {
      KRMergedValue told;
      told.person = place;
      told.value = KRString(line);
      if (lines_.count(line) != 0) told.fate = told_.insert(line).second ? Fate::Kept : Fate::Equal;
      account.push_back(std::move(told));
    }
  }

 private:
  KRVCardVersion version_ = KRVCardVersion::V30;
  std::unordered_set<std::string> lines_;
  std::unordered_set<std::string> told_;
};

class MergedGroups {
 public:
  explicit MergedGroups(const IKRPerson& merged) : groups_(merged.parentGroups()) {}

  void add(const IKRPerson& person, size_t place, std::vector<KRMergedValue>& account) {
    for (KRRef<KRGroup>& group : person.parentGroups()) {
      KRMergedValue told;
      told.person = place;
      told.value = group->name();
      const bool isKept = std::find(groups_.begin(), groups_.end(), group) != groups_.end();
      if (isKept) told.fate = told_.insert(group.get()).second ? Fate::Kept : Fate::Equal;
      told.group = std::move(group);
      account.push_back(std::move(told));
    }
  }

 private:
  const std::vector<KRRef<KRGroup>> groups_;
  std::unordered_set<const KRGroup*> told_;
};

}  // namespace

std::vector<KRMergedValue> krMergeAccount(const KRPersonArray& persons, const IKRPerson& merged) {
  std::vector<MergedProperty> properties;
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) properties.emplace_back(*property, merged);
  MergedLines lines(merged);
  MergedGroups groups(merged);
  std::vector<KRMergedValue> account;
  for (size_t place = 0; place < persons.count(); ++place) {
    const IKRPerson& person = *persons.at(place);
    for (MergedProperty& property : properties) property.add(person, place, account);
    lines.add(person, place, account);
    groups.add(person, place, account);
  }
  return account;
}
