#include "zeltbraidwerk/clifford/search/internal/state_search.h"

#include <algorithm>
#include <utility>

#include "zeltbraidwerk/clifford/search/internal/state_bound.h"
#include "zeltbraidwerk/clifford/search/internal/state_list.h"
#include "zeltbraidwerk/clifford/search/internal/state_problem.h"
#include "zeltbraidwerk/clifford/search/internal/state_rewriter.h"
#include "zeltbraidwerk/search/internal/depth_judge.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {
namespace {

/// Up to here the greedy run is a matter of milliseconds, and made whatever the effort.
constexpr int few_wires = 64;

/// What the gates of a list join, and so what is entangled where the list is that of a graph.
WireGroups joined_by(const GateList& list) {
  WireGroups groups(list.wires());
  for (const Gate& gate : list.gates) groups.join(wire_of(gate.a), wire_of(gate.b));
  return groups;
}

class Search {
 public:
  Search(const PauliFrame& stabilisers, const Task& task, const Effort& effort)
      : by_depth_(task.by_depth()),
        wires_(stabilisers.qubits()),
        rng_(task.seed, task.stream),
        meter_(effort, task.objective),
        start_(stabilisers),
        shortest_{by_graph(stabilisers), 0} {
    const WireGroups entangled = joined_by(shortest_.list);
    meter_.prove(bound_of_state(stabilisers, entangled.joins(), entangled.largest()));
    shortest_.depth = depth_of(shortest_.list.gates, wires_);
    shallowest_ = shortest_;
  }

  GateList run() {
    report();
    if (is_least()) return wanted().list;
    lighten();
    greedy();
    beam(4);
    for (int round = 0; !meter_.ended() && !is_least(); ++round) {
      const std::uint64_t steps = std::uint64_t{1} << std::min(first_walk + round, 40);
      const int window = round == 0 ? 3 : 4;
      walk(steps, window);
      if (by_depth_) anneal(round % 2 == 0 ? shortest_ : shallowest_, 8 * steps, window);
      renew(4 << std::min(round, 20));
      beam(8 << std::min(round, widest));
    }
    return wanted().list;
  }

 private:
  struct Circuit {
    GateList list;
    int depth;
  };

  static constexpr int first_rounds = 100;
  static constexpr int first_walk = 11;
  static constexpr int widest = 10;

  const Circuit& wanted() const { return by_depth_ ? shallowest_ : shortest_; }

  bool is_least() const {
    return meter_.proven() || (!by_depth_ && shortest_.list.count() <= meter_.bound().count);
  }

  void take(const GateList& list) { take(list, depth_of(list.gates, wires_)); }
  void take(const GateList& list, int depth) {
    const std::pair by_count{list.count(), depth};
    const std::pair by_depth{depth, list.count()};
    const bool shorter = by_count < std::pair(shortest_.list.count(), shortest_.depth);
    const bool shallower = by_depth < std::pair(shallowest_.depth, shallowest_.list.count());
    if (shorter) shortest_ = {list, depth};
    if (shallower) shallowest_ = {list, depth};
    if (by_depth_ ? shallower : shorter) report();
  }
  void report() { meter_.better(wanted().list.count(), wanted().depth); }

  template <class Found>
  void search_from(const StateGroup& group, int width, Meter& meter, Found&& take) {
    StateProblem problem(rng_);
    BeamOptions options;
    options.width = width;
    options.patience = 100;
    BeamSearch<StateProblem> search(problem, options, rng_, meter);
    for (const auto& found : search.run(group)) {
      std::vector<Gate> apart;
      for (const StateProblem::Move& move : found.moves) apart.push_back(move.gate);
      take(backwards(apart, found.state));
    }
  }

  void lighten() {
    for (int k = 0; k < first_rounds && (wires_ <= few_wires || !meter_.ended()); k += 10) {
      start_.lighten(10, rng_);
    }
  }

  void greedy() {
    const Effort own;
    Meter unlimited(own);
    search_from(start_, 1, wires_ <= few_wires ? unlimited : meter_,
                [&](const GateList& list) { take(list); });
  }

  void beam(int width) {
    search_from(start_, width, meter_, [&](const GateList& list) { take(list); });
  }

  void walk(std::uint64_t steps, int window) {
    StateRewriter rewriter(window);
    GateList best = shortest_.list;
    walk_round(best, rewriter, steps, Cooling{}, rng_, meter_, [&](const GateList& list, bool) {
      // Few gates are worth less than few layers, which more effort might have lost again.
      if (!by_depth_ || !meter_.ended()) take(list);
      return false;
    });
  }

  void anneal(const Circuit& from, std::uint64_t steps, int window) {
    anneal_depth(from.list, StateRewriter(window), steps, rng_, meter_,
                 [&](const GateList& list, int depth) { take(list, depth); });
  }

  /// Searches again for what leads up to random gates, from the best circuit on and then from what
  /// comes of it, as long as it is no longer.
  void renew(int tries) {
    GateList now = shortest_.list;
    for (int k = 0; k < tries && now.count() > 1 && !meter_.ended(); ++k) {
      const int cut = 2 + rng_.below(now.count() - 1);
      StateGroup group(stabilisers_behind(now, cut));
      group.lighten(renewed_rounds, rng_);
      search_from(group, 1, meter_, [&](GateList begin) {
        if (begin.count() > cut) return;
        now = continued(std::move(begin), now, cut);
        take(now);
      });
    }
  }
  static constexpr int renewed_rounds = 16;

  bool by_depth_;
  int wires_;
  Rng rng_;
  Meter meter_;
  StateGroup start_;
  Circuit shortest_;
  Circuit shallowest_;
};

bool rows_are_independent(BitMatrix m) {
  for (int r = 0; r < m.rows(); ++r) {
    int pivot = 0;
    while (pivot < m.cols() && !m.get(r, pivot)) ++pivot;
    if (pivot == m.cols()) return false;
    for (int other = r + 1; other < m.rows(); ++other) {
      if (m.get(other, pivot)) m.add_row(r, other);
    }
  }
  return true;
}

}  // namespace

bool stabilise_a_state(const PauliFrame& strings) {
  const int n = strings.qubits();
  if (strings.rows() != n) return false;
  BitMatrix both(n, 2 * n);
  const BitMatrix x = strings.x_planes().transposed();
  const BitMatrix z = strings.z_planes().transposed();
  std::vector<Word> odd(static_cast<std::size_t>(strings.words()));
  for (int r = 0; r < n; ++r) {
    strings.anticommuting_rows(strings, r, odd.data());
    if (std::ranges::any_of(odd, [](Word word) { return word != 0; })) return false;
    for (int q = 0; q < n; ++q) {
      both.set(r, q, x.get(r, q));
      both.set(r, n + q, z.get(r, q));
    }
  }
  return rows_are_independent(std::move(both));
}

StateResult search_state(const PauliFrame& stabilisers, const Task& task, const Effort& effort) {
  Search search(stabilisers, task, effort);
  const GateList list = in_place(search.run());
  return {preparation(list, stabilisers), list.count(), depth_of(list.gates, list.wires())};
}

}  // namespace zelt::braidwerk::internal
