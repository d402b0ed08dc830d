#pragma once

#include <string>

#include "app/BookExport.h"
#include "app/CardTarget.h"
#include "app/Command.h"
#include "app/PersonFilter.h"

/// `krcontacts export`: writes the contacts of a book as a vCard file or a delimited one.
class ExportCommand : public Command {
 public:
  explicit ExportCommand(CLI::App& app);

  bool isChosen() const override;
  int run(Terminal& terminal) override;

 private:
  BookExport::Result write(KRAddressBook& book, Terminal& terminal);

  CLI::App* words_;
  std::string book_;
  CardTarget target_;
  PersonFilter filter_;
  bool rawCells_ = false;
  bool verbose_ = false;
  bool noProgress_ = false;
};
