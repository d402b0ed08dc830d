#include "app/FixDialog.h"

#include "app/CardEditor.h"
#include "app/DisplayText.h"
#include "app/PersonCard.h"
#include "app/PersonText.h"
#include "app/Remembering.h"
#include "app/Unusable.h"

namespace {

bool isYes(const std::optional<std::string>& key) {
  return key == "y" || key == "Y";
}

bool isInterrupt(const std::optional<std::string>& key) {
  return !key || key == "\x03";
}

}  // namespace

FixDialog::FixDialog(FixRun& run, Terminal& terminal, KRIgnoredFindings* remembered)
    : run_(run),
      terminal_(terminal),
      remembered_(remembered),
      session_(run.book(), run.result(), remembered),
      screen_(shownText(run.book().name().view()), terminal.width(), terminal.height()) {}

void FixDialog::run() {
  while (!isOver_) {
    draw();
    message_.clear();
    const std::optional<std::string> pressed = keys_.read(terminal_.out(), "> ");
    if (!pressed) {
      if (hasUnsaved()) terminal_.say("the input ended; nothing more is saved");
      return;
    }
    perform(FixKeys::of(*pressed));
  }
}

void FixDialog::write(const std::vector<FixScreen::Line>& lines) {
  terminal_.clearScreen();
  for (const FixScreen::Line& line : lines) terminal_.line(terminal_.styled(line.style, line.text));
}

void FixDialog::draw() {
  const KRIssueObject* finding = session_.current();
  write(finding == nullptr ? screen_.end(session_, message_) : screen_.finding(session_, firstContact_, message_));
}

std::optional<std::string> FixDialog::ask(const std::string& question) {
  terminal_.line();
  return keys_.read(terminal_.out(), question + " ");
}

void FixDialog::perform(const FixKey& key) {
  const bool isBehindAll = session_.current() == nullptr;
  const size_t before = session_.number();
  switch (key.action) {
    case FixAction::Fix:
      if (!isBehindAll) fix(key.number);
      break;
    case FixAction::All:
      if (!isBehindAll) fixAll();
      break;
    case FixAction::Ignore:
      if (!isBehindAll) ignore();
      break;
    case FixAction::Skip:
      session_.skip();
      break;
    case FixAction::Back:
      session_.back();
      break;
    case FixAction::Edit:
      if (!isBehindAll) edit();
      break;
    case FixAction::Undo:
      message_ = session_.undoable().empty() ? "There is nothing to take back."
                                             : "Taken back: " + shownText(session_.undoable());
      session_.undo();
      break;
    case FixAction::View:
      if (!isBehindAll) view();
      break;
    case FixAction::Further:
      if (!isBehindAll) further();
      break;
    case FixAction::Save:
      save();
      break;
    case FixAction::Quit:
      isOver_ = mayQuit();
      break;
    case FixAction::None:
      message_ = "This key does nothing.";
      break;
  }
  if (session_.number() != before) firstContact_ = 0;
}

void FixDialog::ignore() {
  const size_t before = session_.unsavedRememberedCount();
  session_.ignore();
  if (session_.unsavedRememberedCount() > before) message_ = "Ignored, and to be remembered once it is saved.";
}

void FixDialog::fix(size_t number) {
  const auto fixes = session_.fixes();
  if (number > fixes.size()) {
    message_ = "There is no fix " + std::to_string(number) + " here.";
    return;
  }
  const FixEffect effect = session_.fix(fixes[number - 1]);
  message_ = "Done: " + shownText(session_.undoable());
  if (!effect.trashed.empty())
    message_ += " (" + counted(effect.trashed.size(), "contact", "contacts") + " to the trash)";
}

