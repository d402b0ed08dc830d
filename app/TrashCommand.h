#pragma once

#include <string>
#include <vector>

#include "app/Command.h"
#include "app/PersonFilter.h"
#include "contacts/KRTrashAddressBook.h"
#include "contacts/stores/KRStoredBook.h"

/// `krcontacts trash`: what fixes and updates deleted, and the way back.
class TrashCommand : public Command {
 public:
  explicit TrashCommand(CLI::App& app);

  bool isChosen() const override;
  int run(Terminal& terminal) override;

 private:
  using Persons = std::vector<KRRef<KRTempPerson>>;
  /// Persons that go back to one book.
  struct Batch {
    KRRef<KRStoredBook> book;
    Persons persons;
    /// How many memberships are lost, of groups that the book does not have any more.
    size_t goneGroups = 0;
    /// How many have an equal one in the book, under another identifier.
    size_t twins = 0;
    bool isSaved = true;
  };

  CLI::App* addVerb(const char* name);

  Persons named() const;
  static Persons meant();
  void list(Terminal& terminal);
  void show(Terminal& terminal);
  int restore(Terminal& terminal);
  void remove(Terminal& terminal);
  void clear(Terminal& terminal);

  std::vector<Batch> batches(const Persons& persons, Terminal& terminal) const;
  size_t putBack(Batch& batch, Terminal& terminal) const;
  void takeOut(const Persons& persons);

  CLI::App* words_;
  CLI::App* list_;
  CLI::App* show_;
  CLI::App* restore_;
  CLI::App* remove_;
  CLI::App* clear_;
  std::vector<std::string> persons_;
  std::string into_;
  PersonFilter filter_;
  bool all_ = false;
  bool again_ = false;
  bool yes_ = false;
  bool json_ = false;
  bool dryRun_ = false;
};
