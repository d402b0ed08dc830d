// The lower bound: a program that knows the generated book and does nothing but the work itself. Views into the file in
// one array for each property, no unescaping, no parameters, no character sets, no errors, no findings; keys are exact
// text.
//
//     lower_bound vcf FILE       read, parse, and the five groupings
//     lower_bound csv FILE       read, and find the end of every cell
//     lower_bound copy FILE TO   read, write beside TO, flush, rename
//
// One measurement a process, as one JSON object on standard output; times are seconds on the wall clock.

#include <fcntl.h>
#include <immintrin.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

double now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

[[noreturn]] void fail(const char* path) {
  perror(path);
  exit(1);
}

/// A whole file in memory, with zeros behind it so that wide loads may run over its end.
class File {
 public:
  explicit File(const char* path) {
    const int file = open(path, O_RDONLY);
    struct stat state {};
    if (file < 0 || fstat(file, &state) != 0) fail(path);
    size_ = static_cast<size_t>(state.st_size);
    data_ = static_cast<char*>(aligned_alloc(64, (size_ + 256) & ~size_t{63}));
    for (size_t got = 0; got < size_;) {
      const ssize_t count = read(file, data_ + got, std::min<size_t>(size_ - got, size_t{1} << 22U));
      if (count <= 0) fail(path);
      got += static_cast<size_t>(count);
    }
    memset(data_ + size_, 0, 128);
    close(file);
  }
  ~File() { free(data_); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  const char* begin() const { return data_; }
  const char* end() const { return data_ + size_; }
  size_t size() const { return size_; }

 private:
  char* data_ = nullptr;
  size_t size_ = 0;
};

/// The values of one property over all contacts.
struct Column {
  std::vector<std::string_view> values;
  /// The first value of each contact; one more ends the last one's.
  std::vector<uint32_t> firsts;
};

struct Book {
  std::vector<std::string_view> names;
  std::vector<std::string_view> cards;
  Column phones;
  Column emails;
  Column addresses;
  std::vector<std::unique_ptr<std::string>> unfolded;

  std::string_view unfold(std::string_view folded) {
    auto text = std::make_unique<std::string>();
    for (size_t i = 0; i < folded.size(); ++i) {
      if (folded[i] == '\r') {
        i += 2;
      } else {
        text->push_back(folded[i]);
      }
    }
    return *unfolded.emplace_back(std::move(text));
  }
};

std::string_view afterColon(std::string_view line) {
  const size_t at = line.find(':');
  return at == std::string_view::npos ? std::string_view() : line.substr(at + 1);
}

/// Takes lines one after the other and fills the columns of a book.
class Parser {
 public:
  explicit Parser(Book& book, size_t size) : book_(book) {
    // Address space only: pages that are not touched cost nothing.
    const size_t guess = size / 256;
    book.names.reserve(guess);
    book.cards.reserve(guess);
    for (Column* column : columns_) {
      column->values.reserve(guess * 2);
      column->firsts.reserve(guess);
    }
  }

  void take(const char* start, std::string_view line, bool isFolded) {
    const char* next = line.data() + line.size() + 2;
    char first = line[0];
    if (first == 'i') {
      const size_t dot = line.substr(0, 12).find('.');
      if (dot != std::string_view::npos) line.remove_prefix(dot + 1);
      first = line[0];
    }
    switch (first) {
      case 'B':
        if (line[1] == 'E') begin(next);
        break;
      case 'F':
        name_ = line.substr(3);
        break;
      case 'T':
        if (line[1] == 'E') book_.phones.values.push_back(afterColon(line));
        break;
      case 'A':
        if (line[1] == 'D') book_.addresses.values.push_back(afterColon(isFolded ? book_.unfold(line) : line));
        break;
      case 'E':
        if (line[1] == 'M') {
          book_.emails.values.push_back(afterColon(line));
        } else {
          book_.names.push_back(name_);
          book_.cards.emplace_back(body_, static_cast<size_t>(start - body_));
        }
        break;
      default:
        break;
    }
  }

  void finish() {
    for (Column* column : columns_) column->firsts.push_back(static_cast<uint32_t>(column->values.size()));
  }

 private:
  void begin(const char* body) {
    finish();
    body_ = body;
    name_ = {};
  }

  Book& book_;
  Column* columns_[3] = {&book_.phones, &book_.emails, &book_.addresses};
  const char* body_ = nullptr;
  std::string_view name_;
};

/// The places among 64 bytes where one of them is.
__attribute__((target("avx2"))) uint64_t placesOf(const char* bytes, __m256i sought) {
  const auto half = [&](const char* from) __attribute__((target("avx2"))) {
    const __m256i loaded = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
    return static_cast<uint64_t>(static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(loaded, sought))));
  };
  return half(bytes) | half(bytes + 32) << 32U;
}

