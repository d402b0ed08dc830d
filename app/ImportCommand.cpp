#include "app/ImportCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <system_error>

#include "app/BookOpener.h"
#include "app/CardConversion.h"
#include "app/DisplayText.h"
#include "app/JsonWriter.h"
#include "app/PersonText.h"
#include "app/Table.h"
#include "app/TablePreview.h"
#include "app/Unsaved.h"
#include "app/Unusable.h"
#include "app/UserBooks.h"
#include "contacts/KRTrashAddressBook.h"
#include "contacts/model/KRSaveScope.h"
#include "contacts/undo/KRUndoRecorder.h"
#include "contacts/undo/KRUndoTurn.h"
#include "platform/KRFile.h"

namespace {

using Choice = KRBookImport::Choice;

constexpr std::string_view kStandardInput = "-";
constexpr std::string_view kStandardOutput = "-";
constexpr size_t kShownRejects = 20;

/// Told before a large file is read.
void checkFile(const std::string& file) {
  if (file == kStandardInput) return;
  const KRFile::Kind kind = KRFile::kind(std::string_view(file));
  if (kind == KRFile::Kind::Missing || kind == KRFile::Kind::Folder) return;
  if (!BookOpener::holdsCards(file) && !TableOptions::isTable(file)) {
    throw Unusable(file + ": unknown extension; files to import are named .vcf, .vcard or .csv");
  }
}

std::optional<Choice> choiceNamed(const std::string& word) {
  if (word == "update") return Choice::Update;
  if (word == "both") return Choice::Both;
  if (word == "skip") return Choice::Skip;
  return std::nullopt;
}

size_t sizeOf(const std::string& file) {
  std::error_code failed;
  const auto size = std::filesystem::file_size(file, failed);
  return failed ? 0 : static_cast<size_t>(size);
}

/// A damaged trash is put aside when it is saved, which its owner is told. One that may not be read is not saved at
/// all.
void saveTrash(Terminal& terminal) {
  KRTrashAddressBook& trash = *KRTrashAddressBook::ShareTrashAddressBook();
  const KRResult<void> loaded = trash.load();
  if (!loaded && (loaded.error().code == KRErrorCode::Damaged || loaded.error().code == KRErrorCode::IsFolder)) {
    terminal.say(loaded.error().sentence + "; it is put aside beside itself, and a new trash begins");
  }
  trash.save();
}

}  // namespace

ImportCommand::ImportCommand(CLI::App& app) : words_(app.add_subcommand("import")) {
  words_->add_option("FILE", files_)->required();
  words_->add_option("--into", into_);
  words_->add_option("--existing", existing_)->check(CLI::IsMember({"skip", "update", "both", "ask"}));
  words_->add_option("--rejects", rejectsFile_);
  words_->add_flag("--force", force_);
  words_->add_flag("--dry-run", dryRun_);
  words_->add_flag("--json", json_);
  words_->add_flag("--preview", preview_);
  words_->add_flag("--verbose", verbose_);
  words_->add_flag("--no-progress", noProgress_);
  tables_.addTo(*words_);
  tables_.addSavingTo(*words_);
}

bool ImportCommand::isChosen() const {
  return words_->parsed();
}

int ImportCommand::run(Terminal& terminal) {
  if (noProgress_) terminal.progress().disable();
  if (rejectsFile_ == kStandardOutput) {
    throw Unusable("--rejects -: standard output is for the account of the import; name a file");
  }
  for (const std::string& file : files_) checkFile(file);
  tables_.check(files_);
  if (preview_) {
    preview(terminal);
    return ExitCode::Done;
  }
  if (into_.empty()) throw Unusable("--into BOOK says where the contacts go; \"krcontacts books\" shows your books");
  if (!rejectsFile_.empty() && !force_ && KRFile::kind(std::string_view(rejectsFile_)) != KRFile::Kind::Missing) {
    throw Unusable(rejectsFile_ + ": the file is there already; --force replaces it");
  }
  for (const std::string& file : files_) UserBooks::checkApart(rejectsFile_, file);
  const KRRef<KRStoredBook> book = UserBooks::writable(into_, terminal);
  UserBooks::checkApart(rejectsFile_, *book);
  KRSaveScope scope;
  KRBookImport import(book, options(terminal));
  readFiles(import, terminal);
  const KRBookImport::Counts& counts = import.counts();
  if (!dryRun_) {
    keepRejects();
    if (counts.updated > 0) saveTrash(terminal);
    if (counts.changesBook()) book->save();
    terminal.progress().show("Saving");
    const KRUndoTurn turn;
    const int64_t written = KRUndoRecorder::count();
    if (const KRResult<void> saved = scope.commit(); !saved) {
      throw Unusable(notSaved("nothing is imported", written, saved.error()));
    }
    if (chosen_) tables_.save(*chosen_);
  }
  terminal.progress().clear();
  if (json_) {
    write(terminal.out(), counts, *book);
  } else {
    print(terminal, counts, *book);
  }
  return ExitCode::Done;
}

