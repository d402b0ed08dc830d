#pragma once

#include <cstddef>
#include <functional>

#include "platform/KRString.h"

/// One thing that a loader passed over, or could not do at all.
struct KRPersonLoadNote {
  /// Number of the line in the file, from 1; 0 when it is about the whole file.
  size_t line = 0;
  /// Number of the card or row, from 1; 0 when it is about none.
  size_t card = 0;
  /// Whether a person, or the whole file, was lost, and not only a detail.
  bool isPersonLost = false;
  /// A sentence in English without a full stop, which does not repeat line and card.
  KRString sentence;
  /// What was lost, as it stands in the file, where the loader knows that; else nothing.
  KRString record{};
};

/// Receives notes on the run's thread, in the file's order, each before the next person is handed over. Does not throw.
using KRPersonLoadNoteSink = std::function<void(const KRPersonLoadNote&)>;
