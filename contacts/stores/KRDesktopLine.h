#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "contacts/vcard/KRVCardLines.h"

/// A line of a card as the desktop's service writes it, taken apart: for reading parameters that mean nothing
/// elsewhere, and for writing the line without some of them.
struct KRDesktopLine {
  /// The property's name, behind its group's name and a dot if it has one.
  std::string name;
  /// Each as written, quotes included.
  std::vector<std::string> parameters;
  /// As written, without folds.
  std::string value;

  explicit KRDesktopLine(const KRVCardLine& line);

  /// What the parameter of that name (capital letters) says, without quotes; empty when there is none.
  std::string parameter(std::string_view parameterName) const;
  /// Takes the parameters of that name away; whether there were any.
  bool removeParameter(std::string_view parameterName);
  /// The line with its line end, not folded.
  std::string text() const;
  /// A mark of what the line says (`krUndoMark`): the order of its parameters, quotes, and what the service notes for
  /// itself do not count.
  uint64_t stamp() const;
};

/// The parameter in which the service notes a phone number in its own form, anew on every change.
inline constexpr std::string_view kKRDesktopPhoneParameter = "X-EVOLUTION-E164";
