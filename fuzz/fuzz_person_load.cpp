#include <stdlib.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <string>
#include <string_view>

#include "import/KRPersonLoad.h"
#include "import/KRVCardPieces.h"

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

/// Counts what it hears and holds it against the order that is promised.
class Listener : public KRPersonLoadDelegate {
 public:
  void KRPersonLoadDelegate_start(KRPersonLoad& /*loader*/) override { require(++starts == 1 && !hasEnded); }
  void KRPersonLoadDelegate_allNumber(int64_t number, KRPersonLoad& /*loader*/) override {
    require(starts == 1 && total == 0 && number >= 2);
    total = number;
  }
  void KRPersonLoadDelegate_progress(double progress, const KRRef<IKRPerson>& person,
                                     KRPersonLoad& /*loader*/) override {
    require(person && !person->ID().isEmpty() && total > ++persons);
    require(progress > 0 && progress >= last && progress <= 100);
    last = progress;
  }
  void KRPersonLoadDelegate_end(KRPersonLoad& loader) override {
    require(starts == 1 && !hasEnded && loader.state() == KRPersonLoad::kEnded);
    hasEnded = true;
    ended.set_value();
  }

  int starts = 0;
  int64_t total = 0;
  int64_t persons = 0;
  double last = 0;
  bool hasEnded = false;
  std::promise<void> ended;
};

/// A file of its own for this process.
const std::string& filePath() {
  static const std::string& path = *new std::string(
      (std::filesystem::temp_directory_path() / ("kr-fuzz-load-" + std::to_string(::getpid()) + ".vcf")).string());
  return path;
}

size_t persons(bool withNotes) {
  const auto loader = KRPersonLoad::loadWithFile(KRString(filePath()));
  require(static_cast<bool>(loader));
  const auto listener = std::make_shared<Listener>();
  loader->setDelegate(listener);
  if (withNotes) {
    loader->setNotes([](const KRPersonLoadNote& note) { require(!note.sentence.isEmpty()); });
  }
  require(loader->start());
  listener->ended.get_future().wait();
  return static_cast<size_t>(listener->persons);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  KRBuffer buffer;
  require(buffer.append(bytes));
  KRVCardPieces pieces(std::move(buffer));
  size_t count = 1;
  for (; pieces.next(); ++count) {
    require(krIsWellFormed(pieces.card()) && pieces.card().ends_with("\nEND:VCARD"));
  }
  require(count == pieces.count());

  std::ofstream(filePath(), std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  const size_t without = persons(false);
  require(without < count && without == persons(true));
  std::filesystem::remove(filePath());
  return 0;
}