__attribute__((target("avx2"))) void parse(const File& file, Book& book) {
  Parser parser(book, file.size());
  const __m256i lineFeed = _mm256_set1_epi8('\n');
  const char* line = file.begin();
  bool isFolded = false;
  for (const char* block = file.begin(); block < file.end(); block += 64) {
    for (uint64_t places = placesOf(block, lineFeed); places != 0; places &= places - 1) {
      const char* at = block + __builtin_ctzll(places);
      if (at >= file.end()) break;
      if (at[1] == ' ') {
        isFolded = true;
        continue;
      }
      parser.take(line, std::string_view(line, static_cast<size_t>(at - line) - 1), isFolded);
      line = at + 1;
      isFolded = false;
    }
  }
  parser.finish();
}

constexpr uint64_t kOdd = 0x9E3779B97F4A7C15U;

uint64_t mix(uint64_t a, uint64_t b) {
  const auto product = static_cast<unsigned __int128>(a) * b;
  return static_cast<uint64_t>(product) ^ static_cast<uint64_t>(product >> 64U);
}

uint64_t load8(const char* from) {
  uint64_t value = 0;
  memcpy(&value, from, sizeof value);
  return value;
}

/// The last bytes, fewer than eight: the file's buffer may be read beyond its end.
uint64_t loadTail(const char* from, size_t count) {
  return load8(from) & ~(~uint64_t{0} << (8 * count));
}

uint64_t hashOf(std::string_view text) {
  const char* from = text.data();
  size_t left = text.size();
  uint64_t hash = 0xD6E8FEB86659FD93U ^ left;
  for (; left >= 16; left -= 16, from += 16) hash = mix(load8(from) ^ kOdd, load8(from + 8) ^ hash);
  const uint64_t low = left >= 8 ? load8(from) : loadTail(from, left);
  const uint64_t high = left >= 8 ? loadTail(from + 8, left - 8) : 0;
  return mix(low ^ kOdd, high ^ hash);
}

/// The first of its kind, and one that equals it.
using Pairs = std::vector<std::pair<uint32_t, uint32_t>>;

/// Pairs of equal texts; empty ones are not grouped. Texts lie some hundred bytes apart in the file: without looking
/// ahead the hashing waits for memory.
Pairs group(const std::vector<std::string_view>& texts) {
  constexpr size_t kAhead = 24;
  std::vector<uint64_t> hashes(texts.size());
  for (size_t i = 0; i < texts.size(); ++i) {
    if (i + kAhead < texts.size()) __builtin_prefetch(texts[i + kAhead].data());
    hashes[i] = texts[i].empty() ? 0 : hashOf(texts[i]) | 1U;
  }
  size_t room = 16;
  while (room < texts.size() * 2) room *= 2;
  constexpr size_t kHuge = size_t{2} << 20U;
  const size_t bytes = (room * sizeof(uint64_t) + kHuge - 1) & ~(kHuge - 1);
  // Half of the hash above, the index and one below.
  auto* slots = static_cast<uint64_t*>(aligned_alloc(kHuge, bytes));
  madvise(slots, bytes, MADV_HUGEPAGE);
  memset(slots, 0, bytes);
  Pairs pairs;
  for (size_t i = 0; i < texts.size(); ++i) {
    if (i + kAhead < texts.size()) __builtin_prefetch(&slots[hashes[i + kAhead] >> 8U & (room - 1)], 1);
    if (hashes[i] == 0) continue;
    const uint64_t tag = (hashes[i] * kOdd) & ~uint64_t{0xFFFFFFFF};
    for (size_t at = hashes[i] >> 8U & (room - 1);; at = (at + 1) & (room - 1)) {
      if (slots[at] == 0) {
        slots[at] = tag | (i + 1);
        break;
      }
      const auto first = static_cast<uint32_t>(slots[at]) - 1;
      if ((slots[at] ^ tag) >> 32U == 0 && texts[first] == texts[i]) {
        pairs.emplace_back(first, i);
        break;
      }
    }
  }
  free(slots);
  return pairs;
}

/// How many contacts hold a value twice.
size_t repeatedIn(const Column& column) {
  size_t count = 0;
  for (size_t contact = 0; contact + 1 < column.firsts.size(); ++contact) {
    bool isRepeated = false;
    for (uint32_t i = column.firsts[contact]; i < column.firsts[contact + 1]; ++i) {
      for (uint32_t j = column.firsts[contact]; j < i && !isRepeated; ++j) {
        isRepeated = column.values[i] == column.values[j];
      }
    }
    count += isRepeated ? 1 : 0;
  }
  return count;
}

/// How many values stand in more than one contact.
size_t sharedValues(const Pairs& pairs, const Column& column) {
  std::vector<uint32_t> owners(column.values.size());
  for (size_t contact = 0; contact + 1 < column.firsts.size(); ++contact) {
    std::fill(owners.begin() + column.firsts[contact], owners.begin() + column.firsts[contact + 1],
              static_cast<uint32_t>(contact));
  }
  std::vector<uint32_t> shared;
  for (const auto& [first, other] : pairs) {
    if (owners[first] != owners[other]) shared.push_back(first);
  }
  std::sort(shared.begin(), shared.end());
  return static_cast<size_t>(std::unique(shared.begin(), shared.end()) - shared.begin());
}

