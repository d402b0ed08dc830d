#pragma once

#include <unistd.h>

#include <cstdio>
#include <initializer_list>
#include <random>
#include <string>
#include <string_view>

// Cards of the size and make that address books export: about 376 bytes each, half of them in the manner of the
// desktop's own book.

inline constexpr std::string_view kBenchFirst[] = {"Ann",    "Bo",   "Carla", "David", "Zoë",      "Jürgen",
                                                   "Fatima", "海洋", "Hana",  "Ivan",  "Mary Ann", "Gunnar"};
inline constexpr std::string_view kBenchLast[] = {"Lee", "Smith",  "García", "Müller", "van Dam",
                                                  "王",  "Okafor", "Novak",  "Ng"};
inline constexpr std::string_view kBenchCompanies[] = {"Acme Inc.", "Globex", "Initech", "Umbrella Ltd.",
                                                       "Stark & Sons"};
inline constexpr std::string_view kBenchNotes[] = {"Met at the fair in Lyon\\, call back in May.",
                                                   "Prefers mail to calls.",
                                                   "Likes tea\\; calls on Mondays.\\nBirthday gift: a book."};

/// Makes cards one after the other, the same ones on every run.
class KRBenchCards {
 public:
  void append(std::string& text) {
    ++number_;
    const bool isDesktop = chance(50);
    const std::string_view first = pick(kBenchFirst);
    const std::string_view last = pick(kBenchLast);
    line(text, {"BEGIN:VCARD\r\nVERSION:3.0"});
    if (isDesktop) line(text, {"PRODID:-//Example Corp.//Address Book 2.1//EN"});
    line(text, {"N:", last, ";", first, ";;;"});
    line(text, {"FN:", first, " ", last});
    if (chance(50)) line(text, {"ORG:", pick(kBenchCompanies), ";"});
    if (chance(30)) line(text, {"TITLE:Head of Sales"});
    const std::string number = std::to_string(number_);
    line(text, {isDesktop ? "EMAIL;type=INTERNET;type=HOME;type=pref:" : "EMAIL;TYPE=INTERNET,HOME:", "user", number,
                "@example.org"});
    line(text, {isDesktop ? "TEL;type=CELL;type=VOICE;type=pref:" : "TEL;TYPE=CELL:", "+1 (555) 01", number});
    if (chance(60)) line(text, {isDesktop ? "item1.TEL:+44 20 55" : "TEL;TYPE=WORK,FAX:+44 20 55", number});
    if (isDesktop) line(text, {"item1.X-ABLabel:_$!<Other>!$_"});
    line(text, {"ADR;TYPE=HOME:;;", number, " Elm Street;Springfield;IL;62701;United States"});
    if (chance(30))
      line(text, {isDesktop ? "BDAY:1980-0" : "BDAY:19800", std::to_string(1 + number_ % 9), isDesktop ? "-11" : "11"});
    line(text, {"NOTE:", pick(kBenchNotes)});
    if (chance(60)) line(text, {"REV:2021-03-04T05:06:07Z"});
    line(text, {"END:VCARD"});
  }

 private:
  uint64_t below(uint64_t count) { return random_() % count; }
  bool chance(uint64_t percent) { return below(100) < percent; }
  template <size_t Count>
  std::string_view pick(const std::string_view (&words)[Count]) {
    return words[below(Count)];
  }
  static void line(std::string& text, std::initializer_list<std::string_view> pieces) {
    for (const std::string_view piece : pieces) text.append(piece);
    text.append("\r\n");
  }

  std::mt19937_64 random_{7};
  uint64_t number_ = 100'000;
};

inline constexpr size_t kBenchFileCount = 10'000;

/// A file of ten thousand contacts; larger books are made of several readings of it.
inline const std::string& krBenchFile() {
  static const std::string text = [] {
    std::string made;
    KRBenchCards maker;
    for (size_t i = 0; i < kBenchFileCount; ++i) maker.append(made);
    return made;
  }();
  return text;
}

/// How many bytes of memory the process has.
inline size_t krResidentBytes() {
  size_t pages = 0;
  size_t resident = 0;
  if (FILE* status = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(status, "%zu %zu", &pages, &resident) != 2) resident = 0;
    std::fclose(status);
  }
  return resident * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}
