#include "zeltbraidwerk/clifford/search/internal/state_search.h"

#include <algorithm>
#include <utility>

#include "zeltbraidwerk/clifford/search/internal/state_bound.h"
#include "zeltbraidwerk/clifford/search/internal/state_list.h"
#include "zeltbraidwerk/clifford/search/internal/state_problem.h"
#include "zeltbraidwerk/clifford/search/internal/state_rewriter.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/depth_judge.h"
#include "zeltbraidwerk/search/internal/driver.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {
namespace {

/// What the gates of a list join, and so what is entangled where the list is that of a graph.
WireGroups joined_by(const GateList& list) {
  WireGroups groups(list.wires());
  for (const Gate& gate : list.gates) groups.join(wire_of(gate.a), wire_of(gate.b));
  return groups;
}

/// Beams from the state take it apart gate by gate; walks and new beginnings of the circuit in
/// turns make what they find shorter.
class StateSearch : public SearchByBoth<GateList> {
 public:
  StateSearch(const PauliFrame& stabilisers, const Task& task, const Effort& effort)
      : SearchByBoth(task, effort), wires_(stabilisers.qubits()), start_(stabilisers) {
    const GateList by_edges = by_graph(stabilisers);
    const WireGroups entangled = joined_by(by_edges);
    meter_.prove(bound_of_state(stabilisers, entangled.joins(), entangled.largest()));
    offer(by_edges);
    if (task.start != nullptr) offer(*task.start);
  }

  static Schedule schedule() { return state_tuning.walk; }

  /// On few wires a greedy run takes milliseconds.
  void first() {
    if (finished()) return;
    const bool quick = wires_ <= state_tuning.quick_wires;
    for (int k = 0; k < state_tuning.first_sets && (quick || !meter_.ended());
         k += state_tuning.sets_at_once) {
      start_.lighten(state_tuning.sets_at_once, rng_);
    }
    const Effort unlimited;
    Meter own(unlimited);
    take_apart(start_, 1, quick ? own : meter_);
    take_apart(start_, state_tuning.first_width, meter_);
  }

  bool finished() const {
    return meter_.proven() ||
           (!task_.by_depth() && incumbent_.size().count <= meter_.bound().count);
  }

  void round(const Round& round) {
    const StateRewriter rewriter(window_wires(round.number));
    walk(rewriter, round.steps);
    if (task_.by_depth()) {
      anneal_depth(round.number % 2 == 0 ? shortest() : shallowest(), rewriter,
                   state_tuning.anneal_walks * round.steps, rng_, meter_,
                   [this](const GateList& list, int depth) {
                     offer(list, {list.count(), depth}, Origin::certain);
                   });
    }
    renew(state_tuning.renewals << std::min(round.number, state_tuning.most_renewal_doublings));
    take_apart(start_, state_tuning.width << std::min(round.number, state_tuning.most_doublings),
               meter_);
  }

 private:
  using SearchByBoth::offer;
  void offer(const GateList& list) { offer(list, size_of(list), Origin::certain); }

  template <class Found>
  void search_from(const StateGroup& group, int width, Meter& meter, Found&& found) {
    StateProblem problem(rng_);
    const BeamOptions options{.width = width, .patience = state_tuning.patience};
    BeamSearch<StateProblem> search(problem, options, rng_, meter);
    for (const auto& [state, moves] : search.run(group)) {
      std::vector<Gate> apart;
      for (const StateProblem::Move& move : moves) apart.push_back(move.gate);
      found(backwards(apart, state));
    }
  }
  void take_apart(const StateGroup& group, int width, Meter& meter) {
    search_from(group, width, meter, [this](const GateList& list) { offer(list); });
  }

  void walk(StateRewriter rewriter, std::uint64_t steps) {
    GateList best = shortest();
    walk_round(best, rewriter, steps, state_tuning.cooling, rng_, meter_,
               [&](const GateList& list, bool) {
                 offer(list, size_of(list), Origin::lowering_count);
                 return false;
               });
  }

  /// Searches again for what leads up to random gates, from the best circuit on and then from what
  /// comes of it, as long as it is no longer.
  void renew(int tries) {
    GateList now = shortest();
    for (int k = 0; k < tries && now.count() > 1 && !meter_.ended(); ++k) {
      const int cut = 2 + rng_.below(now.count() - 1);
      StateGroup group(stabilisers_after(now, cut));
      group.lighten(state_tuning.renewed_sets, rng_);
      search_from(group, 1, meter_, [&](GateList begin) {
        if (begin.count() > cut) return;
        now = continued(std::move(begin), now, cut);
        offer(now);
      });
    }
  }

  int wires_;
  StateGroup start_;
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

PlacedCircuit search_state(const PauliFrame& stabilisers, const Task& task, const Effort& effort) {
  StateSearch search(stabilisers, task, effort);
  run_search(search);
  const GateList list = in_place(search.incumbent().circuit());
  return {preparation(list, stabilisers), WireFrame(list.wires()).permutation(), size_of(list)};
}

}  // namespace zelt::braidwerk::internal
