// What the comparison measures of this system: one task a process, the result as one JSON object on standard output.
//
//     kr_compare load|scan|groups|fix|delete|export FILE.vcf
//     kr_compare table|persons|contract FILE.csv
//
// Times are seconds on the wall clock, taken around the work alone; memory is what the process holds, in bytes.
// Nobody's own preferences and trash are read or written: the folder of the environment's XDG_DATA_HOME is used up.

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "app/BookExport.h"
#include "bench/BenchCards.h"
#include "bench/BenchFind.h"
#include "bench/BenchSteps.h"
#include "contacts/KRTrashAddressBook.h"
#include "contacts/model/KRSaveScope.h"
#include "contacts/vcard/KRVCardBook.h"
#include "import/KRCSVReading.h"
#include "import/KRCSVSplitter.h"
#include "import/KRCSVText.h"
#include "import/KRPersonCSVLoad.h"
#include "issues/KRIssue.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueFind.h"
#include "issues/KRIssueFindResult.h"
#include "issues/KRIssueManager.h"
#include "issues/KRIssueNames.h"
#include "issues/KRIssueObject.h"
#include "platform/KRFileWriter.h"
#include "platform/KRPreferencesOverlay.h"

namespace {

using Json = nlohmann::ordered_json;

class Stopwatch {
 public:
  double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count(); }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// Reads names, phones, e-mails and addresses of all persons once: whatever any of the other programs reads.
Json readAll(KRVCardBook& book) {
  size_t chars = 0;
  size_t phones = 0;
  size_t emails = 0;
  size_t addresses = 0;
  KRHold hold;
  const auto readTexts = [&](const IKRPerson& person, KROrdinal property, size_t& count) {
    person.readTexts(property, hold, [&](KRText text) {
      ++count;
      chars += text.size();
      return true;
    });
  };
  for (const IKRPerson& person : book.allPersons()) {
    const KRNameView name = person.readName(hold);
    chars += name.first.size() + name.last.size() + person.displayName().size();
    readTexts(person, KROrdinal::Phone, phones);
    readTexts(person, KROrdinal::Email, emails);
    person.readEntries(KROrdinal::Address, hold, [&](const KREntryView& entry) {
      ++addresses;
      for (const KRText field : entry.address->fields) chars += field.size();
      return true;
    });
  }
  return {{"chars", chars}, {"phones", phones}, {"emails", emails}, {"addresses", addresses}};
}

Json load(const std::string& path) {
  const size_t before = krResidentBytes();
  const Stopwatch watch;
  const auto book = krBenchOpen(path);
  const double loaded = watch.seconds();
  Json values = readAll(*book);
  const double seconds = watch.seconds();
  Json result = {{"seconds", seconds},
                 {"load_seconds", loaded},
                 {"bytes", std::filesystem::file_size(path)},
                 {"contacts", book->allPersonsCount()},
                 {"resident", krResidentBytes() - before}};
  result.update(values);
  return result;
}

size_t findingsOf(KRIssueFindResult& result) {
  size_t count = 0;
  for (const KRIssueContext& context : result.contexts()) count += context.objects().count();
  return count;
}

Json scan(const std::string& path) {
  const size_t before = krResidentBytes();
  const auto book = krBenchOpen(path);
  const Stopwatch watch;
  const auto result = krBenchFind(book);
  const double seconds = watch.seconds();
  return {{"seconds", seconds},
          {"contacts", book->allPersonsCount()},
          {"findings", findingsOf(*result)},
          {"resident", krResidentBytes() - before}};
}

/// A grouping is the work of one detector or of several.
struct Grouping {
  const char* name;
  std::vector<KRString> issues;
};

Json groups(const std::string& path) {
  const std::vector<Grouping> kGroupings = {
      {"same_name", {KRIssueDuplicateNames}},
      {"shared_phone", {KRIssuePhonesDuplicatedAmongMultipleContacts}},
      {"shared_email", {KRIssueEmailsDuplicatedAmongMultipleContacts}},
      {"exact", {KRIssueDuplicateInfo}},
      {"in_contact", {KRIssueDuplicatePhoneNumber, KRIssueDuplicateEmailAddress, KRIssueDuplicateAddress}},
  };
  const auto book = krBenchOpen(path);
  const KRPersonList& persons = book->allPersons();
  Json result = {{"contacts", book->allPersonsCount()}};
  double all = 0;
  std::vector<KRRef<KRIssueContext>> kept;
  for (const Grouping& grouping : kGroupings) {
    size_t findings = 0;
    const Stopwatch watch;
    for (const KRString& name : grouping.issues) {
      const auto issue = krMake<KRIssue>(name, ""_kr);
      kept.push_back(KRIssueFind::issueFindWithIssue(issue.get())->find(&persons, [](double) {}));
      if (kept.back()) findings += kept.back()->objects().count();
    }
    const double seconds = watch.seconds();
    all += seconds;
    result[std::string(grouping.name) + "_seconds"] = seconds;
    result["found"][grouping.name] = findings;
  }
  result["seconds"] = all;
  return result;
}

/// The time to find, and that to fix what was found, without the save.
Json fix(const std::string& path, const KRString& issueName, const KRString& handleName) {
  const auto book = krBenchOpen(path);
  const Stopwatch finding;
  const auto result = krBenchFind(book);
  const double found = finding.seconds();
  const Stopwatch fixing;
  KRSaveScope scope;
  const size_t count = krBenchFixAll(*result, issueName, handleName);
  const double seconds = fixing.seconds();
  return {{"seconds", seconds}, {"find_seconds", found}, {"contacts", book->allPersonsCount()}, {"findings", count}};
}

Json exportBook(const std::string& path) {
  const auto book = krBenchOpen(path);
  const std::string target = std::string(std::getenv("XDG_DATA_HOME")) + "/export.vcf";
  const Stopwatch watch;
  auto file = KRFileWriter::open(std::string_view(target));
  if (!file) krBenchFail(file.error().sentence);
  // By the same pieces as the command hands them to the system.
  constexpr size_t kPiece = size_t{256} << 10U;
  std::string kept;
  const auto flush = [&] {
    if (const auto written = file->append(kept); !written) krBenchFail(written.error().sentence);
    kept.clear();
  };
  size_t bytes = 0;
  const auto put = [&](std::string_view piece) {
    bytes += piece.size();
    kept += piece;
    if (kept.size() >= kPiece) flush();
  };
  BookExport::write(
      *book, PersonFilter(), std::nullopt, put, [](const IKRPerson&, const std::string&) {}, [](double) {});
  flush();
  if (const auto written = file->commit(); !written) krBenchFail(written.error().sentence);
  const double seconds = watch.seconds();
  return {{"seconds", seconds}, {"contacts", book->allPersonsCount()}, {"bytes", bytes}};
}

/// The rows kept in memory, as the peers keep them: a text for each cell, which is a slice of what was read.
Json table(const std::string& path) {
  const size_t before = krResidentBytes();
  const Stopwatch watch;
  const auto text = KRCSVText::read(std::string_view(path));
  if (!text) krBenchFail(text.error().sentence);
  std::deque<KRString> cells;
  size_t rows = 0;
  KRCSVSplitter splitter(KRCSVMarks(), [&](const KRCSVRow& row) {
    for (size_t i = 0; i < row.count(); ++i) cells.push_back(row.text(i));
    ++rows;
    return true;
  });
  splitter.feed(text.value().view());
  splitter.finish();
  const double seconds = watch.seconds();
  return {{"seconds", seconds},
          {"bytes", std::filesystem::file_size(path)},
          {"contacts", rows - 1},
          {"cells", cells.size()},
          {"resident", krResidentBytes() - before}};
}

class Counter : public KRPersonLoadDelegate {
 public:
  void KRPersonLoadDelegate_progress(double, const KRRef<IKRPerson>&, KRPersonLoad&) override { ++count; }
  size_t count = 0;
};

Json persons(const std::string& path) {
  const Stopwatch watch;
  auto reading = KRCSVReading::open(std::string_view(path), KRCSVDialect::rfc4180());
  if (!reading) krBenchFail(reading.error().sentence);
  size_t count = 0;
  reading.value().persons(
      [&](const KRRef<KRTempPerson>&, size_t) {
        ++count;
        return true;
      },
      {});
  const double seconds = watch.seconds();
  return {{"seconds", seconds}, {"bytes", std::filesystem::file_size(path)}, {"contacts", count}};
}

Json contract(const std::string& path) {
  const Stopwatch watch;
  const auto counter = std::make_shared<Counter>();
  const auto loader = KRPersonCSVLoad::initWithFile(KRString(path));
  loader->setDelegate(counter);
  loader->loadThreed();
  const double seconds = watch.seconds();
  return {{"seconds", seconds}, {"bytes", std::filesystem::file_size(path)}, {"contacts", counter->count}};
}

Json run(std::string_view task, const std::string& path) {
  if (task == "load") return load(path);
  if (task == "scan") return scan(path);
  if (task == "groups") return groups(path);
  if (task == "fix") return fix(path, KRString(), KRHandleNameIgnore);
  if (task == "delete") return fix(path, KRIssueDuplicateInfo, KRHandleNameDeleteDuplicatePerson);
  if (task == "export") return exportBook(path);
  if (task == "table") return table(path);
  if (task == "persons") return persons(path);
  if (task == "contract") return contract(path);
  krBenchFail("no such task: " + std::string(task));
}

}  // namespace

int main(int count, char** words) {
  if (count != 3) krBenchFail("usage: kr_compare TASK FILE");
  if (std::getenv("XDG_DATA_HOME") == nullptr) krBenchFail("XDG_DATA_HOME must name a folder that may be filled");
  KRPreferences::setStandard(krMake<KRPreferencesOverlay>(KRRef<KRPreferences>()));
  std::cout << run(words[1], words[2]).dump() << std::endl;
  // Letting go of a million contacts is not what is measured.
  std::_Exit(0);
}
