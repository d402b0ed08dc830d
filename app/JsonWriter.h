#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "app/Output.h"
#include "platform/KRText.h"

/// Writes a JSON document (RFC 8259) piece by piece, so that a document of any size needs no memory of its own.
///
/// The caller keeps the order: in an object a key before each value, and every `begin` has its `end`. Texts are UTF-8;
/// control characters, and the two line separators, are escaped, so that a document can be looked at on a terminal.
class JsonWriter {
 public:
  /// `Lines` puts each member of a container on a line of its own; `OneLine` keeps the container, and all in it, on
  /// one.
  enum class Layout { Lines, OneLine };

  JsonWriter(Output& out, Layout layout) : out_(out), layout_(layout) {}

  void beginObject(Layout layout = Layout::Lines) { begin('{', layout); }
  void endObject() { end('}'); }
  void beginArray(Layout layout = Layout::Lines) { begin('[', layout); }
  void endArray() { end(']'); }

  void key(std::string_view name);
  void text(std::string_view text);
  /// Null for nothing.
  void textOrNull(KRText text) { text.isNothing() ? null() : this->text(text.view()); }
  void whole(int64_t value);
  void whole(size_t value) { whole(static_cast<int64_t>(value)); }
  /// The shortest form that reads back as the same double; null when there is none in JSON (infinity, not a number).
  void number(double value);
  void truth(bool value);
  void null();

  /// Whether the output failed, so that a long document may be cut short.
  bool failed() const noexcept { return out_.failed(); }

  /// Ends the line after a whole document.
  void endDocument() { out_.write('\n'); }

 private:
  struct Level {
    Layout layout;
    bool isEmpty;
  };

  void begin(char bracket, Layout layout);
  void end(char bracket);
  void separate();
  void newLine();
  void quoted(std::string_view text);

  Output& out_;
  Layout layout_;
  std::vector<Level> levels_;
  bool hasKey_ = false;
};