KRBookImport::Options ImportCommand::options(Terminal& terminal) {
  KRBookImport::Options options;
  const bool readsInput = std::find(files_.begin(), files_.end(), kStandardInput) != files_.end();
  const bool canAsk = !readsInput && !json_ && Terminal::canAsk();
  if (existing_ == "ask" && !canAsk) throw Unusable("--existing ask needs a terminal to ask on");
  if (canAsk && (existing_.empty() || existing_ == "ask")) {
    options.ask = [this, &terminal](const ABPerson& imported, const ABPerson& existing) {
      return ask(imported, existing, terminal);
    };
  }
  options.existing = choiceNamed(existing_).value_or(Choice::Skip);
  options.addsEqual = existing_ == "both";
  options.former = KRRef<KRAddressBook>(KRTrashAddressBook::ShareTrashAddressBook());
  options.rejects = [this](KRBookImport::Reject reject) { rejects_.push_back(std::move(reject)); };
  options.progress = [this, &terminal](size_t bytes) {
    bytesRead_ += bytes;
    if (allBytes_ > 0) terminal.progress().show("Importing", krPercent(bytesRead_, allBytes_));
  };
  return options;
}

/// Answers in capital letters count for all that follow; no answer skips.
Choice ImportCommand::ask(const ABPerson& imported, const ABPerson& existing, Terminal& terminal) {
  if (answer_) return *answer_;
  terminal.say(personText(imported) + ": the book has this contact with other content (" +
               CardConversion::differences(existing, imported) + ")");
  for (;;) {
    terminal.say("[s]kip, [u]pdate or [b]oth? In capitals: for all that follow.");
    std::string line;
    if (!std::getline(std::cin, line)) line = "S";
    const char letter = line.empty() ? 's' : line.front();
    std::optional<Choice> choice;
    if (letter == 's' || letter == 'S') choice = Choice::Skip;
    if (letter == 'u' || letter == 'U') choice = Choice::Update;
    if (letter == 'b' || letter == 'B') choice = Choice::Both;
    if (choice && letter >= 'A' && letter <= 'Z') answer_ = choice;
    if (choice) return *choice;
  }
}

void ImportCommand::preview(Terminal& terminal) const {
  std::vector<TableFile> tables;
  for (const std::string& file : files_) {
    if (!TableOptions::isTable(file)) throw Unusable(file + ": --preview shows delimited files, named .csv");
    tables.emplace_back(file, tables_);
  }
  if (!json_) {
    for (TableFile& table : tables) {
      if (&table != tables.data()) terminal.line();
      TablePreview::print(terminal, table);
    }
    return;
  }
  JsonWriter json(terminal.out(), JsonWriter::Layout::Lines);
  json.beginObject();
  json.key("files");
  json.beginArray();
  for (TableFile& table : tables) TablePreview::write(json, table);
  json.endArray();
  json.endObject();
  json.endDocument();
}

void ImportCommand::readTable(const std::string& file, KRBookImport& import, Terminal& terminal) {
  TableFile table(file, tables_);
  if (table.isStrict() && !tables_.isDialectNamed()) {
    terminal.say(file + ": read by the plain rules; --dialect rfc4180 knows quoted cells and the headings of common " +
                 "programs, --preview shows what becomes of each column");
  }
  import.addLoaded(std::string_view(file), [&](const KRBookImport::PersonSink& persons,
                                               const KRPersonLoadNoteSink& notes) {
    table.read(
        [&](const KRRef<IKRPerson>& person, double percent) {
          terminal.progress().show("Importing", percent);
  persons(*person);
},
        [&](const KRPersonLoadNote& note) {
  if (verbose_ && !note.isPersonLost) {
    terminal.say(file + ":" + std::to_string(note.line) + ": " + std::string(note.sentence.view()));
  }
  notes(note);
        });
});
if (table.mapping() != nullptr) chosen_ = *table.mapping();
}

void ImportCommand::readFiles(KRBookImport& import, Terminal& terminal) {
  for (const std::string& file : files_) allBytes_ += file == kStandardInput ? 0 : sizeOf(file);
  for (const std::string& file : files_) {
    if (TableOptions::isTable(file)) {
      readTable(file, import, terminal);
      continue;
    }
    const bool isInput = file == kStandardInput;
    const KRResult<void> read = isInput ? import.addStandardInput() : import.addFile(std::string_view(file));
    if (read) continue;
    const std::string_view called = isInput ? "standard input" : std::string_view(file);
    std::string sentence = read.error().sentence;
    if (sentence.find(called) == std::string::npos) sentence.insert(0, ": ").insert(0, called);
    // Less than was asked for is not imported: nothing is saved.
    throw Unusable(sentence);
  }
  import.addGroups();
  terminal.progress().clear();
}

