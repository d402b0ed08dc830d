#pragma once

#include <cstdint>
#include <vector>

#include "contacts/model/IKRPerson.h"
#include "platform/KRProgress.h"
#include "platform/KRString.h"

/// What keeps two texts from being the same that are nearly so.
enum class KRNearMissReason : uint8_t {
  /// One has text where the other has none.
  Absent,
  Case,
  Marks,
  Spaces,
  Punctuation,
  /// Phone numbers whose last nine digits are the same, but not all digits: one has a country code or other prefix.
  Prefix,
  /// None of these alone: the same characters made of other code points, or several of these that hang together.
  Form,
};

/// Contacts that an issue about several contacts does not find, although their keys are the same but for case, marks,
/// spaces and punctuation (of phone numbers: the same in the last nine digits).
struct KRNearMiss {
  /// One part of a key: a part of the name, the value, or a property.
  struct Part {
    KRString name;
    /// The text that is compared; nothing when it is absent.
    KRString text;
    /// What is left of it when it is compared loosely; nothing or empty when that is nothing.
    KRString folded;
  };
  /// The contacts of one exact key.
  struct Side {
    KRString key;
    std::vector<Part> parts;
    KRPersonArray persons;
  };
  struct Difference {
    KRString part;
    std::vector<KRNearMissReason> reasons;
  };

  KRString issueName;
  KRString foldedKey;
  /// Two or more, in the order in which their first contacts come.
  std::vector<Side> sides;
  /// The parts in which any side differs from the first, and by what, in the order of the parts.
  std::vector<Difference> differences;
};

/// Explains why contacts that look the same are no finding: equality is equality of texts, and this tells what
/// differs. Changes nothing and decides nothing.
class KRNearMissFind {
 public:
  /// Whether `find` knows the issue: duplicate names, exact duplicates, shared phones and shared e-mail addresses.
  static bool canExplain(const KRString& issueName);

  /// The near-misses of an issue in the order of their first contacts; none for an issue that cannot be explained.
  /// Linear in contacts and values. The progress goes from 0 towards 100. Names are compared as the shared
  /// `KRIssueConfig` chooses. Any thread, as long as nobody changes the persons.
  static std::vector<KRNearMiss> find(const KRString& issueName, const KRPersonList* persons,
                                      const KRProgress& progress);
};