void FixDialog::fixAll() {
  const auto fixes = session_.fixes();
  const size_t open = session_.openCountOfIssue();
  const std::string what = open == 1 ? "the one open finding" : "all " + std::to_string(open) + " open findings";
  const auto pressed = ask("Which fix for " + what + " of this issue? (its number, or i to ignore them)");
  const FixKey key = pressed ? FixKeys::of(*pressed) : FixKey();
  if (key.action == FixAction::Ignore) {
    session_.fixAllOfIssue(KRIssueHandle::issueHandleWithName(KRHandleNameIgnore));
  } else if (key.action == FixAction::Fix && key.number <= fixes.size()) {
    session_.fixAllOfIssue(fixes[key.number - 1]);
  } else {
    message_ = "Nothing is done.";
    return;
  }
  message_ = "Done: " + shownText(session_.undoable());
}

IKRPerson* FixDialog::chosenPerson() {
  const KRPersonArray persons = session_.current()->persons();
  if (persons.count() == 1) return persons.first();
  const auto pressed = ask("Which contact? (its number)");
  const FixKey key = pressed ? FixKeys::of(*pressed) : FixKey();
  const size_t number = key.action == FixAction::Fix ? key.number : 0;
  return number == 0 || number > persons.count() ? nullptr : persons.at(number - 1);
}

void FixDialog::edit() {
  auto* person = dynamic_cast<ABPerson*>(chosenPerson());
  if (person == nullptr) {
    message_ = "Nothing is done.";
    return;
  }
  CardEditor editor(*person);
  for (;;) {
    const CardEditor::Outcome outcome = editor.edit();
    if (outcome.edited) {
      const bool isSettled = session_.edit(*person, *outcome.original, *outcome.edited);
      message_ = "Done: " + shownText(session_.undoable()) + (isSettled ? "" : " (the finding is still there)");
      return;
    }
    message_ = "Not edited: " + shownText(outcome.refusal);
    if (!outcome.canRetry) return;
    terminal_.line(message_);
    if (!isYes(ask("Edit again? [y/n]"))) return;
  }
}

void FixDialog::view() {
  const KRPersonArray persons = session_.current()->persons();
  const size_t digits = std::to_string(persons.count()).size();
  terminal_.clearScreen();
  for (size_t i = 0; i < persons.count(); ++i) {
    PersonCard::print(terminal_, *persons.at(i), i + 1, digits);
    terminal_.line();
  }
  ask("Any key goes back.");
}

void FixDialog::further() {
  const size_t count = session_.current()->persons().count();
  firstContact_ += screen_.columns();
  if (firstContact_ >= count) firstContact_ = 0;
  if (count <= screen_.columns()) message_ = "All contacts of this finding are on the screen.";
}

bool FixDialog::hasUnsaved() const {
  return session_.unsavedCount() > 0 || (remembered_ != nullptr && remembered_->hasChanges());
}

bool FixDialog::save() {
  if (!hasUnsaved()) {
    message_ = "There is nothing to save.";
    return true;
  }
  const size_t remembered = session_.unsavedRememberedCount();
  try {
    run_.save();
    // Saved contacts are no more to be taken back, whatever becomes of the rest.
    session_.settle();
    if (remembered_ != nullptr) Remembering::save(*remembered_);
  } catch (const Unusable& error) {
    // What is not saved stands in memory: the user may try again, or leave.
    terminal_.progress().clear();
    message_ = shownText(error.what()) + ". Your steps are kept here: w tries to save again, q leaves without them.";
    return false;
  }
  message_ = remembered == 0 ? "Saved."
                             : "Saved; " + counted(remembered, "ignored finding", "ignored findings") + " remembered.";
  return true;
}

bool FixDialog::mayQuit() {
  if (!hasUnsaved()) return true;
  const size_t steps = session_.unsavedCount();
  const auto pressed =
      ask((steps == 0 ? "What is ignored is not saved yet." : counted(steps, "step is", "steps are") + " not saved.") +
          " Save before quitting? [y]es, [n]o, other keys go on");
  if (isYes(pressed)) return save();
  return isInterrupt(pressed) || pressed == "n" || pressed == "N";
}
