#pragma once

#include <string_view>

#include "app/JsonWriter.h"

/// Writes one line of JSON: an event by its name, with whatever `addMore(json)` adds.
template <class More>
void writeEvent(Output& out, std::string_view name, More addMore) {
  JsonWriter json(out, JsonWriter::Layout::OneLine);
  json.beginObject();
  json.key("event");
  json.text(name);
  addMore(json);
  json.endObject();
  json.endDocument();
}
