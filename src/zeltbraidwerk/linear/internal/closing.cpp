#include "zeltbraidwerk/linear/internal/closing.h"

#include <algorithm>
#include <tuple>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/linear/internal/block_recursion.h"
#include "zeltbraidwerk/search/internal/circuit_size.h"

namespace zelt::braidwerk::internal {
namespace {

using structures::CnotCircuit;

template <class Values>
auto& at(Values& values, int place) {
  return values[static_cast<std::size_t>(place)];
}

/// A circuit whose outputs are on the way to their places: some of its gates have taken a swap of
/// their wires on. A gate is listed with the wires that it has after the swaps before it.
class SwappingCircuit {
 public:
  explicit SwappingCircuit(const FreeCircuit& found)
      : gates_(found.circuit.gates),
        swaps_(gates_.size()),
        perm_(found.perm),
        before_(perm_.size()),
        cycle_(perm_.size()) {
    for (std::size_t r = 0; r < perm_.size(); ++r) at(before_, perm_[r]) = static_cast<int>(r);
    for (std::size_t r = 0; r < perm_.size(); ++r) number_cycle(static_cast<int>(r));
    for (std::size_t r = 0; r < perm_.size(); ++r) misplaced_ += cycle_[r] != static_cast<int>(r);
  }

  int size() const { return static_cast<int>(gates_.size()); }

  /// CNOTs beyond those of the circuit: one for each gate that swaps, three for each swap left.
  int cost() const { return swapping_ + 3 * misplaced_; }
  int swaps_left() const { return misplaced_; }

  /// True when a swap at the gate, or its end, splits a cycle of the permutation in two: one swap
  /// less is left.
  bool helps(int g) const {
    const auto& [a, b] = at(gates_, g);
    return at(cycle_, a) == at(cycle_, b) && a != b;
  }

  /// The gate begins to swap, or ends it. All gates after it change wires, and so do the outputs.
  void toggle(int g) {
    const auto [a, b] = at(gates_, g);
    misplaced_ += helps(g) ? -1 : 1;
    swapping_ += at(swaps_, g) ? -1 : 1;
    at(swaps_, g) = !at(swaps_, g);
    const auto turned = [a = a, b = b](int wire) { return wire == a ? b : wire == b ? a : wire; };
    for (auto later = gates_.begin() + g + 1; later != gates_.end(); ++later) {
      *later = {turned(std::get<0>(*later)), turned(std::get<1>(*later))};
    }
    std::swap(at(before_, a), at(before_, b));
    at(perm_, at(before_, a)) = a;
    at(perm_, at(before_, b)) = b;
    number_cycle(b);
    number_cycle(a);
  }

  /// All single steps that help, from the last gate to the first until there is none.
  void descend() {
    for (bool any = true; any && misplaced_ > 0;) {
      any = false;
      for (int g = size(); g-- > 0;) {
        if (!helps(g)) continue;
        toggle(g);
        any = true;
      }
    }
  }

  FreeCircuit circuit() const {
    FreeCircuit result(static_cast<int>(perm_.size()));
    for (int g = 0; g < size(); ++g) {
      const auto [a, b] = at(gates_, g);
      if (at(swaps_, g)) result.circuit.addGate(b, a);
      result.circuit.addGate(a, b);
    }
    result.perm = perm_;
    return result;
  }

 private:
  /// A cycle bears the number of one of its wires.
  void number_cycle(int first) {
    int x = first;
    do {
      at(cycle_, x) = first;
      x = at(perm_, x);
    } while (x != first);
  }

  std::vector<std::tuple<int, int>> gates_;
  std::vector<char> swaps_;  ///< by gate
  int swapping_ = 0;
  std::vector<int> perm_;
  std::vector<int> before_;  ///< the inverse of perm_
  std::vector<int> cycle_;
  int misplaced_ = 0;  ///< swaps that are left
};

}  // namespace

CnotCircuit close_by_swaps(FreeCircuit found) {
  add_permutation(found.circuit.nbqbits, found.perm.data(), found.circuit.gates);
  return std::move(found.circuit);
}

CnotCircuit close_within_gates(const FreeCircuit& found, const Draw& draw) {
  SwappingCircuit best(found);
  const int least = best.swaps_left();
  best.descend();
  const int steps = best.size() == 0 ? 0 : 8 * found.circuit.nbqbits;
  // Where single steps no longer help, one against the grain can open the way to several that do.
  for (int step = 0; step < steps && best.cost() > least; ++step) {
    SwappingCircuit next = best;
    stop_point();
    next.toggle(draw(0, next.size() - 1));
    next.descend();
    if (next.cost() <= best.cost()) best = std::move(next);
  }
  return close_by_swaps(best.circuit());
}

FreeCircuit closed(FreeCircuit found, synthesis::Objective objective, const Draw& draw) {
  const int n = found.circuit.nbqbits;
  if (std::ranges::is_sorted(found.perm)) return found;
  FreeCircuit result(n);
  result.circuit = close_within_gates(found, draw);
  CnotCircuit by_swaps = close_by_swaps(std::move(found));
  if (is_better(size_of(by_swaps), size_of(result.circuit), objective)) {
    result.circuit = std::move(by_swaps);
  }
  return result;
}

}  // namespace zelt::braidwerk::internal
