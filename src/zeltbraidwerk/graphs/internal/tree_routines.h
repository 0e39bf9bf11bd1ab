#pragma once

#include <span>
#include <vector>

#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"

namespace zelt::braidwerk::internal {

struct Cnot {
  int control;
  int target;

  bool operator==(const Cnot&) const = default;
};

std::vector<structures::Gate> to_gates(std::span<const Cnot> cnots);

/// The CNOTs of a fan-in: one for each vertex that is no terminal, and one for each edge.
inline int fan_in_cnots(int vertices, int terminals) {
  return 2 * vertices - terminals - 1;
}

/// The routines of namespace `routines`, which append to `out`. Trees passed by value are consumed.
void fill_for_fan_in(const BitGraph& tree, std::span<const int> terminals, std::vector<Cnot>& out);
void empty_for_fan_in(BitGraph tree, int root, std::vector<Cnot>& out);
void fill_tree(const BitGraph& tree, std::span<const int> targets, int root, bool root_is_set,
               std::vector<Cnot>& out);
void empty_tree(BitGraph tree, int root, std::vector<Cnot>& out);

}  // namespace zelt::braidwerk::internal
