#include "zeltbraidwerk/clifford/search/internal/device_elimination.h"

#include <algorithm>
#include <cstddef>

namespace zelt::braidwerk::internal {
namespace {

std::size_t at(int k) {
  return static_cast<std::size_t>(k);
}

}  // namespace

DeviceElimination::DeviceElimination(const BitGraph& graph)
    : graph_(graph), distances_(at(graph.size()) * at(graph.size())), parent_(at(graph.size())) {
  const int n = graph.size();
  for (int root = 0; root < n; ++root) {
    VertexSet unmet(n);
    for (int v = 0; v < n; ++v) unmet.insert(v);
    unmet.erase(root);
    std::vector<int> met{root};
    for (std::size_t k = 0; k < met.size(); ++k) {
      const std::size_t first = met.size();
      graph.meet_neighbours(met[k], unmet, met);
      for (std::size_t m = first; m < met.size(); ++m) {
        distances_[at(root) * at(n) + at(met[m])] = distance(root, met[k]) + 1;
      }
    }
  }
}

DeviceElimination::State DeviceElimination::start(OperatorRows rows) const {
  State state{std::move(rows), VertexSet(graph_.size()), graph_.size(), {}};
  for (int v = 0; v < graph_.size(); ++v) state.left.insert(v);
  return state;
}

std::uint64_t DeviceElimination::hash(const State& state, const Move& move) {
  child_ = state;
  make(child_, move);
  std::uint64_t sum = child_.rows.hash();
  child_.left.for_each([&](int v) { sum = Rng::mixed(sum + static_cast<std::uint64_t>(v)); });
  return sum;
}

void DeviceElimination::make(State& state, const Move& move) {
  Rng rng(move.seed, 0);
  const int second = other_labels[move.label][rng.below(2)];
  bring_down(state, move, move.label, 0, rng);
  bring_down(state, move, second, state.rows.label_at(move.side, move.wire, move.label, move.wire),
             rng);
  state.left.erase(move.wire);
  --state.wires_left;
}

/// Of gates so far and of clearing the rest: each letter of a row is brought over as many edges as
/// separate it from the next nearest ones, and filling the wires between costs as much again.
double DeviceElimination::price(const State& state) const {
  std::vector<int> letters_at(at(graph_.size()) + 1);
  int gates = 0;
  state.left.for_each([&](int wire) {
    for (int side = 0; side < 2; ++side) {
      for (int label = 1; label < 4; ++label) {
        std::ranges::fill(letters_at, 0);
        state.left.for_each([&](int other) {
          if (other == wire || state.rows.label_at(side, wire, label, other) == 0) return;
          ++letters_at[at(distance(wire, other))];
        });
        int last = 0;
        for (int far = 1; far <= graph_.size(); ++far) {
          if (letters_at[at(far)] == 0) continue;
          gates += letters_at[at(far)] * (2 * (far - last) - 1);
          last = far;
        }
      }
    }
  });
  return static_cast<double>(state.gates.size()) + clifford_tuning.weight_left * gates;
}

/// A tree of edges from the wire to every letter of the row, each time along a random shortest way
/// to one of the nearest.
void DeviceElimination::grow_tree(const State& state, const Move& move, int label, Rng& rng) {
  const int n = graph_.size();
  std::vector<bool> wanted(at(n)), in_tree(at(n));
  int missing = 0;
  state.left.for_each([&](int v) {
    wanted[at(v)] = v != move.wire && state.rows.label_at(move.side, move.wire, label, v) != 0;
    missing += wanted[at(v)];
  });
  tree_.assign(1, move.wire);
  in_tree[at(move.wire)] = true;
  std::vector<int> from(at(n)), queue, nearest;
  while (missing > 0) {
    std::ranges::fill(from, -1);
    queue = tree_;
    for (const int v : tree_) from[at(v)] = v;
    nearest.clear();
    for (std::size_t first = 0, last = queue.size(); nearest.empty() && first < last;
         first = last, last = queue.size()) {
      // A level in random order, so that ways of equal length are equally likely.
      for (std::size_t k = last; k > first + 1; --k) {
        std::swap(queue[k - 1], queue[first + at(rng.below(static_cast<int>(k - first)))]);
      }
      for (std::size_t k = first; k < last; ++k) {
        graph_.for_each_neighbour(queue[k], [&](int v) {
          if (!state.left.contains(v) || from[at(v)] >= 0) return;
          from[at(v)] = queue[k];
          queue.push_back(v);
          if (wanted[at(v)]) nearest.push_back(v);
        });
      }
    }
    if (nearest.empty()) return;  // not connected
    std::vector<int> way;
    for (int v = nearest[at(rng.below(static_cast<int>(nearest.size())))]; !in_tree[at(v)];
         v = from[at(v)]) {
      way.push_back(v);
    }
    for (auto v = way.rbegin(); v != way.rend(); ++v) {
      parent_[at(*v)] = from[at(*v)];
      in_tree[at(*v)] = true;
      tree_.push_back(*v);
      missing -= wanted[at(*v)];
    }
  }
}

/// Leaves a row with one letter, on its own wire. `kept`, if there is one, is the letter there of a
/// row that is to stay as it is.
void DeviceElimination::bring_down(State& state, const Move& move, int label, int kept, Rng& rng) {
  grow_tree(state, move, label, rng);
  const auto letter = [&](int v) { return state.rows.label_at(move.side, move.wire, label, v); };
  const auto other = [&](int than) { return other_labels[than][rng.below(2)]; };
  for (std::size_t k = tree_.size(); k-- > 1;) {
    const int child = tree_[k];
    const int parent = parent_[at(child)];
    const int to_clear = letter(child);
    if (letter(parent) == 0) {
      apply(state, 1 - move.side, end_of(parent, 1 + rng.below(3)), end_of(child, other(to_clear)));
    }
    const int here = letter(parent);
    apply(state, 1 - move.side,
          end_of(parent, parent == move.wire && kept != 0 ? kept : other(here)),
          end_of(child, letter(child)));
  }
}

void DeviceElimination::apply(State& state, int side, End a, End b) const {
  const Gate gate = wire_of(a) < wire_of(b) ? Gate{a, b} : Gate{b, a};
  state.rows.multiply(side, gate);
  state.gates.push_back({side, gate});
}

}  // namespace zelt::braidwerk::internal
