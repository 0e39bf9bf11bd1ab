#include "zeltbraidwerk/clifford/search/internal/state_graph.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/echelon.h"

namespace zelt::braidwerk::internal {
namespace {

void exchange_columns(BitMatrix& a, BitMatrix& b, int q) {
  for (int r = 0; r < a.rows(); ++r) {
    const bool bit = a.get(r, q);
    a.set(r, q, b.get(r, q));
    b.set(r, q, bit);
  }
}

}  // namespace

/// By row operations on the generators such that on every qubit one of two letters, X or else Z,
/// is found in a generator of its own. Where X cannot be, Z can: what commutes with all generators
/// is one of them.
StateGraph::StateGraph(const PauliFrame& stabilisers)
    : edges(stabilisers.z_planes().transposed()),
      own(static_cast<std::size_t>(stabilisers.qubits()), label_x),
      other(own.size(), label_z) {
  BitMatrix letters = stabilisers.x_planes().transposed();
  const int n = std::min(letters.rows(), letters.cols());
  stop_point();
  const std::vector<int> with_x = reduce_to_echelon(letters, edges);
  stop_point();
  if (std::cmp_less(with_x.size(), n)) {
    auto next = with_x.begin();
    for (int q = 0; q < n; ++q) {
      if (next != with_x.end() && *next == q) {
        ++next;
        continue;
      }
      exchange_columns(letters, edges, q);
      std::swap(own[static_cast<std::size_t>(q)], other[static_cast<std::size_t>(q)]);
    }
    reduce_to_echelon(letters, edges);
    stop_point();
  }
  for (int q = 0; q < n; ++q) {
    const auto k = static_cast<std::size_t>(q);
    if (edges.get(q, q)) own[k] ^= other[k];
    edges.set(q, q, false);
  }
}

WireGroups StateGraph::groups() const {
  WireGroups groups(edges.rows());
  each_edge([&](int a, int b) { groups.join(a, b); });
  return groups;
}

Gate StateGraph::play(const GraphMove& move) {
  const auto& [is_edge, to, from] = move;
  if (is_edge) {
    edges.flip(to, from);
    edges.flip(from, to);
  } else {
    edges.add_row(from, to);
    for_each_bit(edges.row(from), edges.stride(), [&](int r) { edges.flip(r, to); });
  }
  return gate_of(move);
}

Gate StateGraph::gate_of(const GraphMove& move) {
  const auto a = static_cast<std::size_t>(move.to);
  const auto b = static_cast<std::size_t>(move.from);
  const Gate gate{end_of(move.to, other[a]), end_of(move.from, move.is_edge ? other[b] : own[b])};
  own[a] ^= other[a];
  if (move.is_edge) {
    own[b] ^= other[b];
  } else {
    other[b] ^= own[b];
  }
  return gate;
}

PauliFrame StateGraph::part(const std::vector<int>& qubits) const {
  const auto size = static_cast<int>(qubits.size());
  PauliFrame state(size, size);
  for (int k = 0; k < size; ++k) {
    const int qubit = qubits[static_cast<std::size_t>(k)];
    const auto q = static_cast<std::size_t>(qubit);
    for (int r = 0; r < size; ++r) {
      const bool joined = edges.get(qubits[static_cast<std::size_t>(r)], qubit);
      if (joined) state.set_letter(r, k, letter_for(other[q]));
    }
    state.set_letter(k, k, letter_for(own[q]));
  }
  return state;
}

}  // namespace zelt::braidwerk::internal
