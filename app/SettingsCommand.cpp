#include "app/SettingsCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "app/DisplayText.h"
#include "app/JsonWriter.h"
#include "app/Setting.h"
#include "app/SettingsDocument.h"
#include "app/StoredChoice.h"
#include "app/Unusable.h"
#include "platform/KRFile.h"

namespace {

constexpr std::string_view kStandardStream = "-";

std::string joined(const TextList& values) {
  std::string text;
  for (const std::string& value : values) text += (text.empty() ? "" : ", ") + shownText(value);
  return text.empty() ? "(none)" : text;
}

bool contains(const TextList& values, const std::string& value) {
  return std::find(values.begin(), values.end(), value) != values.end();
}

/// The values that the words stand for, each once.
TextList valuesOf(const Setting& setting, const std::vector<std::string>& words) {
  TextList values;
  for (const std::string& word : words) {
    for (std::string& value : setting.valuesOf(word)) {
      if (!contains(values, value)) values.push_back(std::move(value));
    }
  }
  return values;
}

TextList without(const Setting& setting, const TextList& removed) {
  TextList values = setting.values();
  for (const std::string& value : removed) {
    if (!contains(values, value)) {
      throw Unusable("\"" + value + "\" is not among the " + std::string(setting.word()) + ": " +
                     joined(setting.values()));
    }
  }
  values.erase(std::remove_if(values.begin(), values.end(), [&](const auto& each) { return contains(removed, each); }),
               values.end());
  return values;
}

TextList with(const Setting& setting, const TextList& added) {
  TextList values = setting.values();
  for (const std::string& value : added) {
    if (!contains(values, value)) values.push_back(value);
  }
  return values;
}

void printSetting(Terminal& terminal, const Setting& setting) {
  const TextList values = setting.values();
  terminal.line(terminal.styled(Style::Strong, std::string(setting.title())) + " (" + std::string(setting.word()) +
                ", " + std::to_string(values.size()) + ")");
  terminal.paragraph(joined(values), Style::Plain, 2);
}

void writeList(Output& out, const Setting& setting) {
  JsonWriter json(out, JsonWriter::Layout::OneLine);
  json.beginArray();
  for (const std::string& value : setting.values()) json.text(value);
  json.endArray();
  json.endDocument();
}

void exportTo(const std::string& file, Output& out) {
  const std::string document = SettingsDocument::text();
  if (file == kStandardStream) {
    out.write(document);
    return;
  }
  const KRResult<void> result = KRFile::write(std::string_view(file), document);
  if (!result) throw Unusable(result.error().sentence);
}

void importFrom(const std::string& file) {
  const bool isInput = file == kStandardStream;
  const KRResult<KRBuffer> bytes = isInput ? KRFile::readStandardInput() : KRFile::read(std::string_view(file));
  if (!bytes) throw Unusable(bytes.error().sentence);
  SettingsDocument::take(bytes->view(), isInput ? "standard input" : file);
}

}  // namespace

SettingsCommand::SettingsCommand(CLI::App& app)
    : words_(app.add_subcommand("settings")),
      show_(addVerb("show", false, false)),
      set_(addVerb("set", true, true)),
      add_(addVerb("add", true, true)),
      remove_(addVerb("remove", true, true)),
      reset_(addVerb("reset", false, false)),
      export_(words_->add_subcommand("export")),
      import_(words_->add_subcommand("import")) {
  words_->add_flag("--json", json_);
  words_->require_subcommand(0, 1);
  export_->add_option("FILE", file_);
  import_->add_option("FILE", file_)->required();
}

CLI::App* SettingsCommand::addVerb(const char* name, bool needsWhat, bool takesValues) {
  CLI::App* verb = words_->add_subcommand(name);
  verb->fallthrough();
  verb->add_option("WHAT", what_)->required(needsWhat);
  if (takesValues) verb->add_option("VALUE", values_)->required();
  return verb;
}

bool SettingsCommand::isChosen() const {
  return words_->parsed();
}

int SettingsCommand::run(Terminal& terminal) {
  if (export_->parsed()) {
    exportTo(file_, terminal.out());
    return ExitCode::Done;
  }
  if (import_->parsed()) {
    importFrom(file_);
  } else if (!words_->get_subcommands().empty() && !show_->parsed()) {
    change();
  }
  if (!words_->get_subcommands().empty() && !show_->parsed()) keepPreferences();
  show(terminal);
  return ExitCode::Done;
}

void SettingsCommand::show(Terminal& terminal) const {
  if (!what_.empty()) {
    const Setting& setting = Setting::named(what_);
    if (json_) {
      writeList(terminal.out(), setting);
    } else {
      printSetting(terminal, setting);
    }
  } else if (json_) {
    terminal.out().write(SettingsDocument::text());
  } else {
    for (const auto& setting : Setting::all()) {
      if (setting != Setting::all().front()) terminal.line();
      printSetting(terminal, *setting);
    }
  }
}

void SettingsCommand::change() {
  if (reset_->parsed()) {
    for (const auto& setting : Setting::all()) {
      if (what_.empty() || setting.get() == &Setting::named(what_)) setting->reset();
    }
    return;
  }
  const Setting& setting = Setting::named(what_);
  const TextList given = valuesOf(setting, values_);
  const TextList wanted = set_->parsed() ? given : add_->parsed() ? with(setting, given) : without(setting, given);
  setting.check(wanted);
  setting.set(wanted);
}
