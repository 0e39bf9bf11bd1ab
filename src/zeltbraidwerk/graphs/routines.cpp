#include "zeltbraidwerk/graphs/routines.h"

#include "zeltbraidwerk/graphs/internal/tree_routines.h"

namespace routines {

namespace internal = zelt::braidwerk::internal;
using internal::BitGraph;
using internal::Cnot;
using structures::Gate;
using structures::Graph;

std::vector<Gate> fill_for_fan_in(const Graph& tree, const std::vector<int>& terminals) {
  std::vector<Cnot> cnots;
  internal::fill_for_fan_in(BitGraph(tree), terminals, cnots);
  return internal::to_gates(cnots);
}

std::vector<Gate> empty_for_fan_in(const Graph& tree, int root) {
  std::vector<Cnot> cnots;
  internal::empty_for_fan_in(BitGraph(tree), root, cnots);
  return internal::to_gates(cnots);
}

std::vector<Gate> fan_in_on_tree(const Graph& tree, const std::vector<int>& terminals, int root) {
  const BitGraph edges(tree);
  std::vector<Cnot> cnots;
  internal::fill_for_fan_in(edges, terminals, cnots);
  internal::empty_for_fan_in(edges, root, cnots);
  return internal::to_gates(cnots);
}

std::vector<Gate> fill_tree(const Graph& tree, const std::vector<int>& targets, int root,
                            bool root_is_set) {
  std::vector<Cnot> cnots;
  internal::fill_tree(BitGraph(tree), targets, root, root_is_set, cnots);
  return internal::to_gates(cnots);
}

std::vector<Gate> empty_tree(const Graph& tree, const std::vector<int>& /*targets*/, int root) {
  std::vector<Cnot> cnots;
  internal::empty_tree(BitGraph(tree), root, cnots);
  return internal::to_gates(cnots);
}

}  // namespace routines
