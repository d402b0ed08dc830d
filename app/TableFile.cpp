#include "app/TableFile.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "app/Unusable.h"
#include "import/KRCSVFile.h"
#include "import/KRPersonCSVLoad.h"
#include "platform/KRFile.h"
#include "platform/KRProgress.h"

namespace {

constexpr size_t kFirstValues = 3;
constexpr uint64_t kSampleRows = 50;

class Forwarder : public KRPersonLoadDelegate {
 public:
  explicit Forwarder(const TableFile::PersonSink& sink) : sink_(sink) {}

  void KRPersonLoadDelegate_progress(double percent, const KRRef<IKRPerson>& person, KRPersonLoad&) override {
    sink_(person, percent);
  }

 private:
  const TableFile::PersonSink& sink_;
};

void addFirst(KRStringList& values, const KRString& value) {
  if (values.size() == kFirstValues || value.isEmpty()) return;
  if (std::find(values.begin(), values.end(), value) == values.end()) values.push_back(value);
}

/// Why a column of that heading feeds the property in the strict dialect.
KRString strictReason(const KRString& heading, const KRString& property) {
  // A first value that is neither a number nor an address leaves the heading alone to decide.
  const KRString byHeading = KRPersonCSVLoad::propertyNameByHeadItemName(heading, nullptr, "x"_kr);
  if (!(byHeading == KRProPertyOther)) return "heading"_kr;
  return property == KRProPertyOther ? "not known, kept as it is"_kr : "first value"_kr;
}

}  // namespace

TableFile::TableFile(std::string file, const TableOptions& options) : file_(std::move(file)) {
  const KRCSVDialect dialect = options.dialect();
  if (dialect.kind == KRCSVDialect::Kind::Strict) return;
  KRResult<KRCSVReading> reading = KRCSVReading::open(std::string_view(file_), dialect);
  if (!reading) throw Unusable(reading.error().sentence);
  reading_ = *std::move(reading);
  options.apply(file_, reading_->mapping());
}

std::vector<TableFile::Column> TableFile::columns() const {
  if (isStrict()) return strictColumns();
  std::vector<Column> columns;
  for (const KRCSVColumn& each : reading_->mapping().columns()) {
    columns.push_back({each.heading, {}, each.target.name(), each.label, each.reason()});
    for (const KRStringList& row : reading_->firstRows()) {
      if (columns.size() <= row.size()) addFirst(columns.back().firstValues, row[columns.size() - 1]);
    }
  }
  return columns;
}

std::vector<TableFile::Column> TableFile::strictColumns() const {
  const KRRef<KRCSVFile> table = KRCSVFile::initWithFile(KRString(file_));
  if (!table->failure().empty()) throw Unusable(table->failure());
  std::vector<Column> columns;
  const KRStringList headings = table->valuesOfRow(0).value_or(KRStringList());
  for (uint64_t i = 0; i < headings.size(); ++i) {
    Column column{headings[i], {}, {}, {}, {}};
    const KRString first = table->rowCount() > 1 ? table->valueAtRow(1, i) : ""_kr;
    column.property = KRPersonCSVLoad::propertyNameByHeadItemName(headings[i], &column.label, first);
    column.why = strictReason(headings[i], column.property);
    const uint64_t rows = std::min(table->rowCount(), kSampleRows);
    for (uint64_t row = 1; row < rows; ++row) addFirst(column.firstValues, table->valueAtRow(row, i));
    columns.push_back(std::move(column));
  }
  return columns;
}

void TableFile::read(const PersonSink& sink, const KRPersonLoadNoteSink& notes) {
  if (isStrict()) {
    readStrictly(sink, notes);
    return;
  }
  const size_t count = reading_->personCount();
  reading_->persons(
      [&](const KRRef<KRTempPerson>& person, size_t row) {
        sink(person, krPercent(row, count));
        return true;
      },
      notes);
}

void TableFile::readStrictly(const PersonSink& sink, const KRPersonLoadNoteSink& notes) const {
  const KRRef<KRPersonCSVLoad> loader = KRPersonCSVLoad::initWithFile(KRString(file_));
  if (!loader) throw Unusable(KRFile::read(std::string_view(file_)).error().sentence);
  std::string failure;
  loader->setNotes([&](const KRPersonLoadNote& note) {
    if (note.line == 0 && note.isPersonLost) {
      failure = note.sentence.view();
    } else {
      notes(note);
    }
  });
  loader->setDelegate(std::make_shared<Forwarder>(sink));
  loader->loadThreed();
  loader->setDelegate(nullptr);
  if (!failure.empty()) throw Unusable(failure);
}
