#pragma once

#include <string>
#include <vector>

#include "app/Command.h"
#include "issues/KRIgnoredFindings.h"

/// `krcontacts ignored`: the findings that are remembered as ignored with a book, and the way to see them again.
class IgnoredCommand : public Command {
 public:
  explicit IgnoredCommand(CLI::App& app);

  bool isChosen() const override;
  int run(Terminal& terminal) override;

 private:
  void list(Terminal& terminal) const;
  void print(Terminal& terminal, const std::string& book, const KRIgnoredFindings& ignored) const;
  void write(Terminal& terminal, const std::vector<KRIgnoredFindings>& all) const;
  void forget(Terminal& terminal) const;

  CLI::App* words_;
  CLI::App* list_;
  CLI::App* forget_;
  std::string book_;
  /// The book of `ignored BOOK`, without a verb.
  std::string listed_;
  std::vector<std::string> numbers_;
  bool all_ = false;
  bool dryRun_ = false;
  bool json_ = false;
};
