#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// What the user asks for while findings are walked through.
enum class FixAction {
  /// The fix of that number.
  Fix,
  /// A fix for all findings of the issue; its number follows.
  All,
  Ignore,
  Skip,
  Back,
  Edit,
  Undo,
  View,
  /// Further contacts of a finding of many.
  Further,
  Save,
  Quit,
  None,
};

/// One key, as it was pressed.
struct FixKey {
  FixAction action = FixAction::None;
  /// Of `Fix`, from 1.
  size_t number = 0;
};

/// Which key means what.
namespace FixKeys {

/// The meaning of what one press of a key sends: a character, in either case, or the sequence of an arrow.
FixKey of(std::string_view pressed);
/// What the keys do, for the foot of a screen of that width in cells: lines of "i Ignore · e Edit · ...", broken
/// between the keys.
std::vector<std::string> legend(size_t width);

}  // namespace FixKeys
