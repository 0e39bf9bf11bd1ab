#include "zeltbraidwerk/linear/search/internal/light_sums.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/linear/search/internal/tuning.h"

namespace zelt::braidwerk::internal {
namespace {

/// What the search among the pairs reads: `words` words a line.
struct PairTable {
  const Word* lines;
  int count;
  const std::uint32_t* heads;
  const Word* sums;
  int first_bit;
  Word key_mask;
};

/// The number of a line and the place of a pair in the table; -1 for none.
struct Addition {
  int weight;
  int line;
  int pair;
};

template <int words>
[[gnu::always_inline]] inline int weight_of_sum(const Word* a, const Word* b) {
  int weight = 0;
  for (int w = 0; w < words; ++w) weight += std::popcount(a[w] ^ b[w]);
  return weight;
}

/// The lightest way to make `sum` lighter than best->weight by up to one line and one pair.
template <int words>
[[gnu::always_inline]] inline void find_addition(const PairTable& table, const Word* sum,
                                                 Addition* best) {
  for (int k = -1; k < table.count; ++k) {
    Word rest[words];
    int weight = k < 0 ? 0 : 1;
    for (int w = 0; w < words; ++w) {
      rest[w] = k < 0 ? sum[w] : sum[w] ^ table.lines[k * words + w];
      weight += std::popcount(rest[w]);
    }
    if (weight < best->weight) *best = {weight, k, -1};
    const auto key = static_cast<std::size_t>((rest[0] >> table.first_bit) & table.key_mask);
    const auto end = static_cast<std::ptrdiff_t>(table.heads[key + 1]);
    const int others = k < 0 ? 2 : 3;
    for (std::ptrdiff_t p = table.heads[key]; p < end; ++p) {
      const int with_pair = others + weight_of_sum<words>(rest, table.sums + p * words);
      if (with_pair < best->weight) *best = {with_pair, k, static_cast<int>(p)};
    }
  }
}

ZELTBRAIDWERK_CLONES
void find_addition_of_one_word(const PairTable& table, const Word* sum, Addition* best) {
  find_addition<1>(table, sum, best);
}
ZELTBRAIDWERK_CLONES
void find_addition_of_two_words(const PairTable& table, const Word* sum, Addition* best) {
  find_addition<2>(table, sum, best);
}

bool has(const Word* line, int bit) {
  return ((line[bit / word_bits] >> (bit % word_bits)) & 1) != 0;
}

/// Adds `rest` to all lines that have the bit.
void add_where(std::vector<Word>& lines, int words, int bit, const Word* rest) {
  for (std::size_t k = 0; k < lines.size(); k += static_cast<std::size_t>(words)) {
    if (!has(&lines[k], bit)) continue;
    for (int w = 0; w < words; ++w) lines[k + static_cast<std::size_t>(w)] ^= rest[w];
  }
}

std::vector<Word> words_of(const BitMatrix& m, int first_row) {
  if (first_row == m.rows()) return {};
  return {m.row(first_row), m.row(m.rows() - 1) + m.stride()};
}

}  // namespace

LightSums::LightSums(const BitMatrix& vectors, const BitMatrix& sums)
    : dimension_(vectors.cols()),
      words_(vectors.stride()),
      next_(vectors.rows()),
      lines_(words_of(vectors, dimension_)),
      sums_(words_of(sums, 0)),
      units_(words_of(BitMatrix::identity(dimension_), 0)),
      lightest_(static_cast<std::size_t>(sums.rows())),
      is_open_(lightest_.size(), true) {
  for (int k = 0; k < vectors.rows(); ++k) (k < dimension_ ? basis_ : outside_).push_back(k);
}

double LightSums::steps(int outside, int sums) {
  const double count = outside;
  return 1 +
         count * (count / decoding_tuning.pairs_per_step + sums / decoding_tuning.lookups_per_step);
}

void LightSums::add(const Word* vector) {
  outside_.push_back(next_++);
  const std::size_t first = lines_.size();
  lines_.resize(first + static_cast<std::size_t>(words_));
  for_each_bit(vector, words_, [&](int c) {
    for (int w = 0; w < words_; ++w) {
      lines_[first + static_cast<std::size_t>(w)] ^=
          units_[static_cast<std::size_t>(c * words_ + w)];
    }
  });
}

void LightSums::remove(int vector, Rng& rng) {
  auto at = std::ranges::find(outside_, vector) - outside_.begin();
  if (at == std::ssize(outside_)) {
    const auto coefficient = static_cast<int>(std::ranges::find(basis_, vector) - basis_.begin());
    std::vector<std::ptrdiff_t> others;
    for (std::ptrdiff_t k = 0; k < std::ssize(outside_); ++k) {
      if (has(&lines_[static_cast<std::size_t>(k * words_)], coefficient)) others.push_back(k);
    }
    at = others[static_cast<std::size_t>(rng.below(static_cast<int>(others.size())))];
    exchange(static_cast<std::size_t>(at), coefficient);
  }
  std::copy_n(lines_.end() - words_, words_, lines_.begin() + at * words_);
  lines_.resize(lines_.size() - static_cast<std::size_t>(words_));
  outside_[static_cast<std::size_t>(at)] = outside_.back();
  outside_.pop_back();
}

void LightSums::look(Rng& rng, const Accepts& accepts) {
  make_table(rng);
  for (int s = 0; s < static_cast<int>(lightest_.size()); ++s) {
    if (is_open_[static_cast<std::size_t>(s)]) look_at(s, accepts);
  }
  for (int k = 0; k < decoding_tuning.exchanges; ++k) exchange(rng);
}

/// Sorted by counting.
void LightSums::make_table(Rng& rng) {
  const auto count = outside_.size();
  const std::size_t pairs = count * (count - (count > 0 ? 1 : 0)) / 2;
  const int most_bits = std::min(dimension_, word_bits);
  const int bits = std::clamp(
      static_cast<int>(std::bit_width(pairs)) - decoding_tuning.pairs_per_key, 1, most_bits);
  first_bit_ = rng.below(most_bits - bits + 1);
  key_mask_ = low_bits(bits);
  const auto words = static_cast<std::size_t>(words_);
  keys_.resize(count);
  for (std::size_t k = 0; k < count; ++k) {
    keys_[k] = static_cast<std::uint32_t>((lines_[k * words] >> first_bit_) & key_mask_);
  }
  heads_.assign((std::size_t{1} << bits) + 1, 0);
  for (std::size_t a = 0; a < count; ++a) {
    for (std::size_t b = 0; b < a; ++b) ++heads_[(keys_[a] ^ keys_[b]) + 1];
  }
  for (std::size_t key = 1; key < heads_.size(); ++key) heads_[key] += heads_[key - 1];
  places_.assign(heads_.begin(), heads_.end() - 1);
  pairs_.resize(pairs);
  pair_sums_.resize(pairs * words);
  for (std::size_t a = 0; a < count; ++a) {
    for (std::size_t b = 0; b < a; ++b) {
      const std::size_t place = places_[keys_[a] ^ keys_[b]]++;
      pairs_[place] = {static_cast<std::uint16_t>(a), static_cast<std::uint16_t>(b)};
      for (std::size_t w = 0; w < words; ++w) {
        pair_sums_[place * words + w] = lines_[a * words + w] ^ lines_[b * words + w];
      }
    }
  }
}

void LightSums::look_at(int sum, const Accepts& accepts) {
  const auto words = static_cast<std::size_t>(words_);
  const Word* wanted = sums_.data() + static_cast<std::size_t>(sum) * words;
  Lightest& lightest = lightest_[static_cast<std::size_t>(sum)];
  const PairTable table{lines_.data(),     outside(),  heads_.data(),
                        pair_sums_.data(), first_bit_, key_mask_};
  Addition best{lightest.weight, -1, -1};
  if (words_ == 1) {
    find_addition_of_one_word(table, wanted, &best);
  } else {
    find_addition_of_two_words(table, wanted, &best);
  }
  if (best.weight == lightest.weight) return;
  std::vector<int> set;
  std::vector<Word> rest(wanted, wanted + words);
  const auto add = [&](int k) {
    set.push_back(outside_[static_cast<std::size_t>(k)]);
    for (std::size_t w = 0; w < words; ++w)
      rest[w] ^= lines_[static_cast<std::size_t>(k) * words + w];
  };
  if (best.line >= 0) add(best.line);
  if (best.pair >= 0) {
    add(pairs_[static_cast<std::size_t>(best.pair)].a);
    add(pairs_[static_cast<std::size_t>(best.pair)].b);
  }
  for_each_bit(rest.data(), words_,
               [&](int c) { set.push_back(basis_[static_cast<std::size_t>(c)]); });
  if (!accepts || accepts(set)) lightest = {best.weight, std::move(set)};
}

/// A random vector outside takes the place of one in the basis that it has.
void LightSums::exchange(Rng& rng) {
  if (outside_.empty()) return;
  const auto k = static_cast<std::size_t>(rng.below(outside()));
  std::vector<int> ones;
  for_each_bit(&lines_[k * static_cast<std::size_t>(words_)], words_,
               [&](int c) { ones.push_back(c); });
  if (ones.empty()) return;
  exchange(k, ones[static_cast<std::size_t>(rng.below(static_cast<int>(ones.size())))]);
}

/// What leaves the basis has in the new one the coefficients that what enters had in the old one.
void LightSums::exchange(std::size_t outside, int coefficient) {
  const auto words = static_cast<std::size_t>(words_);
  const std::vector<Word> line(&lines_[outside * words], &lines_[outside * words] + words);
  std::vector<Word> rest = line;
  rest[static_cast<std::size_t>(coefficient / word_bits)] ^= Word{1} << (coefficient % word_bits);
  add_where(lines_, words_, coefficient, rest.data());
  add_where(sums_, words_, coefficient, rest.data());
  add_where(units_, words_, coefficient, rest.data());
  std::copy(line.begin(), line.end(), &lines_[outside * words]);
  std::swap(basis_[static_cast<std::size_t>(coefficient)], outside_[outside]);
}

}  // namespace zelt::braidwerk::internal
