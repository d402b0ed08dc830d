#include "app/UndoCommand.h"

#include <time.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <optional>
#include <string>

#include "app/DisplayText.h"
#include "app/JsonWriter.h"
#include "app/Unusable.h"
#include "contacts/undo/KRUndoRecorder.h"
#include "contacts/undo/KRUndoTurn.h"

namespace {

bool hasWritten(const std::vector<KRUndo::Target>& targets) {
  return std::any_of(targets.begin(), targets.end(), [](const KRUndo::Target& each) { return each.isPutBack; });
}

std::string formatted(int64_t seconds, bool isLocal, const char* format) {
  const auto instant = static_cast<time_t>(seconds);
  tm parts = {};
  char text[40] = "";
  const tm* known = isLocal ? localtime_r(&instant, &parts) : gmtime_r(&instant, &parts);
  if (known != nullptr) strftime(text, sizeof text, format, known);
  return text;
}

std::string shownTime(const KRUndoRecords::Run& run) {
  return formatted(run.time, true, "%Y-%m-%d %H:%M");
}

/// "import a.vcf --into Family", or that it put this back.
std::string titleOf(const KRUndoRecords::Run& run) {
  return (run.isUndo ? "undo of: " : "") + shownText(run.title.view());
}

std::string called(const KRUndoRecords::Run& run) {
  return "run " + std::to_string(run.number) + " (" + titleOf(run) + ")";
}

void checkWhole(const KRUndoRecords::Run& run) {
  if (run.damage.isNothing()) return;
  std::string sentence = "nothing is undone of run " + std::to_string(run.number);
  sentence.append(": the undo record is damaged: ").append(shownText(run.damage.view()));
  throw Unusable(sentence.append("; \"krcontacts undo --list\" shows the other runs"));
}

void writeRun(JsonWriter& json, const KRUndoRecords::Run& run) {
  json.key("number");
  json.whole(static_cast<size_t>(run.number));
  json.key("time");
  if (run.damage.isNothing()) {
    json.text(formatted(run.time, false, "%Y-%m-%dT%H:%M:%SZ"));
  } else {
    json.textOrNull(KRString());
  }
  json.key("title");
  json.textOrNull(run.title);
  json.key("isUndo");
  json.truth(run.isUndo);
  json.key("bytes");
  json.whole(run.bytes);
  json.key("damage");
  json.textOrNull(run.damage);
}

}  // namespace

UndoCommand::UndoCommand(CLI::App& app)
    : words_(app.add_subcommand("undo")), number_(words_->add_option("RUN", wanted_)) {
  words_->add_flag("--list", list_)->excludes(number_);
  words_->add_flag("--dry-run", dryRun_);
  words_->add_flag("--json", json_);
}

bool UndoCommand::isChosen() const {
  return words_->parsed();
}

int UndoCommand::run(Terminal& terminal) {
  const KRResult<std::vector<Run>> known = KRUndoRecords::all();
  if (!known) throw Unusable(known.error().sentence);
  std::vector<Run> runs;
  for (const Run& each : *known) {
    if (!each.parts.empty() || !each.damage.isNothing()) runs.push_back(each);
  }
  if (list_) {
    list(terminal, runs);
    return ExitCode::Done;
  }
  if (number_->count() == 0) {
    if (runs.empty()) throw Unusable("there is nothing to undo");
    undo(terminal, runs.front());
    return ExitCode::Done;
  }
  undo(terminal, wantedRun(runs));
  return ExitCode::Done;
}

const UndoCommand::Run& UndoCommand::wantedRun(const std::vector<Run>& runs) const {
  const std::string list = "; \"krcontacts undo --list\" shows those that there are";
  const bool isNumber = !wanted_.empty() && std::all_of(wanted_.begin(), wanted_.end(),
                                                        [](char each) { return each >= '0' && each <= '9'; });
  if (!isNumber) throw Unusable("\"" + shownText(wanted_) + "\" is not the number of a run" + list);
  int64_t number = 0;
  const bool isSmall = std::from_chars(wanted_.data(), wanted_.data() + wanted_.size(), number).ec == std::errc();
  const auto run = std::find_if(runs.begin(), runs.end(), [&](const Run& each) { return each.number == number; });
  if (!isSmall || run == runs.end()) throw Unusable("there is no run " + wanted_ + " to undo" + list);
  return *run;
}

