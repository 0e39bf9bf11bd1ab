#include "zeltbraidwerk/linear/search/internal/device_elimination.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/linear/search/internal/leaving_wires.h"
#include "zeltbraidwerk/linear/search/internal/light_line.h"
#include "zeltbraidwerk/linear/search/internal/line_tree.h"
#include "zeltbraidwerk/linear/search/internal/tuning.h"
#include "zeltbraidwerk/linear/search/internal/wire_rings.h"
#include "zeltbraidwerk/linear/search/internal/wire_set.h"
#include "zeltbraidwerk/search/internal/beam.h"

namespace zelt::braidwerk::internal {

namespace {

/// An estimate of the gates that the sum of two lines will take: 2 D - 1 for each wire, where D is
/// how much farther away it is than the nearest ring before it that has wires of the sum. Some
/// number from `limit` on where it is not below that.
ZELTBRAIDWERK_CLONES int cost_of_sum(const Word* line, const Word* added, const Word* left,
                                     const Word* rings, int count, int stride, int limit) {
  int cost = 0;
  int gap = 1;
  for (int k = 0; k < count && cost < limit; ++k, rings += stride) {
    int wires = 0;
    for (int w = 0; w < stride; ++w) {
      wires += std::popcount((line[w] ^ added[w]) & left[w] & rings[w]);
    }
    cost += wires * (2 * gap - 1);
    gap = wires > 0 ? 1 : gap + 1;
  }
  return cost;
}

/// Kinds of lines: rows of M, its columns, rows of N, its columns, where N is the inverse of the
/// transpose. Where line i of M gains line j, line j of N gains line i.
enum Kind { row, column, inverse_row, inverse_column };
constexpr int crossing(int kind) {
  return kind ^ 1;
}
constexpr int dual(int kind) {
  return kind ^ 2;
}

/// Line `to` of a side gains line `from`: rows on side 0, columns on side 1.
struct Addition {
  int side;
  int to;
  int from;
};

/// The problem for the beam.
template <int W>
class Elimination {
 public:
  struct State {
    std::vector<WireSet<W>> lines;  // those of kind k from k * n on
    WireSet<W> left;
    int gates = 0;
  };
  /// How a line is cleared.
  struct Clearing {
    LineSum sum;  // added to it before
    std::uint8_t kind;
  };
  struct Move {
    std::uint64_t hash;
    std::uint64_t seed;
    std::uint16_t vertex;
    Clearing first;
    Clearing second;
  };

  Elimination(const BitGraph& graph, const DeviceEliminationOptions& options)
      : n_(graph.size()),
        clearings_(static_cast<std::size_t>(options.clearings)),
        weight_left_(device_weight_left(n_)),
        near_(static_cast<std::size_t>(n_)),
        leaving_(graph, options.vertices) {
    for (int v = 0; v < n_; ++v) {
      graph.for_each_neighbour(v, [&](int w) { near_[static_cast<std::size_t>(v)].insert(w); });
    }
  }

  State start(const BitMatrix& m) const {
    State state;
    state.lines.resize(4 * static_cast<std::size_t>(n_));
    const BitMatrix inverted = inverse(m);
    const BitMatrix kinds[] = {m, m.transposed(), inverted.transposed(), inverted};
    for (int kind = 0; kind < 4; ++kind) {
      for (int k = 0; k < n_; ++k) {
        std::copy_n(kinds[kind].row(k), words_for(n_), line(state, kind, k).words.begin());
      }
    }
    for (int v = 0; v < n_; ++v) state.left.insert(v);
    return state;
  }

