#include "zeltbraidwerk/clifford/search/internal/device_elimination.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/packed_rows.h"
#include "zeltbraidwerk/clifford/search/internal/reduction.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/linear/search/internal/leaving_wires.h"
#include "zeltbraidwerk/linear/search/internal/wire_rings.h"
#include "zeltbraidwerk/linear/search/internal/wire_set.h"
#include "zeltbraidwerk/linear/search/internal/wire_tree.h"
#include "zeltbraidwerk/search/internal/beam.h"

namespace zelt::braidwerk::internal {
namespace {

/// An estimate of the gates that the three rows of a wire will take: each letter is brought over as
/// many edges as separate it from the next nearest ones, and filling the wires between costs as
/// much again. `planes` are those of X and Z, `apart` words from each other.
ZELTBRAIDWERK_CLONES int cost_of_rows(const Word* planes, std::size_t apart, const Word* left,
                                      const Word* rings, int count, int stride) {
  int cost = 0;
  for (int label = 1; label < 4; ++label) {
    int gap = 1;
    for (int k = 0; k < count; ++k) {
      int letters = 0;
      for (int w = 0; w < stride; ++w) {
        const Word* word = planes + w;
        const Word x = (label & label_x ? word[0] : 0) ^ (label & label_z ? word[2 * apart] : 0);
        const Word z =
            (label & label_x ? word[apart] : 0) ^ (label & label_z ? word[3 * apart] : 0);
        letters += std::popcount((x | z) & left[w] & rings[k * stride + w]);
      }
      cost += letters * (2 * gap - 1);
      gap = letters > 0 ? 1 : gap + 1;
    }
  }
  return cost;
}

constexpr bool anticommute(int a, int b) {
  return a != 0 && b != 0 && a != b;
}

/// The problem for the beam.
template <int W>
class Elimination {
 public:
  using Set = WireSet<W>;
  struct State {
    PackedRows<W> rows;
    Set left;
    int gates = 0;
  };
  struct Move {
    std::uint64_t hash;
    std::uint64_t seed;
    std::uint16_t wire;
    std::uint8_t side;    ///< of the row that is brought down first
    std::uint8_t label;   ///< its label
    std::uint8_t second;  ///< of the row that is watched, and brought down then
    bool crosses;         ///< a row of the other side is brought down in its place
  };
  using Gates = std::vector<OperatorReduction::Move>;

  explicit Elimination(const BitGraph& graph)
      : n_(graph.size()),
        near_(at(n_)),
        leaving_(graph, leaving_on_device(n_)),
        letters_(at(n_)),
        watched_(at(n_)) {
    for (int v = 0; v < n_; ++v) {
      graph.for_each_neighbour(v, [&](int w) { near_[at(v)].insert(w); });
    }
  }

  State start(const OperatorRows& rows) const {
    State state{PackedRows<W>(rows), {}, 0};
    for (int v = 0; v < n_; ++v) state.left.insert(v);
    return state;
  }

  template <class Sink>
  void children(const State& state, Rng& rng, Sink&& sink) {
    for (const int wire : leaving_.of(near_, state.left, rng)) {
      Set rest = state.left;
      rest.erase(wire);
      rings_.draw(near_, rest);
      const std::uint64_t seed = rng.next();
      for (int side = 0; side < 2; ++side) {
        for (int label = 1; label < 4; ++label) {
          stop_point();
          for (const int second : other_labels[label]) {
            Move move{0,
                      seed,
                      static_cast<std::uint16_t>(wire),
                      static_cast<std::uint8_t>(side),
                      static_cast<std::uint8_t>(label),
                      static_cast<std::uint8_t>(second),
                      false};
            once_ = state;
            bring_down(once_, {side, wire, label, 0, second}, seed, nullptr);
            for (const bool crosses : {false, true}) {
              move.crosses = crosses;
              child_ = once_;
              bring_down(child_, second_row(child_, move), ~seed, nullptr);
              child_.left = rest;
              move.hash = hash_of(child_);
              sink(child_.gates + clifford_tuning.weight_left * cost_left(child_), move);
            }
          }
        }
      }
    }
  }

