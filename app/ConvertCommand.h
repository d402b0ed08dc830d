#pragma once

#include <string>

#include "app/BookOpener.h"
#include "app/CardTarget.h"
#include "app/Command.h"

/// `krcontacts convert`: writes the contacts of a file as a vCard file of a version, or as they are, or as
/// a delimited file.
class ConvertCommand : public Command {
 public:
  explicit ConvertCommand(CLI::App& app);

  bool isChosen() const override;
  int run(Terminal& terminal) override;

 private:
  void writeTable(KRVCardBook& book, Terminal& terminal);
  void writeCards(const BookOpener::Cards& cards, Terminal& terminal);

  CLI::App* words_;
  std::string file_;
  CardTarget target_;
  TableOptions tables_;
  bool verbose_ = false;
  bool noProgress_ = false;
};
