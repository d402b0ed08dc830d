#pragma once

#include <optional>
#include <string>
#include <utility>

#include "platform/KRFatal.h"

/// What went wrong, for code; the sentence beside it is for people.
enum class KRErrorCode {
  /// There is no such file, folder or entry.
  NotFound,
  /// The system does not let this user do it.
  NotAllowed,
  /// A file was needed and the path names a folder.
  IsFolder,
  /// A folder was needed and the path names something else.
  NotFolder,
  /// The disk is full, or the user's share of it.
  NoSpace,
  /// More than this library or the machine's memory holds.
  TooLarge,
  /// Another process or thread has it.
  Busy,
  /// The argument makes no sense: no path, an unknown name.
  InvalidArgument,
  /// The bytes are not what they ought to be.
  Damaged,
  /// What was asked for changed meanwhile.
  Changed,
  /// The system gave another reason; the sentence tells it.
  Failed,
};

/// A failure: a code, and one sentence without a full stop that names the file or thing it is about.
struct KRError {
  KRErrorCode code = KRErrorCode::Failed;
  std::string sentence;
};

/// What a fallible call outside the engine's silent contract returns: a value, or a failure. Not to be dropped.
///
/// Reading the value of a failure, or the error of a success, is a programming error (`KRFatal`).
template <class T>
class [[nodiscard]] KRResult {
 public:
  KRResult(T value) : value_(std::move(value)) {}
  KRResult(KRError error) : error_(std::move(error)) {}

  bool isOk() const noexcept { return value_.has_value(); }
  explicit operator bool() const noexcept { return isOk(); }

  T& value() & {
    requireValue();
    return *value_;
  }
  const T& value() const& {
    requireValue();
    return *value_;
  }
  T&& value() && {
    requireValue();
    return std::move(*value_);
  }
  T* operator->() { return &value(); }
  const T* operator->() const { return &value(); }
  T& operator*() & { return value(); }
  const T& operator*() const& { return value(); }
  T&& operator*() && { return std::move(*this).value(); }

  const KRError& error() const {
    if (isOk()) KRFatal("the error of a success was read");
    return error_;
  }

 private:
  void requireValue() const {
    if (!isOk()) KRFatal("the value of a failure was read");
  }

  std::optional<T> value_;
  KRError error_;
};

/// Success without a value (`return {};`), or a failure.
template <>
class [[nodiscard]] KRResult<void> {
 public:
  KRResult() = default;
  KRResult(KRError error) : error_(std::move(error)) {}

  bool isOk() const noexcept { return !error_.has_value(); }
  explicit operator bool() const noexcept { return isOk(); }

  const KRError& error() const {
    if (isOk()) KRFatal("the error of a success was read");
    return *error_;
  }

 private:
  std::optional<KRError> error_;
};
