#include "app/FixDocument.h"

#include "app/PersonDocument.h"
#include "app/RowDiff.h"

void FixDocument::begin(KRAddressBook& book, bool isDryRun) {
  json_.beginObject();
  PersonDocument::writeBook(json_, book);
  json_.key("dryRun");
  json_.truth(isDryRun);
  json_.key("fixes");
  json_.beginArray();
}

void FixDocument::beginFix(const FixChoice& choice) {
  json_.beginObject();
  json_.key("issue");
  json_.textOrNull(choice.issue->name());
  json_.key("handle");
  json_.textOrNull(choice.handle->name());
}

void FixDocument::beginEffects() {
  json_.key("effects");
  json_.beginArray();
}

void FixDocument::addEffect(const FixEffect& effect) {
  json_.beginObject(JsonWriter::Layout::OneLine);
  json_.key("persons");
  json_.beginArray();
  for (size_t i = 0; i < effect.persons.count(); ++i) {
    json_.beginObject();
    json_.key("id");
    json_.textOrNull(effect.persons.at(i)->ID());
    json_.key("name");
    json_.text(effect.names[i]);
    json_.endObject();
  }
  json_.endArray();
  json_.key("trashed");
  json_.beginArray();
  for (const auto& person : effect.trashed) json_.textOrNull(person->ID());
  json_.endArray();
  json_.key("isMerged");
  json_.truth(effect.kind == FixKind::Merge);
  writeLines(effect);
  json_.key("allowed");
  effect.allowed.empty() ? json_.null() : json_.text(effect.allowed);
  json_.endObject();
}

void FixDocument::writeLines(const FixEffect& effect) {
  json_.key("lines");
  json_.beginArray();
  for (const RowDiff::Line& line : RowDiff::of(effect.before, effect.after)) {
    if (line.sign == RowDiff::Sign::Kept) continue;
    json_.beginObject();
    json_.key("change");
    json_.text(line.sign == RowDiff::Sign::Added ? "added" : "removed");
    json_.key("property");
    json_.text(line.row.heading);
    json_.key("label");
    json_.text(line.row.label);
    json_.key("text");
    json_.text(line.row.text);
    json_.endObject();
  }
  json_.endArray();
}

void FixDocument::endEffects() {
  json_.endArray();
}

void FixDocument::endFix(const FixAccount& account) {
  const auto number = [&](std::string_view key, size_t value) {
    json_.key(key);
    json_.whole(value);
  };
  number("findings", account.findings);
  number("changed", account.changed);
  number("made", account.made);
  number("trashed", account.trashed);
  json_.key("allowed");
  json_.beginArray(JsonWriter::Layout::OneLine);
  for (const std::string& text : account.allowed) json_.text(text);
  json_.endArray();
  json_.endObject();
}

void FixDocument::end(std::optional<size_t> remembered) {
  json_.endArray();
  if (remembered) {
    json_.key("remembered");
    json_.whole(*remembered);
  }
  json_.endObject();
  json_.endDocument();
}
