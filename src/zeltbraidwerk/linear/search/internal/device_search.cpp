#include "zeltbraidwerk/linear/search/internal/device_search.h"

#include <algorithm>
#include <cassert>
#include <functional>
#include <numeric>
#include <utility>

#include "zeltbraidwerk/linear/search/internal/device_elimination.h"
#include "zeltbraidwerk/linear/search/internal/device_rewriter.h"
#include "zeltbraidwerk/linear/search/internal/device_starts.h"
#include "zeltbraidwerk/linear/search/internal/map_bound.h"
#include "zeltbraidwerk/linear/search/internal/map_circuits.h"
#include "zeltbraidwerk/linear/search/internal/plane_sorting.h"
#include "zeltbraidwerk/linear/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/depth_judge.h"
#include "zeltbraidwerk/search/internal/driver.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {
namespace {

class CnotDeviceSearch : public SearchBase<GateList> {
 public:
  CnotDeviceSearch(const BitMatrix& m, const Task& task, const Effort& effort)
      : SearchBase(task, effort),
        m_(m),
        device_(*task.device),
        n_(std::min(m.rows(), device_.size())),
        rewriter_(device_, most_window_wires, task.most_reach()) {
    VertexSet all(n_);
    for (int v = 0; v < n_; ++v) all.insert(v);
    has_circuit_ = is_invertible(m) && is_connected(device_, all);
  }

  static Schedule schedule() { return device_tuning.rounds; }

  void first() {
    if (has_circuit_) meter_.prove(bound_of_map_on_device(m_, device_, task_.most_reach()));
    if (task_.start != nullptr) offer(*task_.start);
    eliminate();
    optimal_ = replace_all();
    const int count = incumbent_.size().count;
    if (optimal_ && has_circuit_) meter_.prove({count, layers_to_hold(count, n_)});
  }

  bool finished() const { return optimal_ || incumbent_.size().count == 0; }

  /// New circuits, each walked from for a while. From the best of them, or of all where that is
  /// shorter, the walk goes on for longer.
  void round(const Round& round) {
    if (!path_.empty()) {
      sort_planes(round.number, sorting_width(n_, PlaneGates::cnots, task_.objective, round), rng_,
                  meter_);
    }
    Smallest<GateList> winner(task_.objective);
    const bool large = n_ > device_tuning.some_wires;
    const int starts = large ? device_tuning.starts_large : device_tuning.starts;
    for (int k = 0; k < starts && !meter_.ended(); ++k) {
      GateList fresh = eliminated(round.steps);
      walk(fresh, round.steps);
      winner.offer(fresh, size_of(fresh));
    }
    if (winner.empty()) return;
    GateList list = winner.circuit();
    const Objective objective = task_.objective;
    if (incumbent_.size().key(objective) < size_of(list).key(objective)) {
      list = incumbent_.circuit();
    }
    walk(list,
         (large ? device_tuning.walk_from_best_large : device_tuning.walk_from_best) * round.steps);
  }

 private:
  /// No worse than the plain methods of these draws, and mostly far better where a greedy run of
  /// the beam takes little time.
  void eliminate() {
    offer(cleared_on_device(m_, device_, false, draw_from(rng_)));
    SeededDraw plain = plain_draws();
    offer(cleared_on_device(m_, device_, false, std::ref(plain)));
    if (task_.most_reach() >= n_ - 1) {
      plain = plain_draws();
      offer(cleared_on_device(m_, device_, true, std::ref(plain)));
    }
    if (task_.by_depth() && has_circuit_) sort();
    if (n_ > device_tuning.greedy_wires || !has_circuit_ || meter_.proven()) return;
    plain = plain_draws();
    const auto along =
        cleared_along_path(m_, device_, device_tuning.path_operations, std::ref(plain));
    if (along) offer(*along);
    Rng own(task_.seed, ~task_.stream);  // the rounds have the same draws without this run
    const Effort unlimited;
    Meter meter(unlimited);
    const DeviceEliminationOptions greedy{.vertices = device_vertices(n_),
                                          .clearings = device_clearings(n_)};
    for (const GateList& found : eliminate_on_device(m_, device_, greedy, own, meter)) offer(found);
  }
  void sort() {
    const auto sorted =
        sorted_along_path(m_, device_, device_tuning.path_operations, meter_.control());
    if (sorted) offer(*sorted);
    path_ = path_through(device_, device_tuning.path_operations);
    if (n_ > device_tuning.greedy_wires) return;  // greedy runs find no fewer layers
    Rng own(task_.seed, ~task_.stream);
    const Effort unlimited;
    Meter meter(unlimited);
    for (int run = 0; run < 4 && !path_.empty(); ++run) sort_planes(run, 1, own, meter);
  }
  /// The map or its inverse in turns.
  void sort_planes(int run, int width, Rng& rng, Meter& meter) {
    const std::vector<int> path = sorting_path(device_, path_, run, rng);
    const auto sorted = sorted_by_planes(m_, run % 2 == 1, path, width, rng, meter);
    if (!sorted) return;
    offer(*sorted);
    if (width > 1 && sorting_lags(size_of(*sorted), incumbent_.size(), Objective::depth)) {
      path_.clear();
    }
  }
  SeededDraw plain_draws() const { return {task_.seed, static_cast<std::uint32_t>(task_.stream)}; }

