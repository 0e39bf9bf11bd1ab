#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

/// Light sets of vectors over GF(2) with given sums, one for each sum.
///
/// The vectors are written in a basis of some of them, in which each sum has a set: its
/// coefficients. Up to three vectors outside of the basis are added to it where that makes it
/// lighter; then the basis is changed a little (E. Prange, "The use of information sets in decoding
/// cyclic codes", 1962). Pairs are found in a table by some of their coefficients, which with those
/// of the sum and a third vector must cancel (J. Stern, "A method for finding codewords of small
/// weight", 1989). All sums use one table.
///
/// With K vectors outside of the basis a look at S sums takes time K^2 + S K, and the table
/// 20 K^2 / 2 bytes.
class LightSums {
 public:
  static constexpr int most_dimensions = 128;

  /// Rows of as many columns, up to most_dimensions. The first vectors are the unit vectors, which
  /// are the first basis.
  LightSums(const BitMatrix& vectors, const BitMatrix& sums);

  /// One vector more, with the next number.
  void add(const Word* vector);

  /// One vector less. The others must have all sums.
  void remove(int vector, Rng& rng);

  /// Whether a set can be taken for an answer.
  using Accepts = std::function<bool(const std::vector<int>&)>;

  /// Looks for lighter sets in this basis, then takes some random steps to another one. Of each sum
  /// the lightest set of a look is asked for.
  void look(Rng& rng, const Accepts& accepts = {});

  /// No lighter set is looked for any more.
  void settle(int sum) { is_open_[static_cast<std::size_t>(sum)] = false; }
  /// The set of a sum no longer counts.
  void forget(int sum) { lightest_[static_cast<std::size_t>(sum)] = {}; }

  bool has_set(int sum) const { return weight(sum) < std::numeric_limits<int>::max(); }
  int weight(int sum) const { return lightest_[static_cast<std::size_t>(sum)].weight; }
  /// The vectors of the lightest set so far.
  const std::vector<int>& set(int sum) const {
    return lightest_[static_cast<std::size_t>(sum)].vectors;
  }

  /// Vectors outside of the basis.
  int outside() const { return static_cast<int>(outside_.size()); }
  /// About what a look takes, in steps of a walk.
  static double steps(int outside, int sums);

 private:
  struct Pair {
    std::uint16_t a;
    std::uint16_t b;
  };
  struct Lightest {
    int weight = std::numeric_limits<int>::max();
    std::vector<int> vectors;
  };

  void make_table(Rng& rng);
  void look_at(int sum, const Accepts& accepts);
  void exchange(Rng& rng);
  void exchange(std::size_t outside, int coefficient);

  int dimension_;
  int words_;
  int next_;                  // number of a vector
  std::vector<int> basis_;    // the vectors of the basis, by coefficient
  std::vector<int> outside_;  // the others
  std::vector<Word> lines_;   // coefficients of the others
  std::vector<Word> sums_;    // and of the sums
  std::vector<Word> units_;   // and of the unit vectors
  std::vector<Lightest> lightest_;
  std::vector<bool> is_open_;
  // Pairs of vectors outside, in the order of the keys of their sums.
  int first_bit_ = 0;
  Word key_mask_ = 0;
  std::vector<std::uint32_t> keys_;   // of lines
  std::vector<std::uint32_t> heads_;  // by key
  std::vector<std::uint32_t> places_;
  std::vector<Pair> pairs_;
  std::vector<Word> pair_sums_;
};

}  // namespace zelt::braidwerk::internal
