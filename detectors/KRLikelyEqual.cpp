#include "detectors/KRLikelyEqual.h"

#include <algorithm>

KRLikelyEqual::KRLikelyEqual(size_t count) {
  index_.reserve(count);
  isShared_.reserve(count);
}

void KRLikelyEqual::add(uint32_t place, uint64_t hash) {
  index_.prefetch(hash);
  block_[count_++] = {hash, place};
  if (count_ == kBlock) addBlock();
}

void KRLikelyEqual::addBlock() {
  if (count_ == 0) return;
  isShared_.resize(std::max<size_t>(isShared_.size(), size_t{block_[count_ - 1].place} + 1));
  for (size_t i = 0; i < count_; ++i) {
    const auto [hash, place] = block_[i];
    const uint32_t known = index_.likely(hash);
    if (known == KRHashIndex::kNone) {
      index_.add(hash, place);
    } else {
      isShared_[known] = true;
      isShared_[place] = true;
    }
  }
  count_ = 0;
}

std::vector<uint32_t> KRLikelyEqual::places() {
  addBlock();
  std::vector<uint32_t> places;
  for (uint32_t place = 0; place < isShared_.size(); ++place) {
    if (isShared_[place]) places.push_back(place);
  }
  return places;
}
