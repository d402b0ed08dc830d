#include "app/ScanDocument.h"

#include <algorithm>
#include <vector>

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

void writeText(JsonWriter& json, const KRString& text) {
  if (text.isNothing()) {
    json.null();
  } else {
    json.text(text.view());
  }
}

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

void writeFinding(JsonWriter& json, const KRIssueObject& finding, const Places& places) {
  json.beginObject(Layout::OneLine);
  json.key("describe");
  writeText(json, finding.describe());
  json.key("info");
  writeInfo(json, finding.info());
  json.key("persons");
  json.beginArray();
  for (const IKRPerson* person : finding.persons()) {
    json.beginObject();
    json.key("index");
    json.whole(places.of(person));
    json.key("id");
    writeText(json, person->ID());
    json.key("showName");
    writeText(json, person->showName());
    json.endObject();
  }
  json.endArray();
  json.endObject();
}

void writeContext(JsonWriter& json, KRIssueContext& context, const Places& places) {
  const KRRef<KRIssue> issue = context.issue();
  json.beginObject();
  json.key("issue");
  writeText(json, issue->name());
  json.key("displayName");
  writeText(json, issue->displayName());
  json.key("describe");
  writeText(json, issue->describe());
  json.key("multiPerson");
  json.truth(issue->multiPerson());
  json.key("handles");
  json.beginArray(Layout::OneLine);
  for (const KRIssueHandle& handle : issue->handles()) writeText(json, handle.name());
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

}  // namespace

void ScanDocument::write(JsonWriter& json, KRIssueFindResult& result, const KRStringList& scanned) {
  const KRRef<KRAddressBook> book = result.addressBook();
  const Places places(*book);
  json.beginObject();
  json.key("addressBook");
  json.beginObject(Layout::OneLine);
  json.key("id");
  writeText(json, book->ID());
  json.key("name");
  writeText(json, book->name());
  json.key("personCount");
  json.whole(book->allPersonsCount());
  json.endObject();
  json.key("issues");
  json.beginArray(Layout::OneLine);
  for (const KRString& name : scanned) json.text(name.view());
  json.endArray();
  json.key("contexts");
  json.beginArray();
  for (KRIssueContext& context : result.contexts()) {
    if (json.failed()) break;
    writeContext(json, context, places);
  }
  json.endArray();
  json.endObject();
}
