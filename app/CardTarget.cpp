#include "app/CardTarget.h"

#include <CLI/CLI.hpp>

#include "app/BookOpener.h"
#include "app/DisplayText.h"
#include "app/TableOptions.h"
#include "app/Unusable.h"
#include "platform/KRFile.h"

namespace {

constexpr std::string_view kStandardOutput = "-";
constexpr size_t kKept = size_t{256} << 10U;

std::string checkedVersion(const std::string& text) {
  return krVCardVersionNamed(text) ? std::string() : "\"" + text + "\" is none of 2.1, 3.0 and 4.0";
}

}  // namespace

void CardTarget::addTo(CLI::App& words) {
  words.add_option("--to", to_)->required();
  words.add_option("--version", version_)->check(checkedVersion);
  words.add_flag("--force", force_);
  words.add_flag("--dry-run", dryRun_);
}

void CardTarget::check() const {
  if (isStandardOutput()) return;
  if (!BookOpener::holdsCards(to_) && !isTable()) {
    throw Unusable(to_ + ": a vCard file is named .vcf or .vcard, a delimited file .csv");
  }
  if (isTable() && !version_.empty()) throw Unusable(to_ + ": only vCard files have a --version");
  const KRFile::Kind kind = KRFile::kind(std::string_view(to_));
  if (kind == KRFile::Kind::Folder) throw Unusable(to_ + ": this is a folder");
  if (kind != KRFile::Kind::Missing && !force_)
    throw Unusable(to_ + ": the file is there already; --force replaces it");
}

std::optional<KRVCardVersion> CardTarget::version() const {
  return krVCardVersionNamed(version_);
}

void CardTarget::useVersionUnlessGiven(KRVCardVersion version) {
  if (version_.empty()) version_ = krVCardVersionName(version);
}

bool CardTarget::isStandardOutput() const noexcept {
  return to_ == kStandardOutput;
}

bool CardTarget::isTable() const {
  return TableOptions::isTable(to_);
}

void CardTarget::put(Terminal& terminal, std::string_view piece) {
  size_ += piece.size();
  if (dryRun_) return;
  if (isStandardOutput()) {
    terminal.out().write(piece);
  } else {
    kept_ += piece;
    if (kept_.size() < kKept) return;
    append(kept_);
    kept_.clear();
  }
}

void CardTarget::write(Terminal& terminal, std::string_view bytes) {
  size_ = bytes.size();
  if (dryRun_) return;
  if (isStandardOutput()) {
    terminal.out().write(bytes);
    // Nothing is told to be written that is not.
    terminal.out().finish();
  } else {
    append(bytes);
    close();
  }
}

void CardTarget::finish(Terminal& terminal) {
  if (dryRun_) return;
  if (isStandardOutput()) {
    terminal.out().finish();
  } else {
    close();
  }
}

void CardTarget::append(std::string_view bytes) {
  if (!file_) {
    KRFileWriter::removeLeftovers(std::string_view(to_));
    KRResult<KRFileWriter> opened = KRFileWriter::open(std::string_view(to_));
    if (!opened) throw Unusable(opened.error().sentence);
    file_.emplace(*std::move(opened));
  }
  if (const KRResult<void> done = file_->append(bytes); !done) throw Unusable(done.error().sentence);
}

void CardTarget::close() {
  append(kept_);
  if (const KRResult<void> done = file_->commit(); !done) throw Unusable(done.error().sentence);
}

void CardTarget::tellLosses(Terminal& terminal, size_t count, bool isVerbose) const {
  if (count == 0) return;
  terminal.say("vCard " + version_ + " cannot hold all of " + counted(count, "contact", "contacts") +
               (isVerbose ? "" : "; --verbose tells what"));
}

void CardTarget::tell(Terminal& terminal, const Written& written) const {
  std::string line = (dryRun_ ? "Would write " : "Wrote ") + counted(written.persons, "contact", "contacts");
  if (written.groups > 0) line += " and " + counted(written.groups, "group", "groups");
  if (!written.book.empty()) line += " of " + written.book;
  line += " to " + (isStandardOutput() ? "standard output" : shownText(to_)) + ": " + counted(size_, "byte", "bytes");
  line += version_.empty() ? std::string(written.asTheyAre) : ", vCard " + version_;
  if (isStandardOutput()) {
    terminal.say(line);
  } else {
    terminal.paragraph(line);
  }
}
