#pragma once

#include <functional>
#include <string_view>

#include "import/KRCSVSplitter.h"

/// Calls `each` for every row of a comma-separated text, while the row is valid.
inline void krForRows(std::string_view text, const std::function<void(const KRCSVRow&)>& each) {
  KRCSVSplitter splitter({',', '"'}, [&](const KRCSVRow& row) {
    each(row);
    return true;
  });
  splitter.feed(text);
  splitter.finish();
}
