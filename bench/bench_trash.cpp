// The trash at growing sizes: the time for each person must not grow.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "contacts/KRTrashAddressBook.h"

namespace {

/// A folder of its own for the trash's file, and a trash of so many persons in memory.
class Setting {
 public:
  explicit Setting(int64_t count) : folder_((std::filesystem::temp_directory_path() / "kr-bench-XXXXXX").string()) {
    if (mkdtemp(folder_.data()) == nullptr) std::abort();
    setenv("KRCONTACTS_HOME", folder_.c_str(), 1);
    trash_ = krMake<KRTrashAddressBook>();
    for (int64_t i = 0; i < count; ++i) {
      const std::string number = std::to_string(i);
      const std::string card = "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:" + number + "\r\nN:Lee" + number +
                               ";Ann;Mary;;\r\nTEL;TYPE=home:+1 555 " + number + "\r\nTEL;TYPE=work:+1 556 " + number +
                               "\r\nEMAIL:ann" + number + "@example.org\r\nADR;TYPE=home:;;Main Street " + number +
                               ";Springfield;;12345;\r\nX-UNKNOWN:kept\r\nEND:VCARD\r\n";
      trash_->addPerson(ABPerson::initWithVCardRepresentation(KRText(std::string_view(card))).get());
    }
  }
  ~Setting() {
    unsetenv("KRCONTACTS_HOME");
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  Setting(const Setting&) = delete;
  Setting& operator=(const Setting&) = delete;

  KRTrashAddressBook& trash() const { return *trash_; }

 private:
  std::string folder_;
  KRRef<KRTrashAddressBook> trash_;
};

void trashSave(benchmark::State& state) {
  const Setting setting(state.range(0));
  for (auto _ : state) {
    if (!setting.trash().saveNow()) state.SkipWithError("the trash cannot be written");
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  const auto size = std::filesystem::file_size(std::string(setting.trash().savePath().view()));
  state.counters["bytes/person"] = static_cast<double>(size) / static_cast<double>(state.range(0));
}
BENCHMARK(trashSave)->RangeMultiplier(2)->Range(25000, 100000)->Unit(benchmark::kMillisecond);

void trashLoad(benchmark::State& state) {
  const Setting setting(state.range(0));
  if (!setting.trash().saveNow()) state.SkipWithError("the trash cannot be written");
  for (auto _ : state) benchmark::DoNotOptimize(krMake<KRTrashAddressBook>()->allPersonsCount());
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(trashLoad)->RangeMultiplier(2)->Range(25000, 100000)->Unit(benchmark::kMillisecond);

}  // namespace
