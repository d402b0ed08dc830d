#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

using TextList = std::vector<std::string>;

/// One of the settings that people see and change as a list of texts.
class Setting {
 public:
  virtual ~Setting() = default;

  /// The word for it on the command line, and the key in documents.
  virtual std::string_view word() const = 0;
  virtual std::string_view key() const = 0;
  /// What a person calls it.
  virtual std::string_view title() const = 0;

  virtual TextList values() const = 0;
  /// What a word on the command line stands for: one value, or several. Throws `Unusable` for one that cannot be a
  /// value.
  virtual TextList valuesOf(const std::string& word) const = 0;
  /// Throws `Unusable` when these values cannot be had; nothing changes then.
  virtual void check(const TextList& values) const = 0;
  /// Takes values that `check` let pass, and saves them.
  virtual void set(const TextList& values) const = 0;
  /// Goes back to what came with the program, and saves that.
  virtual void reset() const = 0;

  /// All settings, in the order in which they are shown.
  static const std::vector<std::unique_ptr<Setting>>& all();
  /// Throws `Unusable` with the list of words for one that is none.
  static const Setting& named(std::string_view word);

 protected:
  Setting() = default;
};
