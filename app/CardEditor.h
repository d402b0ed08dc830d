#pragma once

#include <string>

#include "contacts/model/ABPerson.h"

/// One contact as a vCard in the user's editor: `VISUAL`, else `EDITOR`, else "vi".
class CardEditor {
 public:
  struct Outcome {
    /// What stood in the file before and after, both read in the same way, so that only what the user changed differs.
    KRRef<ABPerson> original;
    KRRef<ABPerson> edited;
    /// Why there is nothing to take over, in one line: the editor failed, the text is no single whole card, or nothing
    /// changed that a contact shows.
    std::string refusal;
    /// Whether the text is there for another try.
    bool canRetry = false;
  };

  explicit CardEditor(const IKRPerson& person);

  /// Runs the editor on the text of the last try, and reads what it left.
  Outcome edit();

 private:
  std::string original_;
  std::string text_;
};
