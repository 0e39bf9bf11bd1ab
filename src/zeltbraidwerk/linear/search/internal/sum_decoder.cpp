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

/// Vectors by the value of some of their bits.
struct Buckets {
  int first_bit;
  int bits;
  std::vector<std::uint16_t> key;    // by vector
  std::vector<std::uint16_t> start;  // by key, one more at the end
  std::vector<std::uint16_t> sorted;
};

void sort_into(Buckets& buckets, const Word* vectors, int count, int stride) {
  buckets.start.assign((std::size_t{1} << buckets.bits) + 1, 0);
  buckets.key.resize(static_cast<std::size_t>(count));
  buckets.sorted.resize(static_cast<std::size_t>(count));
  for (int k = 0; k < count; ++k) {
    const auto key = static_cast<std::uint16_t>(
        read_bits(vectors + static_cast<std::ptrdiff_t>(k) * stride,
                  static_cast<std::size_t>(buckets.first_bit), buckets.bits));
    buckets.key[static_cast<std::size_t>(k)] = key;
    ++buckets.start[std::size_t{key} + 1];
  }
  for (std::size_t key = 1; key < buckets.start.size(); ++key) {
    buckets.start[key] = static_cast<std::uint16_t>(buckets.start[key] + buckets.start[key - 1]);
  }
  for (int k = count - 1; k >= 0; --k) {
    const std::size_t key = buckets.key[static_cast<std::size_t>(k)];
    buckets.sorted[--buckets.start[key + 1]] = static_cast<std::uint16_t>(k);
  }
  // Each start has moved down to that of the key before.
  std::rotate(buckets.start.begin(), buckets.start.begin() + 1, buckets.start.end());
  buckets.start.back() = static_cast<std::uint16_t>(count);
}

/// The lightest target + a + b among the pairs whose sum is the target's on the bucket bits.
ZELTBRAIDWERK_CLONES void lightest_pair(const Word* vectors, int stride, const Word* target,
                                        unsigned target_key, const std::uint16_t* keys, int count,
                                        const std::uint16_t* start, const std::uint16_t* sorted,
                                        LightSum& best) {
  for (int a = 0; a < count; ++a) {
    const Word* first = vectors + static_cast<std::ptrdiff_t>(a) * stride;
    const unsigned key = keys[a] ^ target_key;
    for (int k = start[key]; k < start[key + 1]; ++k) {
      const int b = sorted[k];
      if (b <= a) continue;
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
    try_sums(rng);
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

void SumDecoder::try_sums(Rng& rng) {
  const Word* target = vector(size());
  const auto count = static_cast<int>(others_.size());
  packed_.resize(others_.size() * static_cast<std::size_t>(stride_));
  LightSum best{best_weight_ == std::numeric_limits<int>::max() ? best_weight_ : best_weight_ - 2,
                -1, -1};
  for (int k = 0; k < count; ++k) {
    const Word* v = vector(others_[static_cast<std::size_t>(k)]);
    std::copy_n(v, stride_, packed_.begin() + static_cast<std::ptrdiff_t>(k) * stride_);
  }
  // Most light sums are 0 on a few coordinates chosen at random, most pairs are not.
  static thread_local Buckets buckets;
  buckets.bits = std::min(bits_, std::max(3, static_cast<int>(std::bit_width(others_.size())) - 2));
  for (int k = 0; k < 2; ++k) {
    buckets.first_bit = rng.below(bits_ - buckets.bits + 1);
    sort_into(buckets, packed_.data(), count, stride_);
    const auto key = static_cast<unsigned>(
        read_bits(target, static_cast<std::size_t>(buckets.first_bit), buckets.bits));
    lightest_pair(packed_.data(), stride_, target, key, buckets.key.data(), count,
                  buckets.start.data(), buckets.sorted.data(), best);
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