  std::uint64_t hash(const State&, const Move& move) const { return move.hash; }
  bool done(const State& state) const { return state.left.members() < 2; }
  void make(State& state, const Move& move) { make(state, move, nullptr); }

  Gates gates(State state, const std::vector<Move>& moves) {
    Gates gates;
    for (const Move& move : moves) make(state, move, &gates);
    return gates;
  }

 private:
  struct Row {
    int side;
    int wire;
    int label;
    int kept;     ///< the letter on its own wire of a row that is to stay as it is, or 0
    int watched;  ///< label of a row of the same wire that had better become light, or 0
  };

  static std::size_t at(int k) { return static_cast<std::size_t>(k); }

  void make(State& state, const Move& move, Gates* gates) {
    bring_down(state, {move.side, move.wire, move.label, 0, move.second}, move.seed, gates);
    bring_down(state, second_row(state, move), ~move.seed, gates);
    state.left.erase(move.wire);
  }

  /// The row (s, i, c) with the letter d alone on its own wire is also the row (1 - s, i, d).
  Row second_row(const State& state, const Move& move) const {
    const int kept = state.rows.letter(move.side, move.wire, move.label, move.wire);
    if (!move.crosses) return {move.side, move.wire, move.second, kept, 0};
    const int other = other_labels[kept][move.seed >> 40 & 1];
    return {1 - move.side, move.wire, other, move.label, 0};
  }

  /// Leaves a row with one letter, on its own wire: along a tree, leaves first.
  void bring_down(State& state, const Row& row, std::uint64_t seed, Gates* gates) {
    const Set x = state.rows.part(row.side, row.wire, row.label, 0);
    const Set z = state.rows.part(row.side, row.wire, row.label, 1);
    Set letters = x;
    letters |= z;
    const auto& edges = tree_.grow(letters & state.left, row.wire, near_, state.left, seed);
    if (edges.empty()) return;
    read(x, z, letters_);
    read(state.rows.part(row.side, row.wire, row.watched, 0),
         state.rows.part(row.side, row.wire, row.watched, 1), watched_);
    TreeDraws draws(Rng::mixed(seed));
    const int side = 1 - row.side;
    for (auto edge = edges.rbegin(); edge != edges.rend(); ++edge) {
      const int parent = edge->parent, child = edge->child;
      if (letters_[at(parent)] == 0) {
        const auto [a, b] = filling(parent, child, draws);
        apply(state, side, parent, a, child, b, gates);
      }
      const int label =
          parent == row.wire && row.kept != 0 ? row.kept : clearing(parent, child, draws);
      apply(state, side, parent, label, child, letters_[at(child)], gates);
    }
    state.rows.carry_over(side);
  }

  void read(const Set& x, const Set& z, std::vector<int>& letters) const {
    for (int v = 0; v < n_; ++v) {
      letters[at(v)] = (x.contains(v) ? label_x : 0) | (z.contains(v) ? label_z : 0);
    }
  }

  /// What a gate with label a on one wire and b on another makes of a row's letters there.
  struct Pair {
    int on_a;
    int on_b;
  };
  static Pair after(Pair letters, int a, int b) {
    if (anticommute(letters.on_a, a) == anticommute(letters.on_b, b)) return letters;
    return {letters.on_a ^ a, letters.on_b ^ b};
  }
  /// The fewer the better: first of all on the child, to which there is no way back.
  static int letters_left(Pair watched) { return 2 * (watched.on_b != 0) + (watched.on_a != 0); }

