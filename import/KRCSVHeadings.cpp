#include "import/KRCSVHeadings.h"

#include <string>
#include <string_view>
#include <unordered_map>

#include "import/KRCSVHeadingTable.h"
#include "platform/KRCaseFolding.h"

namespace {

using Heading = KRCSVHeadingTable::Heading;
using Preset = KRCSVHeadingTable::Preset;
using Meaning = KRCSVHeadings::Meaning;

/// Of a number in a heading: as many values as there may be columns can be counted.
constexpr size_t kMostDigits = 6;

struct Known {
  const Heading* heading;
  const Preset* preset;
};

/// The headings of all presets; of one that stands in several, the rows in the presets' order.
const std::unordered_multimap<std::string_view, Known>& table() {
  static const auto* const all = [] {
    auto* made = new std::unordered_multimap<std::string_view, Known>;
    for (const Preset& preset : KRCSVHeadingTable::presets()) {
      for (const Heading& heading : preset.headings) made->insert({heading.text.view(), {&heading, &preset}});
    }
    return made;
  }();
  return *all;
}

/// The row of a heading in the preset, or in the first that has it.
const Known* find(std::string_view text, KRText preset) {
  const auto [first, last] = table().equal_range(text);
  const Known* best = nullptr;
  for (auto row = first; row != last; ++row) {
    if (!preset.isNothing() && !(row->second.preset->name == preset)) continue;
    if (best == nullptr || row->second.preset < best->preset) best = &row->second;
  }
  return best;
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

/// The text without the words at its start or its end, or a null view when they stand at neither.
std::string_view without(std::string_view text, std::string_view words) {
  if (text.size() <= words.size()) return {};
  if (text.starts_with(words) && text[words.size()] == ' ') return text.substr(words.size() + 1);
  if (text.ends_with(words) && text[text.size() - words.size() - 1] == ' ') {
    return text.substr(0, text.size() - words.size() - 1);
  }
  return {};
}

Meaning meaning(const Known& known, uint32_t number, KRText label) {
  const KRCSVTarget target = *KRCSVTarget::named(known.heading->target);
  const KRText own = known.heading->label;
  KRString whole(own.isNothing() ? label : own);
  // "home fax" is one label, as cards have it.
  if (!own.isNothing() && !label.isNothing() && own != label) whole = krConcat({label, " ", own});
  // Elsewhere a number counts lines of an address or places of equal rank.
  const bool tiesColumns = known.preset->name == "numbered-pairs" || known.preset->name == "section-columns";
  return {target, whole, tiesColumns ? number : 0, known.preset->name};
}

/// What a heading means that says its label in words: "Home Phone 2", "Straße geschäftlich 3", "Privat: Ort".
std::optional<Meaning> labelled(std::string_view text, uint32_t number, KRText preset) {
  for (const KRCSVHeadingTable::LabelWords& words : KRCSVHeadingTable::labelWords()) {
    std::string_view rest = without(text, words.text.view());
    if (rest.data() == nullptr) {
      // The number may stand behind the label.
      constexpr std::string_view kNumber = " #";
      if (!text.ends_with(kNumber)) continue;
      rest = without(text.substr(0, text.size() - kNumber.size()), words.text.view());
      if (rest.data() == nullptr) continue;
    }
    if (const Known* known = find(trimmed(rest), preset)) return meaning(*known, number, words.label);
    constexpr std::string_view kNumber = " #";
    if (rest.ends_with(kNumber)) {
      if (const Known* known = find(trimmed(rest.substr(0, rest.size() - kNumber.size())), preset)) {
        return meaning(*known, number, words.label);
      }
    }
  }
  return std::nullopt;
}

bool isMark(char32_t c) {
  if (c < 0x80) {
    const bool isWord = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    return !isWord;
  }
  // Spaces, dashes and quotation marks beyond ASCII.
  return c == 0xA0 || c == 0xAB || c == 0xBB || c == 0x3000 || (c >= 0x2000 && c <= 0x206F) || c == 0xFEFF;
}

void appendWord(std::string& to, std::string_view word, uint32_t& number) {
  const bool isNumber = word.find_first_not_of("0123456789") == std::string_view::npos;
  if (!to.empty()) to += ' ';
  if (isNumber && number == 0 && word.size() <= kMostDigits) {
    number = static_cast<uint32_t>(std::stoul(std::string(word)));
    to += '#';
    return;
  }
  to += word;
}

/// Whether a word ends before `c`: at a change between letters and digits, and at a capital behind a small letter.
bool isJoint(char before, char c) {
  const auto isDigit = [](char each) { return each >= '0' && each <= '9'; };
  const auto isSmall = [](char each) { return each >= 'a' && each <= 'z'; };
  if (isDigit(before) != isDigit(c)) return true;
  return isSmall(before) && c >= 'A' && c <= 'Z';
}

}  // namespace

std::string KRCSVHeadings::normalized(KRText heading, uint32_t& number) {
  number = 0;
  const std::string_view text = heading.view();
  std::string spaced;
  for (size_t at = 0; at < text.size();) {
    const size_t start = at;
    const char32_t c = krNextCodePoint(text, at);
    if (isMark(c)) {
      spaced += ' ';
      continue;
    }
    // "iPhone" is one word.
    const bool isSingleLetter = spaced.size() == 1 || (spaced.size() > 1 && spaced[spaced.size() - 2] == ' ');
    if (!spaced.empty() && spaced.back() != ' ' && !isSingleLetter && isJoint(spaced.back(), text[start]))
      spaced += ' ';
    spaced.append(text.substr(start, at - start));
  }
  const KRString lowered = krLower(KRText(std::string_view(spaced)));
  std::string result;
  std::string_view rest = lowered.view();
  while (!(rest = trimmed(rest)).empty()) {
    const std::string_view word = rest.substr(0, rest.find(' '));
    rest.remove_prefix(word.size());
    appendWord(result, word, number);
  }
  for (const std::string_view split : {"e mail", "e mails"}) {
    const size_t at = result.find(split);
    const bool isWord = at != std::string::npos && (at == 0 || result[at - 1] == ' ');
    if (isWord) result.erase(at + 1, 1);
  }
  return result;
}

std::optional<KRCSVHeadings::Meaning> KRCSVHeadings::meaningOf(KRText heading, KRText preset) {
  uint32_t number = 0;
  const std::string text = normalized(heading, number);
  if (text.empty()) return std::nullopt;
  if (const Known* known = find(text, preset)) return meaning(*known, number, {});
  return labelled(text, number, preset);
}

KRStringList KRCSVHeadings::presets() {
  KRStringList names;
  for (const Preset& preset : KRCSVHeadingTable::presets()) names.push_back(preset.name);
  return names;
}