  /// On few wires all gates fit into one window. True when that gives the shortest circuit.
  bool replace_all() {
    const bool partly = task_.most_reach() > 0 && task_.most_reach() < n_ - 1;
    if (n_ > most_window_wires || task_.by_depth() || partly) return false;
    Window all;
    all.size = n_;
    std::iota(all.wires.begin(), all.wires.begin() + n_, std::uint16_t{0});
    all.gates = incumbent_.circuit().gates;
    all.to_end = (1U << n_) - 1;
    Rewrite rewrite;
    GateList shortest = incumbent_.circuit();
    if (!rewriter_.rewrite(shortest, all, 0, rng_, rewrite)) return shortest.count() < 2;
    shortest.gates = std::move(rewrite.block);
    if (rewrite.renames) {
      shortest.frame =
          shortest.frame.renamed([&](End end) { return rewrite.ends[end / 4U][end % 4U]; });
    }
    offer(shortest);
    return true;
  }

  /// By a beam that takes about as long as a walk of `steps`; the best circuit so far where it
  /// finds none.
  GateList eliminated(std::uint64_t steps) {
    DeviceEliminationOptions options{.vertices = device_vertices(n_),
                                     .clearings = device_clearings(n_)};
    const double price = device_tuning.state_price * n_ * n_ * options.vertices;
    options.width = static_cast<int>(std::clamp<double>(
        static_cast<double>(steps) / price, device_tuning.least_width, device_tuning.most_width));
    auto found = eliminate_on_device(m_, device_, options, rng_, meter_);
    if (found.empty()) return incumbent_.circuit();
    offer(found.front());
    return std::move(found.front());
  }

  void walk(GateList& list, std::uint64_t steps) {
    if (task_.by_depth()) {
      LayerOdds odds(list);
      DepthJudge judge(rewriter_, odds, rng_);
      walk_among_equals(list, judge, steps, device_tuning.cooling_by_depth, rng_, meter_,
                        [this](const GateList& found) { offer(found, Origin::lowering_depth); });
    } else {
      const Cooling cooling =
          n_ > device_tuning.some_wires ? device_tuning.cooling_large : device_tuning.cooling;
      walk_among_equals(list, rewriter_, steps, cooling, rng_, meter_,
                        [this](const GateList& found) { offer(found, Origin::lowering_count); });
    }
  }

  void offer(const GateList& list, Origin origin = Origin::certain) {
    assert(!has_circuit_ || implements(list, m_, &device_));
    incumbent_.offer(list, size_of(list), origin);
  }

  const BitMatrix& m_;
  const BitGraph& device_;
  int n_;
  DeviceRewriter rewriter_;
  bool has_circuit_;
  bool optimal_ = false;
  std::vector<int> path_;  // to sort along, by depth; empty: there is none, or others do better
};

}  // namespace

GateList search_cnot_on_device(const BitMatrix& m, const Task& task, const Effort& effort) {
  const int n = std::min(m.rows(), task.device->size());
  if (n < 2) return GateList(n, {});
  CnotDeviceSearch search(m, task, effort);
  run_search(search);
  return search.incumbent().circuit();
}

}  // namespace zelt::braidwerk::internal
