#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "app/Terminal.h"
#include "contacts/vcard/KRVCardVersion.h"
#include "platform/KRFileWriter.h"

namespace CLI {
class App;
}  // namespace CLI

/// The file, or standard output, that a command writes contacts to: the options that say which and how, the checks
/// before anything is read, the writing, and the lines about it.
class CardTarget {
 public:
  /// Declares `--to`, `--version`, `--force` and `--dry-run`.
  void addTo(CLI::App& words);

  /// Throws `Unusable` when the target cannot be written to; for before a large file is read.
  void check() const;

  const std::string& path() const noexcept { return to_; }
  /// The version that every card is to be written in; nothing leaves them as they are.
  std::optional<KRVCardVersion> version() const;
  /// For contacts that are no cards, which cannot stay as they are.
  void useVersionUnlessGiven(KRVCardVersion version);
  bool isDryRun() const noexcept { return dryRun_; }
  bool isStandardOutput() const noexcept;
  /// Whether it is a delimited file: by its name.
  bool isTable() const;

  /// Takes a piece of the text: on standard output it is written at once, for a file beside it until `finish`. Throws
  /// `Unusable` when it cannot be written.
  void put(Terminal& terminal, std::string_view piece);
  /// Writes the whole text, which is all that is written.
  void write(Terminal& terminal, std::string_view bytes);
  /// Puts the file in its place. Throws `Unusable` when this or an earlier write failed.
  void finish(Terminal& terminal);

  /// Tells how many contacts the version cannot hold, if any.
  void tellLosses(Terminal& terminal, size_t count, bool isVerbose) const;

  struct Written {
    size_t persons = 0;
    size_t groups = 0;
    /// What was written when no version was asked for: ", copied as they are".
    std::string_view asTheyAre{};
    /// The book that they are of; may be empty.
    std::string book{};
  };
  /// Says what was written, or would be: on standard error when the contacts have standard output for themselves.
  void tell(Terminal& terminal, const Written& written) const;

 private:
  void append(std::string_view bytes);
  void close();

  std::string to_;
  std::string version_;
  bool force_ = false;
  bool dryRun_ = false;

  size_t size_ = 0;
  /// What is not handed to the system yet, and the file; none before the first of it.
  std::string kept_;
  std::optional<KRFileWriter> file_;
};
