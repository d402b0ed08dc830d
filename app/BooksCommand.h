#pragma once

#include <string>

#include "app/Command.h"
#include "contacts/model/KRAddressBook.h"

/// `krcontacts books`: the user's address books, and which of them is the default one.
class BooksCommand : public Command {
 public:
  explicit BooksCommand(CLI::App& app);

  bool isChosen() const override;
  int run(Terminal& terminal) override;

 private:
  CLI::App* addVerb(const char* name);

  void list(Terminal& terminal) const;
  void show(Terminal& terminal) const;
  void add(Terminal& terminal) const;
  void addNew(Terminal& terminal) const;
  void addPath(Terminal& terminal) const;
  bool addHidden(Terminal& terminal) const;
  void remove(Terminal& terminal) const;
  void makeDefault(Terminal& terminal) const;

  CLI::App* words_;
  CLI::App* show_;
  CLI::App* default_;
  CLI::App* remove_;
  CLI::App* add_;
  CLI::Option* path_ = nullptr;
  CLI::Option* new_ = nullptr;
  std::string book_;
  std::string name_;
  bool json_ = false;
  bool dryRun_ = false;
};
