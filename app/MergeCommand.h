#pragma once

#include <string>
#include <vector>

#include "app/Command.h"
#include "app/MergeReport.h"
#include "contacts/stores/KRStoredBook.h"

/// `krcontacts merge`: makes one contact of chosen ones and tells what becomes of every value.
class MergeCommand : public Command {
 public:
  explicit MergeCommand(CLI::App& app);

  bool isChosen() const override;
  int run(Terminal& terminal) override;

 private:
  std::vector<KRRef<IKRPerson>> chosen(KRStoredBook& book) const;
  void print(Terminal& terminal, KRStoredBook& book, const MergeReport& report) const;
  void write(Terminal& terminal, KRStoredBook& book, const MergeReport& report) const;

  CLI::App* words_;
  std::string book_;
  std::vector<std::string> IDs_;
  bool dryRun_ = false;
  bool json_ = false;
  bool noProgress_ = false;
};
