#include "app/LoadCommand.h"

#include <CLI/CLI.hpp>
#include <future>
#include <memory>

#include "app/EventLine.h"
#include "app/PersonDocument.h"
#include "app/TableFile.h"
#include "app/Unusable.h"
#include "import/KRPersonCSVLoad.h"
#include "import/KRPersonLoad.h"
#include "platform/KRFile.h"
#include "platform/KRFileReader.h"

namespace {

/// Writes on the run's thread, in the order of the calls, while the main thread waits for the end. Each line is handed
/// over at once, so that who reads it sees persons as they come.
class LineListener : public KRPersonLoadDelegate {
 public:
  explicit LineListener(Output& out) : out_(out) {}

  void KRPersonLoadDelegate_start(KRPersonLoad& /*loader*/) override {
    write("start", [](JsonWriter&) {});
  }

  void KRPersonLoadDelegate_allNumber(int64_t total, KRPersonLoad& /*loader*/) override {
    hasTotal_ = true;
    write("number", [total](JsonWriter& json) {
      json.key("total");
      json.whole(total);
    });
  }

  void KRPersonLoadDelegate_progress(double progress, const KRRef<IKRPerson>& person, KRPersonLoad& loader) override {
    write("progress", [&](JsonWriter& json) {
      json.key("progress");
      json.number(progress);
      json.key("person");
      PersonDocument::write(json, *person, count_);
    });
    ++count_;
    // Nobody reads any more.
    if (out_.failed()) loader.stop();
  }

  void KRPersonLoadDelegate_end(KRPersonLoad& /*loader*/) override {
    write("end", [](JsonWriter&) {});
    ended_.set_value();
  }

  void wait() { ended_.get_future().wait(); }
  /// Whether the loader found anything to read.
  bool hasTotal() const { return hasTotal_; }

 private:
  template <class More>
  void write(std::string_view name, More addMore) {
    writeEvent(out_, name, addMore);
    out_.flush();
  }

  Output& out_;
  size_t count_ = 0;
  bool hasTotal_ = false;
  std::promise<void> ended_;
};

/// The loader of the file, which is known to be readable: what a loader does not tell is told here.
KRRef<KRPersonLoad> loaderFor(const std::string& file) {
  const KRString path(file);
  const KRFile::Kind kind = KRFile::kind(std::string_view(file));
  if (kind != KRFile::Kind::Missing && kind != KRFile::Kind::Folder && !KRPersonLoad::isSupportFile(path)) {
    throw Unusable(file + ": unknown extension; there are loaders for .vcf, .vcard and .csv");
  }
  if (const KRResult<KRFileReader> reader = KRFileReader::open(std::string_view(file)); !reader) {
    throw Unusable(reader.error().sentence);
  }
  KRRef<KRPersonLoad> loader = KRPersonLoad::loadWithFile(path);
  if (!loader) throw Unusable(file + ": the file cannot be loaded");
  return loader;
}

std::string noteLine(const std::string& file, const KRPersonLoadNote& note) {
  std::string text = file;
  if (note.line != 0) text += ":" + std::to_string(note.line);
  text += ": ";
  if (note.card != 0) text += "card " + std::to_string(note.card) + ": ";
  text += note.sentence.view();
  return note.isPersonLost && note.card != 0 ? text + " (not loaded)" : text;
}

}  // namespace

LoadCommand::LoadCommand(CLI::App& app) : words_(app.add_subcommand("load")) {
  words_->add_option("FILE", file_)->required();
  words_->add_flag("--notes", notes_);
  tables_.addTo(*words_);
}

bool LoadCommand::isChosen() const {
  return words_->parsed();
}

int LoadCommand::run(Terminal& terminal) {
  tables_.check({file_});
  const KRRef<KRPersonLoad> loader = loaderFor(file_);
  if (auto* rows = dynamic_cast<KRPersonCSVLoad*>(loader.get())) {
    rows->setDialect(tables_.dialect());
    const TableFile table(file_, tables_);
    if (table.mapping() != nullptr) rows->setMapping(*table.mapping());
  }
  const auto listener = std::make_shared<LineListener>(terminal.out());
  loader->setDelegate(listener);
  if (notes_) {
    loader->setNotes([&](const KRPersonLoadNote& note) { terminal.say(noteLine(file_, note)); });
  }
  if (!loader->start()) throw Unusable("the system gives no thread to load with");
  listener->wait();
  terminal.out().finish();
  if (!listener->hasTotal()) terminal.say(file_ + ": nothing in this file can be loaded");
  return ExitCode::Done;
}
