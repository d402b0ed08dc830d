#include "app/CardEditor.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "app/CardConversion.h"
#include "app/Output.h"
#include "contacts/vcard/KRVCardBook.h"
#include "contacts/vcard/KRVCardWriter.h"
#include "platform/KRFile.h"

namespace {

/// A file of its own for the card, for its owner only; gone with this object.
class CardFile {
 public:
  explicit CardFile(const std::string& text) {
    std::error_code failed;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(failed);
    path_ = ((failed ? std::filesystem::path(".") : folder) / "krcontacts-XXXXXX.vcf").string();
    const int file = ::mkostemps(path_.data(), 4, O_CLOEXEC);
    if (file < 0) {
      path_.clear();
      return;
    }
    isWritten_ = writeAll(file, text) == 0;
    ::close(file);
  }
  ~CardFile() {
    if (!path_.empty()) ::unlink(path_.c_str());
  }
  CardFile(const CardFile&) = delete;
  CardFile& operator=(const CardFile&) = delete;

  bool isWritten() const noexcept { return isWritten_; }
  const std::string& path() const noexcept { return path_; }

 private:
  std::string path_;
  bool isWritten_ = false;
};

std::string editorCommand() {
  for (const char* name : {"VISUAL", "EDITOR"}) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') return value;
  }
  return "vi";
}

/// Whether the editor ended as one that was content.
bool runEditor(const std::string& path) {
  std::string shell = "sh";
  std::string option = "-c";
  // The words of the variable may hold options; the file is one word whatever its name is.
  std::string command = editorCommand() + " \"$1\"";
  std::string file = path;
  char* const words[] = {shell.data(), option.data(), command.data(), shell.data(), file.data(), nullptr};
  pid_t child = 0;
  if (::posix_spawn(&child, "/bin/sh", nullptr, nullptr, words, environ) != 0) return false;
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return false;
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// The one person of the text; else why it is none.
KRRef<ABPerson> onlyPerson(const std::string& text, std::string& refusal) {
  KRVCardBook book("edited"_kr, "Edited"_kr);
  std::string note;
  book.addBytes(text, [&](const KRVCardNote& each) {
    if (note.empty()) note = "line " + std::to_string(each.line) + ": " + std::string(each.sentence().view());
  });
  if (!note.empty()) {
    refusal = note;
  } else if (book.allPersonsCount() != 1 || !book.groupCards().empty()) {
    refusal = "there has to be exactly one contact in the text";
  }
  if (!refusal.empty()) return {};
  return KRRef<ABPerson>(dynamic_cast<ABPerson*>(book.allPersons().first()));
}

}  // namespace

CardEditor::CardEditor(const IKRPerson& person)
    : original_(KRVCardWriter(KRVCardVersion::V40, {"\n", "UTF-8"}).card(person)), text_(original_) {}

CardEditor::Outcome CardEditor::edit() {
  Outcome outcome;
  const CardFile file(text_);
  if (!file.isWritten()) {
    outcome.refusal = "there is no room for a temporary file";
    return outcome;
  }
  if (!runEditor(file.path())) {
    outcome.refusal = "the editor \"" + editorCommand() + "\" failed; nothing is changed";
    return outcome;
  }
  const KRResult<KRBuffer> content = KRFile::read(std::string_view(file.path()));
  if (!content) {
    outcome.refusal = content.error().sentence;
    return outcome;
  }
  text_ = content->view();
  std::string none;
  outcome.original = onlyPerson(original_, none);
  outcome.edited = onlyPerson(text_, outcome.refusal);
  outcome.canRetry = !outcome.edited;
  if (!outcome.edited || !outcome.original) return outcome;
  if (!CardConversion::differences(*outcome.original, *outcome.edited).empty()) return outcome;
  outcome.refusal = text_ == original_ ? "nothing was changed"
                                       : "nothing was changed that a contact shows; other lines stay as they are";
  outcome.edited = {};
  return outcome;
}