void ImportCommand::keepRejects() const {
  if (rejectsFile_.empty() || rejects_.empty()) return;
  std::string text;
  for (const KRBookImport::Reject& reject : rejects_) {
    text += reject.bytes;
    if (!text.empty() && text.back() != '\n') text += "\r\n";
  }
  if (const KRResult<void> done = KRFile::write(std::string_view(rejectsFile_), text); !done) {
    throw Unusable("nothing is imported: " + done.error().sentence);
  }
}

void ImportCommand::print(Terminal& terminal, const KRBookImport::Counts& counts, const KRAddressBook& book) const {
  terminal.paragraph("Read " + counted(counts.all(), "record", "records") + " from " +
                     (files_.size() == 1 ? shownText(files_.front()) : std::to_string(files_.size()) + " files"));
  Table table({"", "records"}, Table::Cells::Figures);
  const auto row = [&](const char* label, size_t count, bool isAlways = false) {
    if (count > 0 || isAlways) table.addRow({label, std::to_string(count)});
  };
  row("contacts added", counts.added, true);
  row("equal to one already there, skipped", counts.equal, true);
  row("updated, as they were now in the trash", counts.updated, true);
  row("same UID with other content, skipped", counts.conflicts, true);
  row("rejected", counts.lost + counts.groupsRejected, true);
  row("groups added", counts.groupsAdded);
  row("groups already there", counts.groupsKnown);
  table.print(terminal, 2);
  if (counts.missingMembers > 0) {
    terminal.paragraph(counted(counts.missingMembers, "member", "members") + " of groups not found in the book");
  }
  if (counts.notes > 0) {
    terminal.paragraph(counted(counts.notes, "place", "places") + " in the text could not be understood");
  }
  printRejects(terminal);
  std::string line = dryRun_ ? "Would write " : "Wrote ";
  line += counted(counts.added + counts.updated, "contact", "contacts");
  if (counts.groupsAdded > 0) line += " and " + counted(counts.groupsAdded, "group", "groups");
  terminal.paragraph(line + " to " + UserBooks::described(book));
  if (!rejectsFile_.empty() && !rejects_.empty()) {
    terminal.paragraph((dryRun_ ? "Would write " : "Wrote ") +
                       counted(rejects_.size(), "rejected record", "rejected records") + " to " +
                       shownText(rejectsFile_));
  }
}

void ImportCommand::printRejects(Terminal& terminal) const {
  const size_t shown = verbose_ ? rejects_.size() : std::min(rejects_.size(), kShownRejects);
  for (size_t i = 0; i < shown; ++i) {
    const KRBookImport::Reject& each = rejects_[i];
    terminal.paragraph(shownText(each.file.view()) + ":" + std::to_string(each.line) + ": " +
                           (each.card == 0 ? "" : "card " + std::to_string(each.card) + ": ") +
                           std::string(each.reason.view()),
                       Style::Plain, 2, 2);
  }
  if (shown < rejects_.size()) {
    terminal.paragraph("and " + std::to_string(rejects_.size() - shown) + " more; --verbose shows all", Style::Faint,
                       2);
  }
}

void ImportCommand::write(Output& out, const KRBookImport::Counts& counts, const KRAddressBook& book) const {
  JsonWriter json(out, JsonWriter::Layout::Lines);
  const auto number = [&](std::string_view key, size_t value) {
    json.key(key);
    json.whole(value);
  };
  json.beginObject();
  json.key("book");
  json.textOrNull(book.ID());
  json.key("dryRun");
  json.truth(dryRun_);
  number("records", counts.all());
  number("added", counts.added);
  number("equal", counts.equal);
  number("updated", counts.updated);
  number("conflicts", counts.conflicts);
  number("lost", counts.lost);
  number("groupsAdded", counts.groupsAdded);
  number("groupsKnown", counts.groupsKnown);
  number("groupsRejected", counts.groupsRejected);
  number("missingMembers", counts.missingMembers);
  number("notes", counts.notes);
  json.key("rejects");
  json.beginArray();
  for (const KRBookImport::Reject& each : rejects_) {
    json.beginObject(JsonWriter::Layout::OneLine);
    json.key("file");
    json.textOrNull(each.file);
    number("line", each.line);
    number("card", each.card);
    json.key("reason");
    json.textOrNull(each.reason);
    json.endObject();
  }
  json.endArray();
  json.endObject();
  json.endDocument();
}
