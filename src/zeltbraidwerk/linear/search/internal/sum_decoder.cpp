#include "zeltbraidwerk/linear/search/internal/sum_decoder.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <numeric>

#include "zeltbraidwerk/foundations/internal/clones.h"

namespace zelt::braidwerk::internal {

namespace {

struct LightSum {
  int weight;  // of what is left, the one or two vectors not counted
  int first;
  int second;
};

/// The lightest target + a + b over all pairs of `count` vectors of a word.
ZELTBRAIDWERK_CLONES void lightest_pair(const Word* vectors, int count, Word target,
                                        LightSum& best) {
  for (int a = 0; a < count; ++a) {
    const Word left = target ^ vectors[a];
    for (int b = a + 1; b < count; ++b) {
      const int weight = std::popcount(left ^ vectors[b]);
      if (weight < best.weight) best = {weight, a, b};
    }
  }
}

ZELTBRAIDWERK_CLONES void lightest_wide_pair(const Word* vectors, int count, int stride,
                                             const Word* target, LightSum& best) {
  for (int a = 0; a < count; ++a) {
    const Word* first = vectors + static_cast<std::ptrdiff_t>(a) * stride;
    for (int b = a + 1; b < count; ++b) {
      const Word* second = vectors + static_cast<std::ptrdiff_t>(b) * stride;
      int weight = 0;
      for (int w = 0; w < stride; ++w) weight += std::popcount(target[w] ^ first[w] ^ second[w]);
      if (weight < best.weight) best = {weight, a, b};
    }
  }
}

}  // namespace

std::vector<int> SumDecoder::decode(const Word* target, int exchanges, Rng& rng) {
  const int count = size();
  work_ = pool_;
  work_.insert(work_.end(), target, target + stride_);
  basis_.resize(static_cast<std::size_t>(bits_));
  std::iota(basis_.begin(), basis_.end(), 0);
  others_.resize(static_cast<std::size_t>(count - bits_));
  std::iota(others_.begin(), others_.end(), bits_);
  best_weight_ = std::numeric_limits<int>::max();
  best_.clear();
  for (int k = 0;; ++k) {
    try_sums();
    if (k >= exchanges || others_.empty()) return best_;
    for (int j = 0; j < 3; ++j) {
      const int place = rng.below(static_cast<int>(others_.size()));
      const Word* entering = vector(others_[static_cast<std::size_t>(place)]);
      const int ones = weight_of(entering);
      if (ones == 0) continue;
      int skip = rng.below(ones);
      int coordinate = 0;
      for_each_bit(entering, stride_, [&](int c) {
        if (skip-- == 0) coordinate = c;
      });
      exchange(coordinate, place);
    }
  }
}

int SumDecoder::weight_of(const Word* words) const {
  int ones = 0;
  for (int w = 0; w < stride_; ++w) ones += std::popcount(words[w]);
  return ones;
}

/// The vector in others_[place] takes over a coordinate in which it has a one.
void SumDecoder::exchange(int coordinate, int place) {
  const int entering = others_[static_cast<std::size_t>(place)];
  const int leaving = basis_[static_cast<std::size_t>(coordinate)];
  std::vector<Word> change(vector(entering), vector(entering) + stride_);
  const auto word = static_cast<std::size_t>(coordinate / word_bits);
  const Word bit = Word{1} << (coordinate % word_bits);
  change[word] ^= bit;
  const auto rewrite = [&](int k) {
    Word* v = vector(k);
    if ((v[word] & bit) == 0) return;
    for (int w = 0; w < stride_; ++w) v[w] ^= change[static_cast<std::size_t>(w)];
  };
  for (const int k : others_) rewrite(k);
  rewrite(leaving);
  rewrite(size());  // the target
  basis_[static_cast<std::size_t>(coordinate)] = entering;
  others_[static_cast<std::size_t>(place)] = leaving;
}

void SumDecoder::try_sums() {
  const Word* target = vector(size());
  const auto count = static_cast<int>(others_.size());
  packed_.resize(others_.size() * static_cast<std::size_t>(stride_));
  LightSum best{best_weight_ == std::numeric_limits<int>::max() ? best_weight_ : best_weight_ - 2,
                -1, -1};
  for (int k = 0; k < count; ++k) {
    const Word* v = vector(others_[static_cast<std::size_t>(k)]);
    std::copy_n(v, stride_, packed_.begin() + static_cast<std::ptrdiff_t>(k) * stride_);
  }
  if (stride_ == 1) {
    lightest_pair(packed_.data(), count, target[0], best);
  } else {
    lightest_wide_pair(packed_.data(), count, stride_, target, best);
  }
  if (best.first >= 0) keep(best.weight + 2, best.first, best.second);
  if (weight_of(target) < best_weight_) keep(weight_of(target), -1, -1);
  for (int k = 0; k < count; ++k) {
    int ones = 0;
    for (int w = 0; w < stride_; ++w) {
      ones += std::popcount(target[w] ^ packed_[static_cast<std::size_t>(k * stride_ + w)]);
    }
    if (ones + 1 < best_weight_) keep(ones + 1, k, -1);
  }
}

void SumDecoder::keep(int weight, int first, int second) {
  best_weight_ = weight;
  best_.clear();
  std::vector<Word> left(vector(size()), vector(size()) + stride_);
  for (const int k : {first, second}) {
    if (k < 0) continue;
    const int other = others_[static_cast<std::size_t>(k)];
    best_.push_back(other);
    for (int w = 0; w < stride_; ++w) left[static_cast<std::size_t>(w)] ^= vector(other)[w];
  }
  for_each_bit(left.data(), stride_,
               [&](int c) { best_.push_back(basis_[static_cast<std::size_t>(c)]); });
}

}  // namespace zelt::braidwerk::internal
