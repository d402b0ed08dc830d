#include "import/KRCSVReading.h"

#include <algorithm>
#include <optional>
#include <tuple>
#include <utility>

#include "import/KRCSVHeadings.h"
#include "import/KRCSVPersonMaker.h"
#include "import/KRPersonCSVLoad.h"
#include "platform/KRASCII.h"

namespace {

constexpr size_t kSampleRows = 50;
constexpr size_t kSampleBytes = size_t{256} << 10U;
/// What a file without another sign is separated by, the likelier first.
constexpr char kSeparators[] = {',', ';', '\t'};

using Rows = std::vector<KRCSVMapping::Row>;

/// The first rows that hold something: those of a sample of the text, or the first one by itself if it is longer.
Rows sampleRows(std::string_view text, KRCSVMarks marks, size_t count) {
  Rows rows;
  KRCSVSplitter splitter(marks, [&](const KRCSVRow& row) {
    if (row.isBlank()) return true;
    rows.emplace_back();
    for (size_t i = 0; i < std::min(row.count(), KRCSVReading::kMostColumns); ++i) rows.back().push_back(row.text(i));
    return rows.size() < count;
  });
  const std::string_view most = text.substr(0, KRCSVReading::kLongestHeadings);
  size_t fed = 0;
  do {
    splitter.feed(most.substr(fed, kSampleBytes));
    fed += kSampleBytes;
  } while (rows.empty() && fed < most.size());
  // The last row of a sample may be cut anywhere.
  if (text.size() <= fed || rows.empty()) splitter.finish();
  return rows;
}

bool isKnownHeading(const KRString& heading) {
  return heading == KRCSVMapping::kOwnMark || heading == KRCSVMapping::kOwnRawMark ||
         KRCSVHeadings::meaningOf(heading).has_value();
}

size_t knownHeadings(const KRCSVMapping::Row& row) {
  return static_cast<size_t>(std::count_if(row.begin(), row.end(), isKnownHeading));
}

/// How well a way of splitting fits: headings that are known, then rows of one width, then the width.
using Score = std::tuple<size_t, size_t, size_t>;

Score scoreOf(const Rows& rows) {
  if (rows.empty()) return {0, 0, 0};
  const size_t width = rows.front().size();
  const auto even =
      std::count_if(rows.begin(), rows.end(), [&](const KRCSVMapping::Row& row) { return row.size() == width; });
  return {knownHeadings(rows.front()), width < 2 ? 0 : static_cast<size_t>(even) * 100 / rows.size(), width};
}

/// Whether cells are enclosed in single quotes: the first one is, and so is every one of the headings that holds any.
bool hasSingleQuotes(std::string_view text) {
  if (!text.starts_with('\'')) return false;
  for (const char separator : kSeparators) {
    const Rows rows = sampleRows(text, {separator, '\''}, 1);
    if (rows.empty() || rows[0].size() < 2) continue;
    return std::none_of(rows[0].begin(), rows[0].end(),
                        [](const KRString& cell) { return cell.text().contains('\''); });
  }
  return false;
}

bool looksLikeValue(const KRString& cell) {
  const auto digits =
      std::count_if(cell.view().begin(), cell.view().end(), [](char c) { return c >= '0' && c <= '9'; });
  return (digits >= 5 && KRPersonCSVLoad::isPhoneByValue(cell)) ||
         (KRPersonCSVLoad::isEmailByValue(cell) && cell.view().find(' ') == std::string_view::npos);
}

}  // namespace

KRResult<KRCSVReading> KRCSVReading::open(KRText path, const KRCSVDialect& dialect, KRText preset) {
  KRResult<KRCSVText> text = KRCSVText::read(path, KRCSVText::Fallback::Western);
  if (!text) return text.error();
  return of(*std::move(text), dialect, preset);
}

