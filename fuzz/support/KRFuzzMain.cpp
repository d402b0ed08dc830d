// A plain main for the fuzz programs, for builds without libFuzzer.
//
//   fuzz_x [--runs=N] [--seed=N] [--seconds=N] PATH...
//
// Gives every file (of every folder, however deep) to the fuzz function, then N inputs made from them by cutting,
// doubling, joining and changing bytes; with --seconds no more than fit into that time. The same seed makes the same
// inputs on every machine. The number of an input is written when the process is about to die, so that it can be made
// again.
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr std::size_t kLargestSeed = 1 << 20;
constexpr std::size_t kLargestMade = 1 << 16;

// What is being run, for the signal handler.
char currentInput[512] = "no input";

void report(int signalNumber) {
  const std::string_view text = currentInput;
  (void)!write(STDERR_FILENO, "fuzz: died in ", 14);
  (void)!write(STDERR_FILENO, text.data(), text.size());
  (void)!write(STDERR_FILENO, "\n", 1);
  signal(signalNumber, SIG_DFL);
  raise(signalNumber);
}

// A small generator whose numbers are the same with every standard library.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  // 0 to limit - 1; 0 when limit is 0.
  std::size_t below(std::size_t limit) {
    state_ = state_ * 6364136223846793005U + 1442695040888963407U;
    return limit == 0 ? 0 : static_cast<std::size_t>((state_ >> 33) % limit);
  }

 private:
  std::uint64_t state_;
};

void runOne(const std::string& input) {
  // An exact copy without room behind it: reading one byte too far is seen by the address checker.
  std::vector<std::uint8_t> bytes(input.begin(), input.end());
  LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

std::string mutated(const std::vector<std::string>& seeds, Random& random) {
  static constexpr std::string_view kPieces[] = {"\r\n",
                                                 "\n ",
                                                 "\r",
                                                 ";",
                                                 ":",
                                                 ",",
                                                 "\\",
                                                 "\\n",
                                                 "=\r\n",
                                                 "=0D=0A",
                                                 "\"",
                                                 "\t",
                                                 ".",
                                                 "=",
                                                 "BEGIN:VCARD",
                                                 "END:VCARD",
                                                 "\xEF\xBB\xBF",
                                                 "\xFF\xFE",
                                                 "\xFE\xFF",
                                                 std::string_view("\0", 1),
                                                 "\xC0\x80",
                                                 "\xED\xA0\x80",
                                                 "\xF4\x90\x80\x80",
                                                 "99999999999999999999",
                                                 "-1"};
  std::string text = seeds[random.below(seeds.size())];
  if (text.size() > kLargestMade) {
    text = text.substr(random.below(text.size() - kLargestMade), kLargestMade);
  }
  for (std::size_t changes = 1 + random.below(8); changes > 0; --changes) {
    const std::size_t place = random.below(text.size() + 1);
    const std::size_t length = random.below(std::min<std::size_t>(text.size() - place, 64) + 1);
    switch (random.below(7)) {
      case 0:
        text.erase(place, length);
        break;
      case 1:
        text.insert(place, text.substr(place, length));
        break;
      case 2:
        text.insert(place, kPieces[random.below(std::size(kPieces))]);
        break;
      case 3:
        text.resize(place);
        break;
      case 4: {
        const std::string& other = seeds[random.below(seeds.size())];
        text.insert(place, other, random.below(other.size() + 1), random.below(256));
        break;
      }
      default:
        if (place < text.size()) {
          const std::size_t bit = std::size_t{1} << random.below(8);
          const std::size_t changed = static_cast<unsigned char>(text[place]) ^ bit;
          text[place] = static_cast<char>(random.below(2) == 0 ? changed : random.below(256));
        }
    }
  }
  return text;
}

bool readNumber(std::string_view text, std::uint64_t& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

void collect(const std::filesystem::path& path, std::vector<std::filesystem::path>& files) {
  if (!std::filesystem::is_directory(path)) {
    files.push_back(path);
    return;
  }
  for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
    if (entry.is_regular_file() && entry.file_size() <= kLargestSeed) {
      files.push_back(entry.path());
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::uint64_t runs = 0;
  std::uint64_t seed = 1;
  std::uint64_t seconds = 0;
  std::vector<std::filesystem::path> files;
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument.starts_with("--")) {
      const std::size_t equals = std::min(argument.find('='), argument.size() - 1);
      const std::string_view name = argument.substr(0, equals);
      std::uint64_t* number = name == "--runs"      ? &runs
                              : name == "--seed"    ? &seed
                              : name == "--seconds" ? &seconds
                                                    : nullptr;
      if (number == nullptr || !readNumber(argument.substr(equals + 1), *number)) {
        std::fprintf(stderr, "fuzz: unknown argument %s\n", argv[i]);
        return 2;
      }
      continue;
    }
    collect(argument, files);
  }
  // Folders are listed in no particular order; the inputs made must not depend on it.
  std::sort(files.begin(), files.end());

  for (const int signalNumber : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL}) {
    signal(signalNumber, report);
  }

  std::vector<std::string> seeds;
  for (const std::filesystem::path& path : files) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
      std::fprintf(stderr, "fuzz: cannot read %s\n", path.c_str());
      return 2;
    }
    seeds.emplace_back(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
    std::snprintf(currentInput, sizeof(currentInput), "%s", path.c_str());
    runOne(seeds.back());
  }
  if (seeds.empty()) {
    seeds.emplace_back();
  }

  Random random(seed);
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  std::uint64_t run = 0;
  for (; run < runs && (seconds == 0 || std::chrono::steady_clock::now() < end); ++run) {
    const std::string input = mutated(seeds, random);
    std::snprintf(currentInput, sizeof(currentInput), "made input %llu of seed %llu",
                  static_cast<unsigned long long>(run), static_cast<unsigned long long>(seed));
    runOne(input);
  }
  std::printf("fuzz: %zu files and %llu made inputs\n", files.size(), static_cast<unsigned long long>(run));
  return 0;
}
