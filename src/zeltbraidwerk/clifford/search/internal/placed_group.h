#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/support_weights.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// A Pauli string on up to 64 wires without its sign.
struct WireString {
  Word x = 0;
  Word z = 0;

  Word support() const { return x | z; }
  int label(int wire) const { return static_cast<int>((x >> wire & 1) | (z >> wire & 1) << 1); }
  WireString operator*(const WireString& other) const { return {x ^ other.x, z ^ other.z}; }
  bool operator==(const WireString&) const = default;
  /// After a gate.
  WireString after(const Gate& gate) const;
};

/// The stabilisers of a state whose qubits stand on the wires of a device: the lightest generators
/// among all products found so far, by their SupportWeights, and some more light products, which a
/// gate may make lighter. The smaller sister of StateGroup, for a weight that is no number of
/// letters.
class PlacedGroup {
 public:
  PlacedGroup() = default;
  /// Strings that stabilise one state; `spare` further products are kept for each of them.
  PlacedGroup(const std::vector<WireString>& generators, int spare, SupportWeights& weights);

  int generators() const { return generators_; }
  const WireString& element(int k) const { return elements_[static_cast<std::size_t>(k)].string; }
  int weight(int k) const { return elements_[static_cast<std::size_t>(k)].weight; }

  /// Light generators are worth most: two thirds for one more of weight.
  static double worth_of(int weight);
  std::uint64_t hash() const;  ///< of the generators, blind to operations on single wires

  /// Gates that are applied without a look at weights, until a generator that has come to one
  /// letter is taken out, and its wire with it.
  /// @{
  void carry(const Gate& gate);
  void finish(int generator, SupportWeights& weights);
  /// @}
  /// Looks for light products in `rounds` random information sets.
  void lighten(int rounds, Rng& rng, SupportWeights& weights);
  /// The same state with wire w renamed to names[w].
  PlacedGroup renamed(const std::vector<int>& names, SupportWeights& weights) const;

 private:
  struct Element {
    WireString string;
    int weight;
  };

  void settle();

  int generators_ = 0;
  int capacity_ = 0;
  std::vector<Element> elements_;  ///< the generators first, ascending by weight; then the others
};

}  // namespace zelt::braidwerk::internal
