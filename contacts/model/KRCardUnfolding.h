#pragma once

#include <cstddef>
#include <span>
#include <string_view>

/// Room that `krUnfoldCard` needs beyond the card's own size.
constexpr size_t kKRUnfoldingRoom = 72;

/// Writes the card with its folds undone and its line ends as line feeds, without empty lines and the last line's end,
/// and eight zeros behind it, so that it can be read by whole words. Returns its size without the zeros. `to` has
/// `kKRUnfoldingRoom` bytes more than the card; what stands in them and behind the zeros is left undefined.
using KRCardUnfolder = size_t (*)(std::string_view card, char* to) noexcept;

/// Unfolds in the fastest way that this processor knows. Any thread.
size_t krUnfoldCard(std::string_view card, char* to) noexcept;

/// Every way that this processor knows, the slowest first. All give the same answers.
std::span<const KRCardUnfolder> krCardUnfolders() noexcept;
