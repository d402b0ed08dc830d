#pragma once

#include <string>

#include "platform/KRText.h"

/// Appends text so that it can be told from what surrounds it: in quotes, with quotes and backslashes inside marked by
/// a backslash; a nothing as (null), without quotes. Two texts that differ never read alike.
inline void krAppendQuoted(std::string& to, KRText text) {
  if (text.isNothing()) {
    to += "(null)";
    return;
  }
  to += '"';
  for (const char c : text.view()) {
    if (c == '"' || c == '\\') to += '\\';
    to += c;
  }
  to += '"';
}