KRCSVReading KRCSVReading::of(KRCSVText text, const KRCSVDialect& dialect, KRText preset) {
  KRCSVReading reading;
  reading.text_ = std::move(text);
  reading.dialect_ = dialect;
  reading.findMarks();
  reading.readFirstRows();
  reading.mapping_ = reading.hasHeadings_ ? KRCSVMapping::of(reading.headings_, reading.firstRows_, preset)
                                          : KRCSVMapping::ofColumns(reading.headings_.size(), reading.firstRows_);
  return reading;
}

/// A first line such as "sep=;" names the separator and is no row.
bool KRCSVReading::takeSeparatorLine() {
  constexpr std::string_view kStart = "sep=";
  const std::string_view text = text_.view();
  if (text.size() < kStart.size() + 1) return false;
  if (!krEqualsIgnoringCase(text.substr(0, kStart.size()), kStart)) return false;
  const std::string_view rest = text.substr(kStart.size() + 1);
  if (!rest.empty() && rest.front() != '\n' && rest.front() != '\r') return false;
  marks_.separator = text[kStart.size()];
  start_ = text.size() - rest.size() + (rest.starts_with("\r\n") ? 2 : rest.empty() ? 0 : 1);
  return true;
}

void KRCSVReading::findMarks() {
  const bool isNamed = takeSeparatorLine();
  const std::string_view text = text_.view().substr(start_);
  marks_.quote = dialect_.quote ? *dialect_.quote : hasSingleQuotes(text) ? '\'' : '"';
  if (dialect_.separator) {
    marks_.separator = *dialect_.separator;
    return;
  }
  if (isNamed) return;
  Score best{0, 0, 0};
  for (const char separator : kSeparators) {
    const Rows rows = sampleRows(text, {separator, marks_.quote}, kSampleRows);
    const Score score = scoreOf(rows);
    // No rows: nothing but separators.
    if (!rows.empty() && score <= best) continue;
    best = score;
    marks_.separator = separator;
    if (rows.empty()) return;
  }
  // A single column: its values may hold any of the separators.
  if (std::get<2>(best) == 1) marks_.separator = 0;
}

bool KRCSVReading::looksLikeHeadings() const {
  return knownHeadings(headings_) != 0 || std::none_of(headings_.begin(), headings_.end(), looksLikeValue);
}

void KRCSVReading::readFirstRows() {
  firstRows_ = sampleRows(text_.view().substr(start_), marks_, kSampleRows + 1);
  if (firstRows_.empty()) return;
  headings_ = firstRows_.front();
  // A separator at the end of the headings makes no column.
  while (headings_.size() > 1 && headings_.back().isEmpty()) headings_.pop_back();
  hasHeadings_ = dialect_.hasHeadings ? *dialect_.hasHeadings : looksLikeHeadings();
  if (!hasHeadings_) {
    for (const KRCSVMapping::Row& row : firstRows_) {
      if (row.size() > headings_.size()) headings_.resize(row.size());
    }
  } else {
    firstRows_.erase(firstRows_.begin());
  }
}

void KRCSVReading::split(const KRCSVSplitter::RowSink& sink, size_t* openQuoteLine) const {
  bool isHeading = hasHeadings_;
  KRCSVSplitter splitter(
      marks_,
      [&](const KRCSVRow& row) {
        if (isHeading && !row.isBlank()) {
          isHeading = false;
          return true;
        }
        return isHeading || sink(row);
      },
      start_ == 0 ? 1 : 2);
  if (openQuoteLine_ != 0) splitter.endQuotesWithLinesFrom(openQuoteLine_);
  splitter.feed(text_.view().substr(start_));
  splitter.finish();
  if (openQuoteLine != nullptr) *openQuoteLine = splitter.openQuoteLine();
}

namespace {

/// Counts the rows of a text that hold something, as the splitter makes them, without making them.
class RowCounter {
 public:
  RowCounter(KRCSVMarks marks, bool countsBlank) : marks_(marks), countsBlank_(countsBlank) {}

