#pragma once

#include <optional>
#include <string_view>

#include "platform/KRObject.h"
#include "platform/KRString.h"

class KRKeyedUnarchiver;
template <class T>
class KRSharedInstance;

/// The name prefixes (titles) and name suffixes that count as usual, kept in the preferences. Names with others are
/// reported; the user can add them here. What is usual at first depends on the library's language, French or not.
///
/// The shared manager changes in the preferences only what it has changed itself: what another process has added or
/// taken away meanwhile stays so there, though the manager does not see it. A reset, and any other manager, replaces
/// all.
///
/// The lists are not locked: the host changes them on its own thread. A search takes a reference at its start.
class KRNameConstraintManager : public KRObject {
 public:
  /// The shared manager: made on first use from what the preferences hold, else by `init`. It lives as long as the
  /// process. Any thread.
  static KRNameConstraintManager& ShareNameConstrainManager();
  /// Has the next use make the shared manager anew from the preferences, for a host that has put another store in their
  /// place. The former one stays valid, but is the shared one no more; not while a find runs.
  static void reloadShared();

  /// A manager with the defaults of the present language, already saved (written form: `init`).
  static KRRef<KRNameConstraintManager> init();
  /// The manager of a stored archive (written form: `initWithCoder:`). A list that the archive lacks is empty; defaults
  /// are not mixed in.
  static KRRef<KRNameConstraintManager> initWithCoder(KRKeyedUnarchiver& coder);
  /// The manager of archived bytes; nothing when they are none.
  static KRRef<KRNameConstraintManager> unarchive(std::string_view data);

  /// The lists themselves, in the order in which they are kept; valid as long as the manager, changed in place.
  KRStringList& prefixItemArray() noexcept { return prefixItemArray_; }
  KRStringList& suffixItemArray() noexcept { return suffixItemArray_; }

  /// Replaces the content of the list and saves; nothing empties it (written forms: `setPrefixItemArray:`,
  /// `setSuffixItemArray:`).
  void setPrefixItemArray(const KRStringList* items);
  void setSuffixItemArray(const KRStringList* items);

  /// Appends the defaults of the present language to what is there, and does not save.
  void setDefaultPrefixValue();
  void setDefaultSuffixValue();

  /// Goes back to the defaults of one list, respectively of both, and saves once.
  void resetPrefixItemArray();
  void resetSuffixItemArray();
  void resetAll();

  /// Whether the library's texts are the French ones. Found out once a process: a change of language is not seen later.
  static bool isFrenchLanguage();
  /// Has `isFrenchLanguage` find out again, for a host that sets the language after the engine has been used.
  static void forgetLanguage() noexcept;

  /// Writes both lists into the preferences.
  void saveToUserDefault();

  KRText archiveClassName() const override;
  void encodeWithCoder(KRKeyedArchiver& coder) const override;

 private:
  template <class T, class... Arguments>
  friend KRRef<T> krMake(Arguments&&...);
  KRNameConstraintManager() = default;
  static KRSharedInstance<KRNameConstraintManager>& shared();
  static KRRef<KRNameConstraintManager> makeShared();
  static KRRef<KRNameConstraintManager> withDefaults();

  KRRef<KRNameConstraintManager> copy() const;
  /// What is to be stored where `stored` is, or nothing is.
  KRRef<KRNameConstraintManager> mergedInto(const KRRef<KRNameConstraintManager>& stored) const;

  KRStringList prefixItemArray_;
  KRStringList suffixItemArray_;
  bool isShared_ = false;
  /// What the shared manager's lists held when they were read or saved last; nothing for one that replaces what is
  /// stored.
  std::optional<KRStringList> savedPrefixes_;
  std::optional<KRStringList> savedSuffixes_;
};
