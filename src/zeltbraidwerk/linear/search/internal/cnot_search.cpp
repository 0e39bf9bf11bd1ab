#include "zeltbraidwerk/linear/search/internal/cnot_search.h"

#include <algorithm>
#include <utility>

#include "zeltbraidwerk/linear/search/internal/blockwise_search.h"
#include "zeltbraidwerk/linear/search/internal/fewest_gates.h"
#include "zeltbraidwerk/linear/search/internal/map_bound.h"
#include "zeltbraidwerk/linear/search/internal/map_circuits.h"
#include "zeltbraidwerk/linear/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/driver.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {
namespace {

/// What both searches below do.
class CnotSearch : public SearchBase<GateList> {
 public:
  CnotSearch(const BitMatrix& m, const Task& task, const Effort& effort, int window)
      : SearchBase(task, effort), m_(m), window_(window), blocks_(m, window) {
    meter_.prove(bound_of_map(m, task.in_place()));
  }

  static Schedule schedule() { return cnot_tuning.rounds; }

 protected:
  bool is_permutation() const { return meter_.bound().count == 0; }
  /// On few wires a table has the shortest circuits of the whole map.
  bool has_table() const { return m_.rows() <= most_window_wires; }
  void prove_best() {
    const int count = incumbent_.size().count;
    meter_.prove({count, layers_to_hold(count, m_.rows())});
  }
  /// On a few wires more both ends meet. Once, after the first round, which finds circuits of few
  /// layers.
  void find_fewest() {
    const int n = m_.rows();
    if (looked_for_fewest_ || meter_.ended()) return;
    looked_for_fewest_ = true;
    if (!finds_fewest_gates(n, !task_.in_place(), meter_)) return;
    const FewestGates found = fewest_gates(m_, !task_.in_place(), meter_);
    if (found.circuit) offer(*found.circuit);
    meter_.prove({found.least, layers_to_hold(found.least, n)});
  }
  /// The known circuit, if any, which is one with free outputs as well.
  void offer_start() {
    if (task_.start == nullptr) return;
    offer(*task_.start);
    blocks_.begin_with(*task_.start);
  }
  void offer(const GateList& list, Origin origin = Origin::certain) {
    incumbent_.offer(list, size_of(list), origin);
  }

  const BitMatrix& m_;
  int window_;
  BlockwiseSearch blocks_;

 private:
  bool looked_for_fewest_ = false;
};

class FreeCnotSearch : public CnotSearch {
 public:
  using CnotSearch::CnotSearch;

  void first() {
    if (is_permutation()) return offer(relabelled(m_));
    blocks_.first(rng_);
    offer_start();
    offer(blocks_.best());
    if (blocks_.single() == nullptr) offer(by_pairs(m_, Facing::plain));
    if (has_table()) return prove_best();
    if (blocks_.finished()) find_fewest();  // blocks together may take fewer gates
  }

  bool finished() const { return is_permutation() || blocks_.finished(); }

  void round(const Round& round) {
    blocks_.round(round.number, round.steps, rng_, meter_,
                  [this](const auto& make) { offer(make(), Origin::lowering_count); });
    find_fewest();
  }
};

/// Circuits with free outputs are closed, and walks go on among the circuits of the very map.
class CnotSearchInPlace : public CnotSearch {
 public:
  using CnotSearch::CnotSearch;

  void first() {
    if (is_permutation()) return offer(relabelled(m_));
    if (has_table()) {
      offer(shortest_circuit(m_, false, rng_));
      if (task_.start != nullptr) offer(*task_.start);  // it may have fewer layers
      return prove_best();
    }
    blocks_.first(rng_);
    offer_start();
    offer(closed_within_gates(blocks_.best(), rng_));
    offer(by_pairs(m_, Facing::plain));
    best_walk_ = incumbent_.circuit();
    if (const FreeSearch* single = blocks_.single()) {
      long_walks_ = single->prefers_long_walks();
      cooling_ = single->cooling();
    }
  }

  bool finished() const { return is_permutation() || has_table(); }

  void round(const Round& round) {
    const std::uint64_t part =
        long_walks_ ? cnot_tuning.anywhere_part_long_walk : cnot_tuning.anywhere_part;
    blocks_.round(round.number, round.steps / part, rng_, meter_, [](const auto&) {});
    if (meter_.ended()) return;  // with more effort nothing would be closed here
    if (long_walks_ && round.number % cnot_tuning.long_walk_period != 0) return;
    GateList fresh = closed_within_gates(blocks_.best(), rng_);
    offer(fresh);
    walk(fresh, long_walks_ ? cnot_tuning.long_walk_in_place * round.steps : round.steps);
    if (fresh.count() <= best_walk_.count()) std::swap(best_walk_, fresh);
    if (!long_walks_) walk(best_walk_, round.steps);
    find_fewest();
  }

 private:
  void walk(GateList& list, std::uint64_t steps) {
    const BlockRewriter rewriter(window_, false);
    walk_among_equals(list, rewriter, steps, cooling_, rng_, meter_,
                      [this](const GateList& found) { offer(found, Origin::lowering_count); });
  }

  bool long_walks_ = false;
  Cooling cooling_ = cnot_tuning.cooling;
  GateList best_walk_;  // the shortest that a walk has led to
};

template <class Search>
GateList searched(const BitMatrix& m, const Task& task, const Effort& effort, int window) {
  Search search(m, task, effort, window);
  run_search(search);
  return search.incumbent().circuit();
}

}  // namespace

GateList search_cnot(const BitMatrix& m, const Task& task, const Effort& effort,
                     int largest_window) {
  Task wanted = task;
  wanted.objective = Objective::count;
  const int window = std::clamp(largest_window, 2, most_window_wires);
  return task.in_place() ? searched<CnotSearchInPlace>(m, wanted, effort, window)
                         : searched<FreeCnotSearch>(m, wanted, effort, window);
}

}  // namespace zelt::braidwerk::internal
