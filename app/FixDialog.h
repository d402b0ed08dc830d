#pragma once

#include <optional>
#include <string>

#include "app/FixKeys.h"
#include "app/FixRun.h"
#include "app/FixScreen.h"
#include "app/FixSession.h"
#include "app/KeyInput.h"

/// The walk through findings on a terminal: shows one after the other, and does what the keys ask for. Writes nothing
/// but when the user says so.
class FixDialog {
 public:
  /// The run has been scanned. Findings that are ignored join `remembered`, if that is given, and are saved with the
  /// contacts.
  FixDialog(FixRun& run, Terminal& terminal, KRIgnoredFindings* remembered);

  /// Until the user quits, or there is no more input.
  void run();

 private:
  void draw();
  void perform(const FixKey& key);
  void fix(size_t number);
  void fixAll();
  void edit();
  void view();
  void further();
  void ignore();
  bool hasUnsaved() const;
  bool save();
  bool mayQuit();
  /// The contact of the finding that the user means; nothing when it is none.
  IKRPerson* chosenPerson();
  std::optional<std::string> ask(const std::string& question);
  void write(const std::vector<FixScreen::Line>& lines);

  FixRun& run_;
  Terminal& terminal_;
  KRIgnoredFindings* remembered_;
  FixSession session_;
  FixScreen screen_;
  KeyInput keys_;
  std::string message_;
  size_t firstContact_ = 0;
  bool isOver_ = false;
};
