#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/light_basis.h"
#include "zeltbraidwerk/clifford/search/internal/state_kernels.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// What a generator of each weight is worth: half as much for a letter more. Light generators are
/// what counts, at every size; powers of two add up the same on every machine.
inline double weight_worth(std::size_t weight) {
  return std::bit_cast<double>((1023 - std::min<std::uint64_t>(weight, 1022)) << 52);
}

/// The stabilisers of a state or a code without their signs: generators of least weight among all
/// products found so far, and a pool of other light products, which a gate may make lighter.
///
/// Products are found in information sets (E. Prange, "The use of information sets in decoding
/// cyclic codes", IRE Transactions on Information Theory 8 (1962) 5): generators that are made to
/// have one letter each on qubits drawn at random are light, and so are their products of two.
class StateGroup {
 public:
  StateGroup() = default;
  /// Of independent strings that commute: one per qubit for a state, fewer for a code. Signs are
  /// not looked at.
  explicit StateGroup(const PauliFrame& generators);

  int qubits() const { return n_; }
  int generators() const { return generators_; }
  int left() const { return left_; }  ///< generators of more than one letter
  int label(int q) const { return labels_[static_cast<std::size_t>(q)]; }  ///< 0: not alone yet

  int weight(int k) const { return static_cast<int>(weights_[basis_.element(k)]); }
  double worth() const;  ///< of all generators
  /// Calls f(qubit, label) for the letters of generator k.
  template <class F>
  void each_letter(int k, F&& f) const;

  /// What the generators are worth after a gate, and a hash of them, blind to operations on single
  /// qubits.
  struct Outlook {
    double worth;
    std::uint64_t hash;
  };
  Outlook outlook_after(Gate gate) const;

  void apply(Gate gate);

  /// Looks for light products in `rounds` random information sets.
  void lighten(int rounds, Rng& rng);

 private:
  static constexpr int spare = 2;  ///< elements kept for each generator

  std::size_t at(int word, std::size_t e) const {
    return static_cast<std::size_t>(word) * capacity_ + e;
  }
  GateSide side(End end) const;
  void weigh_all_after(Gate gate, std::vector<Word>& weights) const;
  std::uint64_t hash_after(Gate gate, std::size_t e) const;
  void settle();
  bool strip_finished();
  void multiply_letters(std::size_t from, std::size_t to);
  bool has_copy(std::size_t e) const;
  void drop(std::size_t e);
  void insert(const Word* row, int weight);
  void find_place();

  int n_ = 0;
  int generators_ = 0;
  int words_ = 0;             // of a string
  std::size_t capacity_ = 0;  // elements, places without one included
  int left_ = 0;
  std::size_t place_ = 0;  // of the heaviest element that is no generator
  std::vector<Word> x_;    // by word, then by element
  std::vector<Word> z_;
  std::vector<Word> weights_;
  std::vector<std::uint8_t> labels_;
  LightBasis basis_;
};

template <class F>
void StateGroup::each_letter(int k, F&& f) const {
  const std::size_t e = basis_.element(k);
  for (int w = 0; w < words_; ++w) {
    const Word x = x_[at(w, e)];
    const Word z = z_[at(w, e)];
    for (Word rest = x | z; rest != 0; rest &= rest - 1) {
      const int bit = std::countr_zero(rest);
      f(w * word_bits + bit, static_cast<int>((x >> bit & 1) | (z >> bit & 1) << 1));
    }
  }
}

}  // namespace zelt::braidwerk::internal
