#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "zeltbraidwerk/foundations/internal/bool_rows.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

/// A set of up to 64 W wires: a row or a column.
template <int W>
struct WireSet {
  std::array<Word, W> words{};

  bool contains(int v) const {
    return (words[static_cast<std::size_t>(v / word_bits)] >> (v % word_bits)) & 1;
  }
  void insert(int v) {
    words[static_cast<std::size_t>(v / word_bits)] |= Word{1} << (v % word_bits);
  }
  void erase(int v) {
    words[static_cast<std::size_t>(v / word_bits)] &= ~(Word{1} << (v % word_bits));
  }
  bool empty() const {
    Word all = 0;
    for (const Word word : words) all |= word;
    return all == 0;
  }
  int members() const {  ///< how many
    int sum = 0;
    for (const Word word : words) sum += std::popcount(word);
    return sum;
  }
  template <class F>
  void for_each(F&& f) const {
    for_each_bit(words.data(), W, f);
  }
  WireSet& operator^=(const WireSet& other) {
    for (std::size_t w = 0; w < W; ++w) words[w] ^= other.words[w];
    return *this;
  }
  WireSet& operator|=(const WireSet& other) {
    for (std::size_t w = 0; w < W; ++w) words[w] |= other.words[w];
    return *this;
  }
  bool operator==(const WireSet& other) const {
    Word all = 0;
    for (std::size_t w = 0; w < W; ++w) all |= words[w] ^ other.words[w];
    return all == 0;
  }
  friend WireSet operator&(WireSet a, const WireSet& b) {
    for (std::size_t w = 0; w < W; ++w) a.words[w] &= b.words[w];
    return a;
  }
  friend WireSet without(WireSet a, const WireSet& b) {
    for (std::size_t w = 0; w < W; ++w) a.words[w] &= ~b.words[w];
    return a;
  }
};

/// TreeDraws for one clearing, from a seed that is kept with the move, so that it can be made
/// again.
class TreeDraws {
 public:
  explicit TreeDraws(std::uint64_t seed) : state_(seed) {}
  std::uint64_t next() { return Rng::mixed(state_ += 0x9e3779b97f4a7c15u); }

  /// Some member of a set that has one: the next from a random place on.
  template <int W>
  int member(const WireSet<W>& set) {
    const std::uint64_t draw = next();
    auto w = static_cast<int>((draw >> 32) % W);
    while (set.words[static_cast<std::size_t>(w)] == 0) w = (w + 1) % W;
    const Word word = set.words[static_cast<std::size_t>(w)];
    const int shift = static_cast<int>(draw & 63);
    return w * word_bits + ((std::countr_zero(std::rotr(word, shift)) + shift) & 63);
  }

 private:
  std::uint64_t state_;
};

/// to = from transposed, both of n lines.
template <int W>
void transpose(const WireSet<W>* from, WireSet<W>* to, int n) {
  std::array<Word, word_bits> block;
  for (int high = 0; high < n; high += word_bits) {
    for (int wide = 0; wide < n; wide += word_bits) {
      const int height = std::min(word_bits, n - high);
      const int width = std::min(word_bits, n - wide);
      const auto size = std::bit_ceil(static_cast<unsigned>(std::max({height, width, 2})));
      const auto word = static_cast<std::size_t>(wide / word_bits);
      for (std::size_t k = 0; k < size; ++k) {
        block[k] = static_cast<int>(k) < height ? from[high + static_cast<int>(k)].words[word] : 0;
      }
      for (unsigned half = size / 2; half > 0; half /= 2) {
        // Bits whose place has not `half` in it.
        const Word low = ~Word{0} / ((Word{1} << half) + 1);
        for (unsigned k = 0; k < size; k = (k + half + 1) & ~half) {
          const Word swapped = ((block[k] >> half) ^ block[k + half]) & low;
          block[k] ^= swapped << half;
          block[k + half] ^= swapped;
        }
      }
      for (int k = 0; k < width; ++k) {
        to[wide + k].words[static_cast<std::size_t>(high / word_bits)] =
            block[static_cast<std::size_t>(k)];
      }
    }
  }
}

}  // namespace zelt::braidwerk::internal
