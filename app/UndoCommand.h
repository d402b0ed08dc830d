#pragma once

#include <string>
#include <vector>

#include "app/Command.h"
#include "contacts/stores/KRUndo.h"

/// `krcontacts undo`: puts back what a run changed.
class UndoCommand : public Command {
 public:
  explicit UndoCommand(CLI::App& app);

  bool isChosen() const override;
  int run(Terminal& terminal) override;

 private:
  using Run = KRUndoRecords::Run;
  using Targets = std::vector<KRUndo::Target>;

  /// The run of the number that was asked for.
  const Run& wantedRun(const std::vector<Run>& runs) const;
  void list(Terminal& terminal, const std::vector<Run>& runs) const;
  void undo(Terminal& terminal, const Run& run) const;
  void putBack(Terminal& terminal, const Run& run) const;
  void print(Terminal& terminal, const Run& run, const Targets& targets) const;
  void write(Output& out, const Run& run, const Targets& targets) const;

  CLI::App* words_;
  CLI::Option* number_;
  std::string wanted_;
  bool list_ = false;
  bool dryRun_ = false;
  bool json_ = false;
};
