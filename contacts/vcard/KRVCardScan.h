#pragma once

#include <cstdint>
#include <span>

/// What one pass over the bytes of a line finds out.
struct KRVCardScan {
  enum Flag : uint8_t {
    /// A byte beyond ASCII.
    High = 1,
    /// A backslash.
    Backslash = 2,
    /// The byte 0x1B, with which Japanese mail text in seven bits changes its alphabet.
    Escape = 4,
    /// A double quote.
    Quote = 8,
  };

  /// The first carriage return or line feed, or the end of the text.
  const char* end;
  /// The first colon before it, or null.
  const char* colon;
  /// What there is before it.
  uint8_t flags;
};

using KRVCardScanner = KRVCardScan (*)(const char* begin, const char* end) noexcept;

/// Scans from `begin` to the first line end, or to `end`, in the fastest way that this processor knows. Any thread.
KRVCardScan krScanLine(const char* begin, const char* end) noexcept;

/// Every way that this processor knows, the slowest first. All give the same answers.
std::span<const KRVCardScanner> krLineScanners() noexcept;
