#include "zeltbraidwerk/linear/search/internal/device_search.h"

#include <algorithm>
#include <cassert>
#include <functional>
#include <numeric>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/foundations/internal/packed_table.h"
#include "zeltbraidwerk/graphs/internal/hamiltonian_path.h"
#include "zeltbraidwerk/graphs/internal/steiner_gauss.h"
#include "zeltbraidwerk/linear/internal/row_column.h"
#include "zeltbraidwerk/linear/search/internal/device_elimination.h"
#include "zeltbraidwerk/linear/search/internal/device_rewriter.h"
#include "zeltbraidwerk/linear/search/internal/free_search.h"
#include "zeltbraidwerk/linear/search/internal/map_bound.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {

namespace {

/// Windows replaced in the same way; a list with more layers is taken with the odds that a longer
/// block has, for each layer more.
class LayerRewriter {
 public:
  static constexpr Gathering gathering = DeviceRewriter::gathering;
  static constexpr bool judges = true;

  LayerRewriter(DeviceRewriter& windows, const GateList& list, Rng& rng)
      : windows_(windows), rng_(rng), wires_(list.wires()), depth_(depth_of(list.gates, wires_)) {}

  int window_size(Rng& rng) const { return windows_.window_size(rng); }

  bool rewrite(const GateList& list, const Window& window, float uphill, Rng& rng,
               Rewrite& rewrite) {
    uphill_ = uphill;
    return windows_.rewrite(list, window, uphill, rng, rewrite);
  }

  bool accept(const std::vector<Gate>& gates) {
    const int depth = depth_of(gates, wires_);
    for (int more = depth - depth_; more > 0; --more) {
      if (!rng_.chance(uphill_)) return false;
    }
    depth_ = depth;
    return true;
  }

  int length(const GateList& list) const {
    constexpr int layer = 1 << 15;
    return depth_of(list.gates, wires_) * layer + std::min(list.count(), layer - 1);
  }

 private:
  DeviceRewriter& windows_;
  Rng& rng_;
  int wires_;
  int depth_;
  float uphill_ = 0;
};

class Search {
 public:
  Search(const BitMatrix& m, const Task& task, const Effort& effort)
      : m_(m),
        graph_(*task.device),
        task_(task),
        rng_(task.seed, task.stream),
        meter_(effort, task.objective),
        n_(std::min(m.rows(), graph_.size())),
        rewriter_(graph_, most_window_wires, task.most_reach()),
        best_(n_, {}) {
    VertexSet all(n_);
    for (int v = 0; v < n_; ++v) all.insert(v);
    has_circuit_ = is_invertible(m) && is_connected(graph_, all);
  }

  GateList run() {
    if (n_ < 2) return std::move(best_);
    if (has_circuit_) meter_.prove(bound_of_map_on_device(m_, graph_, task_.most_reach()));
    eliminate_at_once();
    if (replace_all()) {
      if (has_circuit_) meter_.prove({best_.count(), layers_to_hold(best_.count(), n_)});
    } else {
      std::uint64_t steps = 12000;
      for (; !meter_.ended() && best_.count() > 0; steps *= 2) cup(steps);
    }
    return std::move(best_);
  }

 private:
  /// Without a search: the answer when there is no time for more. No worse than the plain methods
  /// of these draws, and mostly far better where a greedy run of the beam takes little time.
  void eliminate_at_once() {
    const Draw draw = [this](int low, int high) { return low + rng_.below(high - low + 1); };
    best_ = cleared(false, draw);
    tell();
    const auto plain = [this](bool free) {
      SeededDraw draws(task_.seed, static_cast<std::uint32_t>(task_.stream));
      take(cleared(free, std::ref(draws)));
    };
    plain(false);
    if (task_.most_reach() >= n_ - 1) plain(true);
    if (n_ > most_greedy_wires || !has_circuit_ || meter_.proven()) return;
    eliminate_along_path();
    Rng own(task_.seed,
            ~task_.stream);  // the search goes on with the draws that it would have
    const Effort unlimited;
    Meter meter(unlimited);
    for (const GateList& found :
         eliminate_on_device(m_, graph_, {.vertices = vertices_at_once()}, own, meter)) {
      take(found);
    }
  }

  /// Where a path through all vertices is found soon.
  void eliminate_along_path() {
    Control few;
    few.max_operations = 10'000;
    const HamiltonianSearch walk = find_hamiltonian_path(graph_, few);
    if (walk.outcome != HamiltonianSearch::found) return;
    structures::Graph device(n_);
    graph_.unpack_into(device);
    SeededDraw draws(task_.seed, static_cast<std::uint32_t>(task_.stream));
    FreeCircuit found(n_);
    for (const auto& [control, target] :
         steiner_gauss_ham_path(unpack_table(m_), device, walk.path, std::ref(draws))) {
      found.circuit.gates.emplace_back(control, target);
    }
    found.circuit.reverse();
    take(gate_list(found));
  }

