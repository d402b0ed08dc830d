#pragma once

#include <random>
#include <vector>

#include "tests/support/KRPersonSketch.h"

/// Random persons of very few texts, so that equal values and whole equal persons are common.
class KRRandomSketches {
 public:
  explicit KRRandomSketches(uint32_t seed) : random_(seed) {}

  std::vector<KRPersonSketch> list(size_t count, bool withOrganizations = true) {
    std::vector<KRPersonSketch> list;
    for (size_t i = 0; i < count; ++i) {
      // A copy now and then: equal in everything.
      if (!list.empty() && below(6) == 0) {
        list.push_back(list[below(list.size())]);
        continue;
      }
      KRPersonSketch sketch;
      sketch.hasName = below(2) == 0;
      sketch.first = text();
      sketch.middle = below(3) == 0 ? text() : KRString();
      sketch.last = text();
      sketch.company = text();
      sketch.note = below(4) == 0 ? text() : KRString();
      for (size_t n = below(4); n > 0; --n) sketch.phones.push_back(value());
      for (size_t n = below(4); n > 0; --n) sketch.emails.push_back(value());
      sketch.isOrganization = withOrganizations && below(3) == 0;
      list.push_back(sketch);
    }
    return list;
  }

  size_t below(size_t limit) { return random_() % limit; }

 private:
  /// Nothing, empty, or one of a few.
  KRString text() {
    static constexpr KRString kTexts[] = {KRString(), KRString(), ""_kr, "a"_kr, "A"_kr, "b"_kr};
    return kTexts[below(std::size(kTexts))];
  }
  KRString value() {
    static constexpr KRString kValues[] = {"1"_kr, "2"_kr, "3"_kr, "1 "_kr, ""_kr, "4"_kr, "5"_kr};
    return kValues[below(std::size(kValues))];
  }

  std::mt19937 random_;
};