  size_t count(std::string_view text) {
    const char* at = text.data();
    const char* const end = at + text.size();
    KRCSVNext lineFeeds('\n', end);
    KRCSVNext returns('\r', end);
    KRCSVNext quotes(marks_.quote, end);
    while (at != end) {
      const char* lineEnd = std::min(lineFeeds.from(at), returns.from(at));
      if (marks_.quote != 0 && quotes.from(at) < lineEnd) {
        at = quotedRow(at, end);
      } else {
        isBlank_ = std::all_of(at, lineEnd, [&](char c) { return isBlank(c) || isSeparator(c); });
        endRow(at == lineEnd);
        at = lineEnd == end ? end : lineEnd + 1;
      }
    }
    return count_;
  }
  /// Whether the text ended inside of quotes.
  bool isOpen() const noexcept { return isOpen_; }

 private:
  static bool isBlank(char c) noexcept { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

  /// A zero byte is a character like any other where nothing separates cells.
  bool isSeparator(char c) const noexcept { return c == marks_.separator && marks_.separator != 0; }

  void endRow(bool isEmpty) noexcept {
    if (!isEmpty && (!isBlank_ || (countsBlank_ && count_ != 0))) ++count_;
  }

  /// Walks over a row with quotes and tells where the next one begins.
  const char* quotedRow(const char* at, const char* end) {
    isBlank_ = true;
    bool isCellStart = true;
    for (; at != end && *at != '\n' && *at != '\r'; ++at) {
      if (isSeparator(*at)) {
        isCellStart = true;
        continue;
      }
      if (isCellStart && *at == marks_.quote) {
        at = quoted(at + 1, end);
        if (at == end) break;
        --at;
      } else {
        isBlank_ = isBlank_ && isBlank(*at);
      }
      isCellStart = false;
    }
    endRow(false);
    return at == end ? end : at + 1;
  }

  /// Walks over what is enclosed and tells what follows the closing quote.
  const char* quoted(const char* at, const char* end) {
    for (; at != end; ++at) {
      if (*at == marks_.quote) {
        if (at + 1 == end || at[1] != marks_.quote) return at + 1;
        ++at;
        isBlank_ = false;
      } else {
        isBlank_ = isBlank_ && isBlank(*at);
      }
    }
    isOpen_ = true;
    return end;
  }

  KRCSVMarks marks_;
  bool countsBlank_;
  bool isBlank_ = true;
  bool isOpen_ = false;
  size_t count_ = 0;
};

}  // namespace

size_t KRCSVReading::personCount() {
  if (isCounted_) return count_;
  RowCounter counter(marks_, mapping_.isOwn());
  count_ = counter.count(text_.view().substr(start_));
  // The first row that is not blank are the headings, a blank one before them is none of ours.
  if (hasHeadings_ && count_ != 0) --count_;
  if (counter.isOpen()) {
    // A quote that nothing closes would swallow the rest of the file: from there each line stands for itself.
    split([](const KRCSVRow&) { return true; }, &openQuoteLine_);
    count_ = 0;
    split([&](const KRCSVRow& row) {
      count_ += isPassedOver(row) ? 0 : 1;
      return true;
    });
  }
  isCounted_ = true;
  return count_;
}

void KRCSVReading::persons(const PersonSink& sink, const KRPersonLoadNoteSink& notes) {
  personCount();
  if (openQuoteLine_ != 0 && notes) {
    notes({openQuoteLine_, 0, false, "nothing closes the quote; from here on quotes end with their line"_kr});
  }
  KRCSVPersonMaker maker(mapping_, dialect_, KRCSVCells::Signs::of(text_.view()));
  if (maker.wantsToLearn()) {
    split([&](const KRCSVRow& row) {
      maker.learn(row);
      return maker.wantsToLearn();
    });
  }
  size_t number = 0;
  split([&](const KRCSVRow& row) {
    if (isPassedOver(row)) return true;
    ++number;
    const KRRef<KRTempPerson> person = maker.person(row);
    if (notes) {
      for (const KRString& problem : maker.problems()) notes({row.line(), number, false, problem});
      if (row.count() > mapping_.columns().size() && !row.view(mapping_.columns().size()).empty()) {
        notes({row.line(), number, false, "the row has more cells than there are headings"_kr});
      }
    }
    return sink(person, number);
  });
}
