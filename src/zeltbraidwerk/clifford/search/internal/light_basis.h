#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"

namespace zelt::braidwerk::internal {

/// Which of many elements of a group generate it, and of which generators each is the product.
///
/// Generators are a basis of a matroid: exchanging the heaviest generator in the product that a
/// lighter element is for that element, as long as there is one, ends at the basis that is the
/// least for every cost that grows with the weight.
class LightBasis {
 public:
  static constexpr Word no_element = ~Word{0};  ///< the weight of a place without one

  LightBasis() = default;
  /// The first elements generate the group. No element has more than `qubits` letters, and there
  /// are no more generators than that.
  LightBasis(int generators, int qubits, std::size_t capacity);

  std::size_t element(int k) const { return elements_[static_cast<std::size_t>(k)]; }
  bool generates(std::size_t e) const { return generates_[e] != 0; }
  Word* parts(std::size_t e) { return parts_.data() + e * words_; }
  const Word* parts(std::size_t e) const { return parts_.data() + e * words_; }

  bool is_least(const std::vector<Word>& weights) const;
  void make_least(const std::vector<Word>& weights);

  /// Generator k is one that nothing is lighter than, so it never changes; from now on elements are
  /// what they are apart from it.
  void finish(int k);

 private:
  const std::vector<Word>& heavier_than(const std::vector<Word>& weights) const;
  std::size_t next_exchange(std::size_t e, const std::vector<Word>& weights,
                            const std::vector<Word>& heavier) const;
  void exchange(std::size_t e, int k);

  int qubits_ = 0;
  std::size_t words_ = 0;
  std::vector<Word> parts_;              // by element: the generators it is the product of
  std::vector<std::uint16_t> elements_;  // by generator
  std::vector<std::uint8_t> generates_;  // by element
};

}  // namespace zelt::braidwerk::internal
