#include "app/Setting.h"

#include <algorithm>
#include <array>

#include "app/Unusable.h"
#include "issues/KRIssueConfig.h"
#include "issues/KRNameConstraintManager.h"

namespace {

/// The parts of a name that are compared when looking for contacts of the same name.
class NameParts : public Setting {
 public:
  std::string_view word() const override { return "duplicate-names"; }
  std::string_view key() const override { return "duplicateNameParts"; }
  std::string_view title() const override { return "Name parts compared for duplicate names"; }

  TextList values() const override {
    TextList parts;
    for (const Part& part : kParts) {
      if ((KRIssueConfig::shareObject().duplicateNameScanSetting() & part.bit) != 0) parts.emplace_back(part.name);
    }
    return parts;
  }

  TextList valuesOf(const std::string& word) const override {
    TextList parts;
    for (size_t start = 0; start <= word.size();) {
      const size_t comma = std::min(word.find(',', start), word.size());
      if (comma > start) parts.push_back(word.substr(start, comma - start));
      start = comma + 1;
    }
    for (const std::string& part : parts) bitOf(part);
    return parts;
  }

  void check(const TextList& values) const override {
    for (const std::string& value : values) bitOf(value);
    if (values.empty()) throw Unusable("at least one part of a name has to be compared: first, middle or last");
  }

  void set(const TextList& values) const override {
    int64_t bits = 0;
    for (const std::string& value : values) bits |= bitOf(value);
    KRIssueConfig::shareObject().setDuplicateNameScanSetting(bits);
  }

  void reset() const override { KRIssueConfig::shareObject().setDuplicateNameScanSetting(7); }

 private:
  struct Part {
    std::string_view name;
    int64_t bit;
  };
  static constexpr std::array<Part, 3> kParts = {{{"first", 1}, {"middle", 2}, {"last", 4}}};

  static int64_t bitOf(std::string_view name) {
    for (const Part& part : kParts) {
      if (part.name == name) return part.bit;
    }
    throw Unusable("\"" + std::string(name) + "\" is no part of a name; the parts are: first, middle, last");
  }
};

/// One of the two lists of texts that count as usual around a name.
class AllowedList : public Setting {
 public:
  using Manager = KRNameConstraintManager;

  AllowedList(std::string_view word, std::string_view title, KRStringList& (Manager::*list)() noexcept,
              void (Manager::*set)(const KRStringList*), void (Manager::*reset)())
      : word_(word), title_(title), list_(list), set_(set), reset_(reset) {}

  std::string_view word() const override { return word_; }
  std::string_view key() const override { return word_; }
  std::string_view title() const override { return title_; }

  TextList values() const override {
    TextList texts;
    for (const KRString& each : (manager().*list_)()) texts.emplace_back(each.view());
    return texts;
  }

  TextList valuesOf(const std::string& word) const override { return {word}; }

  void check(const TextList& values) const override {
    if (std::find(values.begin(), values.end(), "") != values.end()) {
      throw Unusable("an empty text cannot be one of the " + std::string(word_));
    }
  }

  void set(const TextList& values) const override {
    KRStringList texts;
    for (const std::string& value : values) texts.emplace_back(value);
    (manager().*set_)(&texts);
  }

  void reset() const override { (manager().*reset_)(); }

 private:
  static Manager& manager() { return Manager::ShareNameConstrainManager(); }

  std::string_view word_;
  std::string_view title_;
  KRStringList& (Manager::*list_)() noexcept;
  void (Manager::*set_)(const KRStringList*);
  void (Manager::*reset_)();
};

std::vector<std::unique_ptr<Setting>> makeAll() {
  using Manager = KRNameConstraintManager;
  std::vector<std::unique_ptr<Setting>> all;
  all.push_back(std::make_unique<NameParts>());
  all.push_back(std::make_unique<AllowedList>("prefixes", "Usual name prefixes", &Manager::prefixItemArray,
                                              &Manager::setPrefixItemArray, &Manager::resetPrefixItemArray));
  all.push_back(std::make_unique<AllowedList>("suffixes", "Usual name suffixes", &Manager::suffixItemArray,
                                              &Manager::setSuffixItemArray, &Manager::resetSuffixItemArray));
  return all;
}

}  // namespace

const std::vector<std::unique_ptr<Setting>>& Setting::all() {
  static const std::vector<std::unique_ptr<Setting>> settings = makeAll();
  return settings;
}

const Setting& Setting::named(std::string_view word) {
  std::string words;
  for (const auto& setting : all()) {
    if (setting->word() == word) return *setting;
    words += (words.empty() ? "" : ", ") + std::string(setting->word());
  }
  throw Unusable("there is no setting named \"" + std::string(word) + "\"; the settings are: " + words);
}