  /// The label on the parent of a gate that takes the letter off the child.
  int clearing(int parent, int child, TreeDraws& draws) const {
    const auto& choices = other_labels[letters_[at(parent)]];
    const int first = static_cast<int>(draws.next() & 1);
    const auto left_by = [&](int choice) {
      return letters_left(after(watched(parent, child), choices[choice], letters_[at(child)]));
    };
    return choices[left_by(1 - first) < left_by(first) ? 1 - first : first];
  }
  /// The labels of a gate that brings a letter to the parent.
  std::pair<int, int> filling(int parent, int child, TreeDraws& draws) const {
    const std::uint64_t draw = draws.next();
    std::pair<int, int> best;
    int least = 4;
    for (std::uint64_t k = 0; k < 6; ++k) {
      const int a = 1 + static_cast<int>((draw + k) % 3);
      const int b = other_labels[letters_[at(child)]][((draw >> 32) + k) % 2];
      const Pair then = after(watched(parent, child), a, b);
      for (const int clearing : other_labels[a]) {
        const int left = letters_left(after(then, clearing, letters_[at(child)] ^ b));
        if (left < least) {
          least = left;
          best = {a, b};
        }
      }
    }
    return best;
  }
  Pair watched(int parent, int child) const { return {watched_[at(parent)], watched_[at(child)]}; }

  void apply(State& state, int side, int i, int a, int j, int b, Gates* gates) {
    state.rows.multiply(side, i, a, j, b);
    for (std::vector<int>* row : {&letters_, &watched_}) {
      const auto [on_a, on_b] = after({(*row)[at(i)], (*row)[at(j)]}, a, b);
      (*row)[at(i)] = on_a;
      (*row)[at(j)] = on_b;
    }
    ++state.gates;
    if (gates == nullptr) return;
    const End one = end_of(i, a), other = end_of(j, b);
    gates->push_back({side, {std::min(one, other), std::max(one, other)}});
  }

  int cost_left(const State& state) const {
    int cost = 0;
    state.left.for_each([&](int v) {
      for (int side = 0; side < 2; ++side) {
        cost += cost_of_rows(state.rows.lines(side, v), state.rows.apart(), state.left.words.data(),
                             rings_.of(v), rings_.count(v), W);
      }
    });
    return cost;
  }

  std::uint64_t hash_of(const State& state) const {
    std::uint64_t hash = state.rows.hash();
    for (const Word word : state.left.words) hash = Rng::mixed(hash ^ word);
    return hash;
  }

  int n_;
  std::vector<Set> near_;
  LeavingWires<W> leaving_;
  WireRings<W> rings_;        // scratch, of what is left after the wire in question
  WireTree<W> tree_;          // scratch
  std::vector<int> letters_;  // scratch, of the row that is brought down
  std::vector<int> watched_;  // scratch
  State once_;                // scratch
  State child_;               // scratch
};

template <int W>
std::optional<GateList> eliminate(const OperatorRows& rows, const BitGraph& graph, int width,
                                  Rng& rng, Meter& meter) {
  Elimination<W> problem(graph);
  const BeamOptions options{
      .width = width, .patience = graph.size(), .noise = clifford_tuning.device_noise};
  const auto start = problem.start(rows);
  const auto found = BeamSearch<Elimination<W>>(problem, options, rng, meter).run(start);
  if (found.empty()) return std::nullopt;
  const auto gates = problem.gates(start, found[0].moves);
  OperatorRows left = rows;
  for (const auto& [side, gate] : gates) left.multiply(side, gate);
  return circuit_of(left, gates);
}

}  // namespace

std::optional<GateList> eliminate_on_device(const OperatorRows& rows, const BitGraph& graph,
                                            int width, Rng& rng, Meter& meter) {
  const int n = graph.size();
  if (n <= 64) return eliminate<1>(rows, graph, width, rng, meter);
  if (n <= 128) return eliminate<2>(rows, graph, width, rng, meter);
  if (n <= 256) return eliminate<4>(rows, graph, width, rng, meter);
  if (n <= 1024) return eliminate<16>(rows, graph, width, rng, meter);
  return eliminate<most_wires / word_bits>(rows, graph, width, rng, meter);
}

}  // namespace zelt::braidwerk::internal
