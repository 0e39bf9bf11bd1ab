#pragma once

#include <cstdint>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// What a generator of each weight adds to the cost of a group: 2^24 (1 - 1/w), whole numbers, so
/// that costs are the same on every machine.
constexpr std::int64_t weight_cost(int weight) {
  constexpr std::int64_t one = 1 << 24;
  return weight < 1 ? 0 : one - one / weight;
}

/// The stabilisers of a state without their signs: generators of least weight among all products
/// found so far, and a pool of other light products, which a gate may make lighter.
///
/// Products are found by information sets (E. Prange, "The use of information sets in decoding
/// cyclic codes", IRE Transactions on Information Theory 8 (1962) 5). Each element knows of which
/// generators it is the product; which products are generators is a matroid, so exchanging the
/// heaviest generator that is in a lighter element for it, as long as there is one, ends at a basis
/// that is the least for every cost that grows with the weight.
class ZELTBRAIDWERK_KERNEL_EXPORT StateGroup {
 public:
  StateGroup() = default;
  /// Of independent strings that commute, one a qubit. Signs are not looked at.
  explicit StateGroup(const PauliFrame& generators);

  int qubits() const { return n_; }
  bool done() const { return left_ == 0; }
  int left() const { return left_; }  ///< generators of more than one letter
  std::int64_t cost() const { return cost_; }
  /// The label of the generator that is alone on a qubit; 0 where none is.
  int label(int q) const;

  /// Calls f(qubit, label) for the letters of generator k.
  template <class F>
  void each_letter(int k, F&& f) const {
    const std::size_t e = basis_[static_cast<std::size_t>(k)];
    for (int w = 0; w < words_; ++w) {
      const Word x = x_[at(w, e)];
      const Word z = z_[at(w, e)];
      for (Word rest = x | z; rest != 0; rest &= rest - 1) {
        const int bit = std::countr_zero(rest);
        f(w * word_bits + bit, static_cast<int>((x >> bit & 1) | (z >> bit & 1) << 1));
      }
    }
  }
  int weight(int k) const {
    return static_cast<int>(weights_[basis_[static_cast<std::size_t>(k)]]);
  }

  /// The cost of the group behind a gate, and its hash, blind to what is done on single qubits.
  struct Outlook {
    std::int64_t cost;
    std::uint64_t hash;
  };
  Outlook behind(Gate gate) const;

  void apply(Gate gate);

  /// Looks for light products in `rounds` random information sets.
  void lighten(int rounds, Rng& rng);

 private:
  std::size_t at(int word, std::size_t e) const {
    return static_cast<std::size_t>(word) * capacity_ + e;
  }
  void exchange(std::vector<Word>& parts, std::vector<std::uint16_t>& basis,
                const std::vector<Word>& weights) const;
  void insert(const Word* element, int weight);
  void settle();
  void strip();
  Word heaviest_kept() const;

  int n_ = 0;
  int words_ = 0;             // a string
  std::size_t capacity_ = 0;  // elements, free ones included
  int left_ = 0;
  std::int64_t cost_ = 0;
  // By word, then by element.
  std::vector<Word> x_;
  std::vector<Word> z_;
  std::vector<Word> parts_;             // the generators that an element is the product of
  std::vector<Word> weights_;           // by element; `free` for a place without one
  std::vector<std::uint16_t> basis_;    // generator -> element
  std::vector<std::uint8_t> in_basis_;  // by element
};

}  // namespace zelt::braidwerk::internal