size_t groupsOf(const Pairs& pairs) {
  std::vector<uint32_t> firsts;
  for (const auto& pair : pairs) firsts.push_back(pair.first);
  std::sort(firsts.begin(), firsts.end());
  return static_cast<size_t>(std::unique(firsts.begin(), firsts.end()) - firsts.begin());
}

/// Does the work and tells how long it took.
template <class Work>
auto timed(double& time, Work work) {
  const double start = now();
  auto result = work();
  time = now() - start;
  return result;
}

int vcf(const char* path) {
  const double start = now();
  const File file(path);
  Book book;
  parse(file, book);
  const double load = now() - start;
  double times[5];
  const Pairs names = timed(times[0], [&] { return group(book.names); });
  const Pairs phones = timed(times[1], [&] { return group(book.phones.values); });
  const Pairs emails = timed(times[2], [&] { return group(book.emails.values); });
  const Pairs cards = timed(times[3], [&] { return group(book.cards); });
  const size_t repeated =
      timed(times[4], [&] { return repeatedIn(book.phones) + repeatedIn(book.emails) + repeatedIn(book.addresses); });
  printf(
      "{\"seconds\":%.5f,\"bytes\":%zu,\"contacts\":%zu,\"phones\":%zu,\"emails\":%zu,\"addresses\":%zu,"
      "\"groups_seconds\":%.5f,\"same_name_seconds\":%.5f,\"shared_phone_seconds\":%.5f,\"shared_email_seconds\":%.5f,"
      "\"exact_seconds\":%.5f,\"in_contact_seconds\":%.5f,\"found\":{\"same_name\":%zu,\"shared_phone\":%zu,"
      "\"shared_email\":%zu,\"exact\":%zu,\"in_contact\":%zu}}\n",
      load, file.size(), book.names.size(), book.phones.values.size(), book.emails.values.size(),
      book.addresses.values.size(), times[0] + times[1] + times[2] + times[3] + times[4], times[0], times[1], times[2],
      times[3], times[4], groupsOf(names), sharedValues(phones, book.phones), sharedValues(emails, book.emails),
      groupsOf(cards), repeated);
  return 0;
}

/// Cells end at commas and line feeds outside of quotes; 64 bytes at a time.
__attribute__((target("avx2"))) size_t splitRows(const File& file, std::vector<uint32_t>& ends) {
  const __m256i lineFeed = _mm256_set1_epi8('\n');
  const __m256i comma = _mm256_set1_epi8(',');
  const __m256i quote = _mm256_set1_epi8('"');
  ends.reserve(file.size() / 4);
  uint64_t carry = 0;
  size_t rows = 0;
  for (const char* block = file.begin(); block < file.end(); block += 64) {
    uint64_t inside = placesOf(block, quote);
    for (unsigned shift = 1; shift < 64; shift *= 2) inside ^= inside << shift;
    inside ^= carry;
    carry = (inside >> 63U) != 0 ? ~uint64_t{0} : 0;
    const uint64_t lines = placesOf(block, lineFeed) & ~inside;
    rows += static_cast<size_t>(__builtin_popcountll(lines));
    for (uint64_t places = (placesOf(block, comma) & ~inside) | lines; places != 0; places &= places - 1) {
      ends.push_back(static_cast<uint32_t>(block - file.begin() + __builtin_ctzll(places)));
    }
  }
  return rows;
}

int csv(const char* path) {
  const double start = now();
  const File file(path);
  std::vector<uint32_t> ends;
  const size_t rows = splitRows(file, ends);
  printf("{\"seconds\":%.5f,\"bytes\":%zu,\"contacts\":%zu,\"cells\":%zu}\n", now() - start, file.size(), rows - 1,
         ends.size());
  return 0;
}

int copy(const char* path, const char* target) {
  const double start = now();
  const File file(path);
  const std::string part = std::string(target) + ".part";
  const int out = open(part.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  for (const char* from = file.begin(); from < file.end();) {
    const ssize_t count = write(out, from, static_cast<size_t>(file.end() - from));
    if (count <= 0) fail(part.c_str());
    from += count;
  }
  if (fsync(out) != 0 || close(out) != 0 || rename(part.c_str(), target) != 0) fail(target);
  printf("{\"seconds\":%.5f,\"bytes\":%zu}\n", now() - start, file.size());
  return 0;
}

}  // namespace

int main(int count, char** words) {
  const std::string_view task = count > 2 ? words[1] : "";
  if (task == "vcf" && count == 3) return vcf(words[2]);
  if (task == "csv" && count == 3) return csv(words[2]);
  if (task == "copy" && count == 4) return copy(words[2], words[3]);
  fprintf(stderr, "usage: lower_bound vcf|csv FILE, or lower_bound copy FILE TO\n");
  return 2;
}