  template <class Sink>
  void children(const State& state, Rng& rng, Sink&& sink) {
    find_beginnings(state, rng);
    int drawn = -1;
    WireSet<W> left;
    for (const Beginning& begin : beginnings_) {
      stop_point();
      const int v = begin.vertex;
      if (v != drawn) {
        drawn = v;
        left = state.left;
        left.erase(v);
        rings_.draw(near_, left);
      }
      once_ = state;
      clear(once_, begin.clearing, v, begin.seed, nullptr);
      const int first = begin.clearing.kind;
      for (const int kind : {crossing(first), dual(first)}) {
        const Clearing second = lightest(once_, kind, v, ~begin.seed).first;
        twice_ = once_;
        clear(twice_, second, v, ~begin.seed, nullptr);
        twice_.left = left;
        const double score = twice_.gates + weight_left_ * cost_left(twice_);
        sink(score, Move{hash_of(twice_), begin.seed, begin.vertex, begin.clearing, second});
      }
    }
  }

  std::uint64_t hash(const State&, const Move& move) const { return move.hash; }
  bool done(const State& state) const { return state.left.empty(); }
  void make(State& state, const Move& move) { make(state, move, nullptr); }

  /// The columns' additions come first, then those of the rows in reverse.
  GateList circuit(State state, const std::vector<Move>& moves) {
    std::vector<Addition> additions;
    for (const Move& move : moves) make(state, move, &additions);
    std::vector<Gate> gates;
    for (const Addition& add : additions) {
      if (add.side == 1) gates.push_back(cnot(add.to, add.from));
    }
    for (auto add = additions.rbegin(); add != additions.rend(); ++add) {
      if (add->side == 0) gates.push_back(cnot(add->from, add->to));
    }
    return {n_, std::move(gates)};
  }

 private:
  struct Beginning {
    std::uint64_t seed;
    std::uint16_t vertex;
    Clearing clearing;
    int gates;
  };

  /// The vertices that may go, and the lines of each that may be cleared first: those of the fewest
  /// gates, vertex by vertex.
  void find_beginnings(const State& state, Rng& rng) {
    beginnings_.clear();
    for (const int v : leaving_.of(near_, state.left, rng)) {
      const std::uint64_t seed = rng.next();
      for (int kind = 0; kind < 4; ++kind) {
        const auto& [clearing, gates] = lightest(state, kind, v, seed);
        beginnings_.push_back({seed, static_cast<std::uint16_t>(v), clearing, gates});
      }
    }
    if (beginnings_.size() <= clearings_) return;
    std::ranges::stable_sort(beginnings_, {}, &Beginning::gates);
    beginnings_.resize(clearings_);
    std::ranges::stable_sort(beginnings_, {}, &Beginning::vertex);
  }

  /// The best clearing of line v of a kind, and its gates.
  std::pair<Clearing, int> lightest(const State& state, int kind, int v, std::uint64_t seed) {
    const WireSet<W>* lines = state.lines.data() + static_cast<std::ptrdiff_t>(kind) * n_;
    const auto found = light_.find(lines, v, near_, state.left, seed);
    return {{found.sum, static_cast<std::uint8_t>(kind)}, found.gates};
  }

  WireSet<W>& line(State& state, int kind, int k) const {
    return state.lines[static_cast<std::size_t>(kind * n_ + k)];
  }

  void make(State& state, const Move& move, std::vector<Addition>* additions) {
    clear(state, move.first, move.vertex, move.seed, additions);
    clear(state, move.second, move.vertex, ~move.seed, additions);
    state.left.erase(move.vertex);
  }

  /// Leaves line v of a kind a single one, at v: adds others to it, then clears it by additions of
  /// the lines that cross it, which set it along a tree and clear it from the leaves.
  void clear(State& state, const Clearing& clearing, int v, std::uint64_t seed,
             std::vector<Addition>* additions) {
    const int kind = clearing.kind;
    const LineSum& sum = clearing.sum;
    for (std::size_t k = sum.count; k-- > 0;) add(state, kind, sum.to[k], sum.from[k], additions);
    if (sum.count > 0) follow(state, kind);
    WireSet<W> bits = line(state, kind, v) & state.left;
    const auto& edges = tree_.grow(bits, v, near_, state.left, seed);
    if (edges.empty()) return;
    const int own = crossing(kind);
    for (auto edge = edges.rbegin(); edge != edges.rend(); ++edge) {
      if (bits.contains(edge->parent)) continue;
      bits.insert(edge->parent);
      add(state, own, edge->parent, edge->child, additions);
    }
    for (auto edge = edges.rbegin(); edge != edges.rend(); ++edge) {
      add(state, own, edge->child, edge->parent, additions);
    }
    follow(state, own);
  }

