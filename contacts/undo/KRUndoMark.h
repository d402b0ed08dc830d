#pragma once

#include <cstdint>
#include <string_view>

/// A mark of 64 bits of these bytes, the same in every process and version, unlike a hash: marks stand in undo records.
/// It tells contents apart that came about by honest change; whoever wants to can make two of the same mark.
uint64_t krUndoMark(std::string_view bytes) noexcept;

/// A mark of two numbers in this order.
uint64_t krUndoMark(uint64_t first, uint64_t second) noexcept;
