// Any bytes as a delimited file: both readers, any pieces, and what is written from it comes back.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "import/KRCSVReading.h"
#include "import/KRCSVWriter.h"
#include "platform/KRBuffer.h"
#include "platform/KRFatal.h"

namespace {

using Rows = std::vector<std::vector<std::string>>;

void require(bool holds, const char* what) {
  if (!holds) KRFatal(what);
}

Rows rowsOf(std::string_view text, size_t pieceSize) {
  Rows rows;
  KRCSVSplitter splitter(KRCSVMarks{}, [&](const KRCSVRow& row) {
    rows.emplace_back();
    for (size_t i = 0; i < row.count(); ++i) rows.back().emplace_back(row.view(i));
    return true;
  });
  for (; !text.empty(); text.remove_prefix(std::min(pieceSize, text.size()))) splitter.feed(text.substr(0, pieceSize));
  splitter.finish();
  return rows;
}

std::vector<KRRef<KRTempPerson>> personsOf(std::string_view bytes) {
  KRBuffer buffer;
  require(buffer.append(bytes), "there is memory");
  KRCSVReading reading = KRCSVReading::of(KRCSVText::of(std::move(buffer)), KRCSVDialect::rfc4180());
  std::vector<KRRef<KRTempPerson>> persons;
  const size_t count = reading.personCount();
  reading.persons(
      [&](const KRRef<KRTempPerson>& person, size_t) {
        persons.push_back(person);
        return true;
      },
      [](const KRPersonLoadNote& note) { require(krIsWellFormed(note.sentence.view()), "a note is text"); });
  require(persons.size() == count, "there are as many persons as rows were counted");
  return persons;
}

std::string written(const std::vector<KRRef<KRTempPerson>>& persons) {
  KRCSVWriter writer;
  for (const auto& person : persons) writer.measure(*person);
  std::string bytes;
  writer.begin(bytes);
  for (const auto& person : persons) writer.append(*person, bytes);
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  require(rowsOf(bytes, size + 1) == rowsOf(bytes, 7), "pieces make no difference");
  const auto persons = personsOf(bytes);
  for (const auto& person : persons) require(krIsWellFormed(person->displayName().view()), "a name is text");
  // What was read and written once comes back, so writing again gives the same bytes.
  const std::string once = written(persons);
  require(written(personsOf(once)) == once, "what is written is read back");
  return 0;
}