  /// Line `to` of a kind gains line `from`. The lines that cross them are to follow.
  void add(State& state, int kind, int to, int from, std::vector<Addition>* additions) {
    line(state, kind, to) ^= line(state, kind, from);
    line(state, dual(kind), from) ^= line(state, dual(kind), to);
    ++state.gates;
    if (additions != nullptr) {
      additions->push_back(kind < 2 ? Addition{kind, to, from} : Addition{kind - 2, from, to});
    }
  }
  void follow(State& state, int kind) {
    for (const int changed : {kind, dual(kind)}) {
      transpose(&line(state, changed, 0), &line(state, crossing(changed), 0), n_);
    }
  }

  /// Of all lines, each alone or with that of a wire beside its own: whichever is lighter.
  int cost_left(const State& state) const {
    static constexpr WireSet<W> none{};
    int cost = 0;
    state.left.for_each([&](int v) {
      const WireSet<W> beside = near_[static_cast<std::size_t>(v)] & state.left;
      for (int kind = 0; kind < 4; ++kind) {
        const WireSet<W>* lines = state.lines.data() + static_cast<std::ptrdiff_t>(kind) * n_;
        const auto with = [&](const WireSet<W>& added, int limit) {
          return cost_of_sum(lines[v].words.data(), added.words.data(), state.left.words.data(),
                             rings_.of(v), rings_.count(v), W, limit);
        };
        int least = with(none, std::numeric_limits<int>::max());
        beside.for_each([&](int u) { least = std::min(least, 1 + with(lines[u], least - 1)); });
        cost += least;
      }
    });
    return cost;
  }

  std::uint64_t hash_of(const State& state) const {
    std::uint64_t hash = 0;
    for (int r = 0; r < n_; ++r) {
      for (const Word word : state.lines[static_cast<std::size_t>(r)].words) {
        hash = Rng::mixed(hash ^ word) + 0x9e3779b97f4a7c15u;
      }
    }
    for (const Word word : state.left.words) hash = Rng::mixed(hash ^ word);
    return hash;
  }

  int n_;
  std::size_t clearings_;
  double weight_left_;
  std::vector<WireSet<W>> near_;
  LeavingWires<W> leaving_;
  LightLine<W> light_;
  WireRings<W> rings_;                 // scratch, of what is left after the vertex in question
  LineTree<W> tree_;                   // scratch
  std::vector<Beginning> beginnings_;  // scratch
  State once_;                         // scratch
  State twice_;                        // scratch
};

template <int W>
std::vector<GateList> eliminate(const BitMatrix& m, const BitGraph& graph,
                                const DeviceEliminationOptions& options, Rng& rng, Meter& meter) {
  Elimination<W> problem(graph, options);
  BeamOptions beam;
  beam.width = options.width;
  beam.patience = graph.size() + 1;  // each level brings the end closer
  beam.finishers = options.finishers;
  beam.noise = device_tuning.tie_noise;
  const auto start = problem.start(m);
  std::vector<GateList> found;
  for (const auto& finished : BeamSearch<Elimination<W>>(problem, beam, rng, meter).run(start)) {
    found.push_back(problem.circuit(start, finished.moves));
  }
  return found;
}

}  // namespace

std::vector<GateList> eliminate_on_device(const BitMatrix& m, const BitGraph& graph,
                                          const DeviceEliminationOptions& options, Rng& rng,
                                          Meter& meter) {
  const int n = graph.size();
  if (n > most_eliminated_wires) return {};
  if (n <= 64) return eliminate<1>(m, graph, options, rng, meter);
  if (n <= 128) return eliminate<2>(m, graph, options, rng, meter);
  return eliminate<4>(m, graph, options, rng, meter);
}

}  // namespace zelt::braidwerk::internal
