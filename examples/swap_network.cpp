// How to give the search engine a new problem: SWAP gates on the edges of a grid that
// bring every qubit to its place. It is built within the source tree of the library, as the headers
// of the engine are not installed.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <utility>
#include <vector>

#include "zeltbraidwerk/search/internal/beam.h"

namespace {

using namespace zelt::braidwerk::internal;

/// A problem of a beam search: states, moves with their scores, a hash.
class SwapNetwork {
 public:
  struct State {
    std::vector<int> place_of;  // by vertex: the place for which the qubit there is bound
    int distance = 0;           // of all qubits from their places, together
  };
  struct Move {
    int edge;
  };

  SwapNetwork(int width, int height) : width_(width) {
    for (int v = 0; v < width * height; ++v) {
      if ((v + 1) % width != 0) edges_.emplace_back(v, v + 1);
      if (v + width < width * height) edges_.emplace_back(v, v + width);
    }
  }

  State start(std::vector<int> place_of) const {
    State state{std::move(place_of), 0};
    for (std::size_t v = 0; v < state.place_of.size(); ++v) {
      state.distance += distance(static_cast<int>(v), state.place_of[v]);
    }
    return state;
  }

  const std::pair<int, int>& edge(Move move) const {
    return edges_[static_cast<std::size_t>(move.edge)];
  }

  template <class Sink>
  void children(const State& state, Rng&, Sink&& sink) const {
    for (int e = 0; e < static_cast<int>(edges_.size()); ++e) {
      sink(state.distance + change(state, {e}), Move{e});
    }
  }

  std::uint64_t hash(const State& state, Move move) const {
    State child = state;  // small enough to hash anew; large states carry their hash along
    make(child, move);
    std::uint64_t hash = 0;
    for (const int place : child.place_of) {
      hash = Rng::mixed(hash + static_cast<std::uint64_t>(place) + 1);
    }
    return hash;
  }

  void make(State& state, Move move) const {
    state.distance += change(state, move);
    const auto& [v, w] = edge(move);
    std::swap(state.place_of[static_cast<std::size_t>(v)],
              state.place_of[static_cast<std::size_t>(w)]);
  }

  bool done(const State& state) const { return state.distance == 0; }

 private:
  int distance(int v, int w) const {
    return std::abs(v % width_ - w % width_) + std::abs(v / width_ - w / width_);
  }

  int change(const State& state, Move move) const {
    const auto& [v, w] = edge(move);
    const int a = state.place_of[static_cast<std::size_t>(v)];
    const int b = state.place_of[static_cast<std::size_t>(w)];
    return distance(v, b) + distance(w, a) - distance(v, a) - distance(w, b);
  }

  int width_;
  std::vector<std::pair<int, int>> edges_;
};

}  // namespace

int main() {
  SwapNetwork problem(4, 4);
  std::vector<int> turned(16);  // every qubit is bound for the opposite place
  std::iota(turned.rbegin(), turned.rend(), 0);

  Rng rng(1, 0);  // seed and stream
  Effort effort;
  effort.steps = 1'000'000;
  Meter meter(effort);
  std::size_t last = 1000;
  for (const int width : {1, 10, 100, 1000}) {
    BeamOptions options;
    options.width = width;
    options.noise = 1e-3;
    const auto found =
        BeamSearch<SwapNetwork>(problem, options, rng, meter).run(problem.start(turned));
    if (found.empty()) {
      std::printf("width %4d: not found\n", width);
      continue;
    }
    std::vector<int> qubits = turned;
    for (const auto& move : found[0].moves) {
      const auto& [v, w] = problem.edge(move);
      std::swap(qubits[static_cast<std::size_t>(v)], qubits[static_cast<std::size_t>(w)]);
    }
    for (int v = 0; v < 16; ++v) {
      if (qubits[static_cast<std::size_t>(v)] != v) return 1;
    }
    std::printf("width %4d: %zu swaps\n", width, found[0].moves.size());
    last = found[0].moves.size();
  }
  // 16 qubits are 2 to 6 edges from their places, 64 in all; a swap takes off at most 2.
  return last >= 32 && last <= 40 ? 0 : 1;
}