void UndoCommand::list(Terminal& terminal, const std::vector<Run>& runs) const {
  if (json_) {
    JsonWriter json(terminal.out(), JsonWriter::Layout::Lines);
    json.beginObject();
    json.key("runs");
    json.beginArray();
    for (const Run& run : runs) {
      json.beginObject(JsonWriter::Layout::OneLine);
      writeRun(json, run);
      json.endObject();
    }
    json.endArray();
    json.endObject();
    json.endDocument();
    return;
  }
  if (runs.empty()) terminal.paragraph("There is nothing to undo");
  const size_t digits = runs.empty() ? 0 : std::to_string(runs.front().number).size();
  for (const Run& run : runs) {
    const std::string number = std::to_string(run.number);
    std::string line = std::string(digits - number.size(), ' ') + number + "  ";
    if (run.damage.isNothing()) {
      line.append(shownTime(run)).append("  ").append(titleOf(run));
    } else {
      line.append("damaged: ").append(shownText(run.damage.view()));
    }
    terminal.paragraph(line, Style::Plain, 0, digits + 2);
  }
}

void UndoCommand::undo(Terminal& terminal, const Run& run) const {
  checkWhole(run);
  // Before the turn: one of two that are asked at once waits for the other, and would then put back what that one did.
  const KRResult<KRUndoRecords::Held> held = KRUndoRecords::hold(run);
  if (!held) throw Unusable("nothing is undone of " + called(run) + ": " + held.error().sentence);
  checkWhole(held->run);
  putBack(terminal, held->run);
}

void UndoCommand::putBack(Terminal& terminal, const Run& run) const {
  std::optional<KRUndoTurn> turn;
  if (!dryRun_) turn.emplace();
  // An undo that is undone is the run done again.
  KRUndoRecorder::setTitle(run.title, !run.isUndo);
  const KRResult<Targets> checked = KRUndo::check(run);
  if (!checked) throw Unusable("nothing is undone of " + called(run) + ": " + checked.error().sentence);
  if (!dryRun_ && hasWritten(*checked)) {
    const KRResult<Targets> done = KRUndo::putBack(run);
    if (!done) {
      throw Unusable(called(run) + " is not undone wholly: " + done.error().sentence + "; \"krcontacts undo " +
                     std::to_string(run.number) + "\" tries the rest");
    }
  }
  if (json_) {
    write(terminal.out(), run, *checked);
  } else {
    print(terminal, run, *checked);
  }
  if (dryRun_) return;
  // What is put back can be done again from the record of this run.
  if (const KRResult<void> removed = KRUndoRecords::remove(run); !removed) terminal.say(removed.error().sentence);
}

void UndoCommand::print(Terminal& terminal, const Run& run, const Targets& targets) const {
  const std::string called = "run " + std::to_string(run.number) + " of " + shownTime(run) + ": " + titleOf(run);
  if (!hasWritten(targets)) {
    terminal.paragraph("Nothing to undo in " + called + "; everything is as it was before");
    return;
  }
  terminal.paragraph((dryRun_ ? "Would undo " : "Undid ") + called);
  for (const KRUndo::Target& each : targets) {
    const std::string count =
        each.changes == 1 || each.kind == "file"_kr ? "" : " (" + std::to_string(each.changes) + " changes)";
    terminal.paragraph((each.isPutBack ? "put back: " : "as before already: ") + shownText(each.place.view()) + count,
                       Style::Plain, 2, 2);
  }
  if (!dryRun_) terminal.paragraph("\"krcontacts undo\" does it again", Style::Faint);
}

void UndoCommand::write(Output& out, const Run& run, const Targets& targets) const {
  JsonWriter json(out, JsonWriter::Layout::Lines);
  json.beginObject();
  json.key("dryRun");
  json.truth(dryRun_);
  json.key("run");
  json.beginObject(JsonWriter::Layout::OneLine);
  writeRun(json, run);
  json.endObject();
  json.key("targets");
  json.beginArray();
  for (const KRUndo::Target& each : targets) {
    json.beginObject(JsonWriter::Layout::OneLine);
    json.key("kind");
    json.textOrNull(each.kind);
    json.key("place");
    json.textOrNull(each.place);
    json.key("changes");
    json.whole(each.changes);
    json.key("isPutBack");
    json.truth(each.isPutBack);
    json.endObject();
  }
  json.endArray();
  json.endObject();
  json.endDocument();
}
