#include "app/ScanDocument.h"

#include <algorithm>
#include <vector>

#include "app/NearMissReport.h"
#include "app/PersonDocument.h"
#include "contacts/model/KRAddressBook.h"
#include "handles/KRIssueHandle.h"
#include "issues/KRIssue.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueObject.h"

namespace {

using Layout = JsonWriter::Layout;

/// The places of persons in their book. Sixteen bytes a person: the one thing here that grows with the book.
class Places {
 public:
  explicit Places(KRAddressBook& book) {
    rows_.reserve(book.allPersonsCount());
    for (const IKRPerson& person : book.allPersons()) rows_.push_back({&person, rows_.size()});
    std::sort(rows_.begin(), rows_.end(), less);
  }

  /// From 0; -1 for a person who is not in the book.
  int64_t of(const IKRPerson* person) const {
    const auto found = std::lower_bound(rows_.begin(), rows_.end(), Row{person, 0}, less);
    return found != rows_.end() && found->person == person ? static_cast<int64_t>(found->place) : -1;
  }

 private:
  struct Row {
    const IKRPerson* person;
    size_t place;
  };
  static bool less(const Row& a, const Row& b) { return std::less<const IKRPerson*>()(a.person, b.person); }

  std::vector<Row> rows_;
};

void writeTexts(JsonWriter& json, const std::vector<KRValue>& values) {
  json.beginArray(Layout::OneLine);
  for (const KRValue& value : values)
    json.text(value.asText() != nullptr ? value.text().view() : value.description().view());
  json.endArray();
}

/// What the finding is about: null, text, a list of texts, or an object of lists.
void writeInfo(JsonWriter& json, const KRValue& info) {
  if (info.isNothing()) {
    json.null();
  } else if (const auto* list = info.as<KRValueList>()) {
    writeTexts(json, list->values());
  } else if (const auto* map = info.as<KRValueMap>()) {
    json.beginObject(Layout::OneLine);
    for (const KRValueMap::Entry& entry : map->entries()) {
      json.key(entry.key.view());
      if (const auto* values = entry.value.as<KRValueList>()) {
        writeTexts(json, values->values());
      } else {
        writeTexts(json, {entry.value});
      }
    }
    json.endObject();
  } else {
    const KRString text = info.asText() != nullptr ? info.text() : info.description();
    json.text(text.view());
  }
}

void writePersons(JsonWriter& json, const KRPersonArray& persons, const Places& places) {
  json.key("persons");
  json.beginArray();
  for (const IKRPerson* person : persons) {
    json.beginObject();
    json.key("index");
    json.whole(places.of(person));
    json.key("id");
    json.textOrNull(person->ID());
    json.key("showName");
    json.textOrNull(person->showName());
    json.endObject();
  }
  json.endArray();
}

void writeFinding(JsonWriter& json, const KRIssueObject& finding, const Places& places) {
  json.beginObject(Layout::OneLine);
  json.key("describe");
  json.textOrNull(finding.describe());
  json.key("info");
  writeInfo(json, finding.info());
  writePersons(json, finding.persons(), places);
  json.endObject();
}

void writeContext(JsonWriter& json, KRIssueContext& context, const Places& places) {
  const KRRef<KRIssue> issue = context.issue();
  json.beginObject();
  json.key("issue");
  json.textOrNull(issue->name());
  json.key("displayName");
  json.textOrNull(issue->displayName());
  json.key("describe");
  json.textOrNull(issue->describe());
  json.key("multiPerson");
  json.truth(issue->multiPerson());
  json.key("handles");
  json.beginArray(Layout::OneLine);
  for (const KRIssueHandle& handle : issue->handles()) json.textOrNull(handle.name());
  json.endArray();
  json.key("findings");
  json.beginArray();
  for (const KRIssueObject& finding : context.objects()) {
    if (json.failed()) break;
    writeFinding(json, finding, places);
  }
  json.endArray();
  json.endObject();
}

void writeSide(JsonWriter& json, const KRNearMiss::Side& side, const Places& places) {
  json.beginObject(Layout::OneLine);
  json.key("key");
  json.textOrNull(side.key);
  json.key("parts");
  json.beginArray();
  for (const KRNearMiss::Part& part : side.parts) {
    json.beginObject();
    json.key("part");
    json.textOrNull(part.name);
    json.key("text");
    json.textOrNull(part.text);
    json.key("folded");
    json.textOrNull(part.folded);
    json.endObject();
  }
  json.endArray();
  writePersons(json, side.persons, places);
  json.endObject();
}

void writeNearMiss(JsonWriter& json, const KRNearMiss& miss, const Places& places) {
  json.beginObject();
  json.key("issue");
  json.textOrNull(miss.issueName);
  json.key("foldedKey");
  json.textOrNull(miss.foldedKey);
  json.key("differences");
  json.beginArray(Layout::OneLine);
  for (const KRNearMiss::Difference& difference : miss.differences) {
    json.beginObject();
    json.key("part");
    json.textOrNull(difference.part);
    json.key("by");
    json.beginArray();
    for (const KRNearMissReason reason : difference.reasons) json.text(NearMissReport::nameOf(reason));
    json.endArray();
    json.endObject();
  }
  json.endArray();
  json.key("sides");
  json.beginArray();
  for (const KRNearMiss::Side& side : miss.sides) {
    if (json.failed()) break;
    writeSide(json, side, places);
  }
  json.endArray();
  json.endObject();
}

}  // namespace

void ScanDocument::write(JsonWriter& json, KRIssueFindResult& result, const KRStringList& scanned,
                         const std::vector<KRNearMiss>* nearMisses, const size_t* hidden) {
  const KRRef<KRAddressBook> book = result.addressBook();
  const Places places(*book);
  json.beginObject();
  PersonDocument::writeBook(json, *book);
  json.key("issues");
  json.beginArray(Layout::OneLine);
  for (const KRString& name : scanned) json.text(name.view());
  json.endArray();
  if (hidden != nullptr) {
    json.key("hidden");
    json.whole(*hidden);
  }
  json.key("contexts");
  json.beginArray();
  for (KRIssueContext& context : result.contexts()) {
    if (json.failed()) break;
    writeContext(json, context, places);
  }
  json.endArray();
  if (nearMisses != nullptr) {
    json.key("nearMisses");
    json.beginArray();
    for (const KRNearMiss& miss : *nearMisses) {
      if (json.failed()) break;
      writeNearMiss(json, miss, places);
    }
    json.endArray();
  }
  json.endObject();
}
