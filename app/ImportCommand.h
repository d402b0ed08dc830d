#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/Command.h"
#include "app/TableFile.h"
#include "import/KRBookImport.h"

/// `krcontacts import`: puts the contacts of files into one of the user's books.
class ImportCommand : public Command {
 public:
  explicit ImportCommand(CLI::App& app);

  bool isChosen() const override;
  int run(Terminal& terminal) override;

 private:
  KRBookImport::Options options(Terminal& terminal);
  KRBookImport::Choice ask(const ABPerson& imported, const ABPerson& existing, Terminal& terminal);
  /// Shows what would be imported of delimited files.
  void preview(Terminal& terminal) const;
  void readTable(const std::string& file, KRBookImport& import, Terminal& terminal);
  void readFiles(KRBookImport& import, Terminal& terminal);
  void keepRejects() const;
  void print(Terminal& terminal, const KRBookImport::Counts& counts, const KRAddressBook& book) const;
  void printRejects(Terminal& terminal) const;
  void write(Output& out, const KRBookImport::Counts& counts, const KRAddressBook& book) const;

  CLI::App* words_;
  std::vector<std::string> files_;
  std::string into_;
  std::string existing_;
  std::string rejectsFile_;
  TableOptions tables_;
  bool preview_ = false;
  bool force_ = false;
  bool dryRun_ = false;
  bool json_ = false;
  bool verbose_ = false;
  bool noProgress_ = false;

  std::vector<KRBookImport::Reject> rejects_;
  /// What was answered for all contacts that follow.
  std::optional<KRBookImport::Choice> answer_;
  /// What the columns of the delimited file that was read last have fed.
  std::optional<KRCSVMapping> chosen_;
  size_t bytesRead_ = 0;
  size_t allBytes_ = 0;
};
