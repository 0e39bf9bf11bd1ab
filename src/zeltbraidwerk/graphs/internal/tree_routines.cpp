#include "zeltbraidwerk/graphs/internal/tree_routines.h"

#include <deque>
#include <iostream>
#include <stdexcept>

namespace zelt::braidwerk::internal {
namespace {

[[noreturn]] void fail() {
  throw std::logic_error("ooops");
}

[[noreturn]] void fail_to_fill() {
  std::cerr << "Error: Can't fill up this tree!" << std::endl;
  fail();
}

VertexSet vertices_with_edges(const BitGraph& tree) {
  VertexSet result(tree.size());
  for (int v = 0; v < tree.size(); ++v) {
    if (tree.has_edges(v)) result.insert(v);
  }
  return result;
}

/// The smallest member that `accept` takes, or -1.
template <class F>
int first_member(const VertexSet& set, F&& accept) {
  for (int w = 0; w < set.count(); ++w) {
    for (Word rest = set.words()[w]; rest != 0; rest &= rest - 1) {
      const int v = w * word_bits + std::countr_zero(rest);
      if (accept(v)) return v;
    }
  }
  return -1;
}

}  // namespace

std::vector<structures::Gate> to_gates(std::span<const Cnot> cnots) {
  std::vector<structures::Gate> gates;
  gates.reserve(cnots.size());
  for (const Cnot& c : cnots) gates.push_back(structures::Gate::CNOT(c.control, c.target));
  return gates;
}

void fill_for_fan_in(const BitGraph& tree, std::span<const int> terminals, std::vector<Cnot>& out) {
  VertexSet pending = vertices_with_edges(tree);
  VertexSet(tree.size(), terminals).for_each([&](int t) { pending.erase(t); });
  while (!pending.empty()) {
    int target = -1;
    const int v = first_member(pending, [&](int u) {
      target = tree.first_neighbour_outside(u, pending);
      return target >= 0;
    });
    if (v < 0) fail();
    out.push_back({v, target});
    pending.erase(v);
  }
}

void empty_for_fan_in(BitGraph tree, int root, std::vector<Cnot>& out) {
  VertexSet pending = vertices_with_edges(tree);
  if (pending.contains(root)) pending.erase(root);
  const VertexSet none(tree.size());
  while (!pending.empty()) {
    const int v = first_member(pending, [&](int u) { return tree.is_leaf(u); });
    if (v < 0) fail();
    out.push_back({v, tree.first_neighbour_outside(v, none)});
    tree.isolate(v);
    pending.erase(v);
  }
}

void fill_tree(const BitGraph& tree, std::span<const int> targets, int root, bool root_is_set,
               std::vector<Cnot>& out) {
  if (targets.size() == 1) {
    if (root_is_set) return;
    fail_to_fill();
  }
  int start = root;
  if (!root_is_set) {
    start = 0;
    while (start < tree.size() && (start == root || !tree.is_leaf(start))) ++start;
    if (start == tree.size()) fail_to_fill();
  }
  if (!tree.contains(start)) return;
  const VertexSet set(tree.size(), targets);
  VertexSet visited(tree.size());
  visited.insert(start);
  std::vector<int> queue{start};
  for (std::size_t head = 0; head < queue.size(); ++head) {
    const int v = queue[head];
    tree.for_each_neighbour(v, [&](int w) {
      if (visited.contains(w)) return;
      if (!set.contains(w)) out.push_back({v, w});
      if (!root_is_set && w == root) out.push_back({v, root});
      queue.push_back(w);
      visited.insert(w);
    });
  }
}

void empty_tree(BitGraph tree, int root, std::vector<Cnot>& out) {
  std::deque<int> leaves;
  for (int v = 0; v < tree.size(); ++v) {
    if (v != root && tree.is_leaf(v)) leaves.push_back(v);
  }
  VertexSet visited(tree.size());
  while (!leaves.empty()) {
    const int v = leaves.back();
    leaves.pop_back();
    if (!tree.has_edges(v) || visited.contains(v)) continue;
    const int parent = tree.first_neighbour_outside(v, visited);
    if (parent < 0) {
      std::cerr << "Something went wrong when dealing with leaf " << v << std::endl;
      fail();
    }
    out.push_back({parent, v});
    tree.part(parent, v);
    visited.insert(v);
    if (parent != root && tree.is_leaf(parent)) leaves.push_front(parent);
  }
}

}  // namespace zelt::braidwerk::internal
