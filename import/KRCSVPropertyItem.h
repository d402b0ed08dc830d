#pragma once

#include <cstdint>
#include <utility>

#include "platform/KRObject.h"
#include "platform/KRString.h"

/// Ties a column of a delimited file to a property.
class KRCSVPropertyItem : public KRObject {
 public:
  KRCSVPropertyItem() = default;
  KRCSVPropertyItem(KRString label, int64_t index) : label_(std::move(label)), index_(index) {}

  /// The label for the values of the column, or which part of a name the column is: "First", "Middle", "Last", nothing
  /// for a whole name. Nothing until set.
  const KRString& label() const noexcept { return label_; }
  void setLabel(KRString label) { label_ = std::move(label); }
  /// The number of the column, from 0.
  int64_t index() const noexcept { return index_; }
  void setIndex(int64_t index) noexcept { index_ = index; }

 private:
  KRString label_;
  int64_t index_ = 0;
};