  GateList cleared(bool free, const Draw& draw) const {
    FreeCircuit found(n_);
    row_column_synthesis(m_, graph_, {.free = free}, draw, Control{}, found);
    return gate_list(found);
  }

  static constexpr int most_greedy_wires =
      64;  ///< a greedy run of the beam takes some tenths of a second
  int vertices_at_once() const { return n_ <= 32 ? n_ : 8; }

  /// On few wires all gates fit into one window. True when that gives the shortest circuit.
  bool replace_all() {
    if (n_ > most_window_wires || task_.by_depth() ||
        (task_.most_reach() > 0 && task_.most_reach() < n_ - 1))
      return false;
    Window all;
    all.size = n_;
    std::iota(all.wires.begin(), all.wires.begin() + n_, std::uint16_t{0});
    all.gates = best_.gates;
    all.to_end = (1U << n_) - 1;
    Rewrite rewrite;
    if (!rewriter_.rewrite(best_, all, 0, rng_, rewrite)) return best_.count() < 2;
    GateList shortest = best_;
    shortest.gates = std::move(rewrite.block);
    if (rewrite.renames) {
      shortest.frame =
          best_.frame.renamed([&](End end) { return rewrite.ends[end / 4U][end % 4U]; });
    }
    take(shortest);
    return true;
  }

  /// Some new circuits, each walked from for a while. From the best of them the walk goes on for
  /// longer, and then once more from the best of all.
  void cup(std::uint64_t steps) {
    GateList winner = best_;
    for (int k = 0; k < starts && !meter_.ended(); ++k) {
      GateList fresh = eliminated(steps);
      walk(fresh, steps);
      if (k == 0 || rank(fresh) < rank(winner)) winner = std::move(fresh);
    }
    walk(winner, 2 * steps);
    if (rank(best_) < rank(winner)) winner = best_;
    walk(winner, 4 * steps);
  }

  static constexpr int starts = 4;

  /// By a beam that takes about as long as a walk of `steps`.
  GateList eliminated(std::uint64_t steps) {
    DeviceEliminationOptions options;
    options.vertices = vertices_at_once();
    const double steps_of_one = 0.25 * n_ * n_ * options.vertices;
    options.width =
        static_cast<int>(std::clamp(static_cast<double>(steps) / steps_of_one, 10., 300.));
    auto found = eliminate_on_device(m_, graph_, options, rng_, meter_);
    if (found.empty()) return best_;
    take(found.front());
    return std::move(found.front());
  }

  void walk(GateList& list, std::uint64_t steps) {
    const Cooling cooling = task_.by_depth() ? Cooling{1.0F, 0.1F} : Cooling{2.0F, 0.3F};
    const auto look = [&](const GateList& found, bool) {
      take(found);
      return true;  // equals take over: they lead elsewhere
    };
    if (task_.by_depth()) {
      LayerRewriter layers(rewriter_, list, rng_);
      walk_round(list, layers, steps, cooling, rng_, meter_, look);
    } else {
      walk_round(list, rewriter_, steps, cooling, rng_, meter_, look);
    }
  }

  std::pair<int, int> rank(const GateList& list) const {
    const int depth = depth_of(list.gates, n_);
    return task_.by_depth() ? std::pair(depth, list.count()) : std::pair(list.count(), depth);
  }

  void take(const GateList& list) {
    assert(!has_circuit_ || implements(list));
    if (rank(list) >= rank(best_)) return;
    best_ = list;
    tell();
  }
  bool implements(const GateList& list) const {
    BitMatrix map = BitMatrix::identity(n_);
    for (const Gate& gate : list.gates) {
      if (!graph_.joined(wire_of(gate.a), wire_of(gate.b))) return false;
      map.add_row(wire_of(gate.a), wire_of(gate.b));
    }
    for (int w = 0; w < n_; ++w) {
      const int output = list.frame.output_on(w);
      if (!std::equal(map.row(w), map.row(w) + map.stride(), m_.row(output))) return false;
    }
    return true;
  }

  void tell() { meter_.better(best_.count(), depth_of(best_.gates, n_)); }

  const BitMatrix& m_;
  const BitGraph& graph_;
  const Task& task_;
  Rng rng_;
  Meter meter_;
  int n_;
  DeviceRewriter rewriter_;
  GateList best_;
  bool has_circuit_;
};

}  // namespace

GateList search_cnot_on_device(const BitMatrix& m, const Task& task, const Effort& effort) {
  return Search(m, task, effort).run();
}

}  // namespace zelt::braidwerk::internal
