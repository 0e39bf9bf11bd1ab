#include "zeltbraidwerk/clifford/search/internal/device_search.h"

#include <algorithm>

#include "zeltbraidwerk/clifford/search/internal/device_elimination.h"
#include "zeltbraidwerk/clifford/search/internal/operator_bound.h"
#include "zeltbraidwerk/clifford/search/internal/operator_sorting.h"
#include "zeltbraidwerk/clifford/search/internal/placed_rewriter.h"
#include "zeltbraidwerk/clifford/search/internal/reduction.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/graphs/internal/hamiltonian_path.h"
#include "zeltbraidwerk/linear/search/internal/map_circuits.h"
#include "zeltbraidwerk/search/internal/beam.h"
#include "zeltbraidwerk/search/internal/depth_judge.h"
#include "zeltbraidwerk/search/internal/driver.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr const CliffordTuning& tuning = clifford_tuning;

class CliffordDeviceSearch : public SearchBase<GateList> {
 public:
  CliffordDeviceSearch(const OperatorRows& rows, const Task& task, const Effort& effort)
      : SearchBase(task, effort),
        rows_(rows),
        wires_(rows.wires()),
        problem_(*task.device),
        start_(problem_.start(rows)) {
    meter_.prove(bound_of_operator(rows, task.outputs, task.device));
  }

  static Schedule schedule() { return tuning.rounds; }

  void first() {
    if (task_.start != nullptr) {
      incumbent_.offer(*task_.start, size_of(*task_.start), Origin::certain);
    }
    const Effort unlimited;
    Meter own(unlimited);
    const GateList list = eliminated(1, own);
    incumbent_.offer(list, size_of(list), Origin::certain);
    if (!task_.by_depth()) return;
    Control few = meter_.control();
    few.max_operations = tuning.path_operations;
    path_ = find_hamiltonian_path(*task_.device, few).path;
    for (int way = 0; way < 4; ++way) offer_sorted(way, 1, own);
  }

  bool finished() const { return incumbent_.size().count <= 1; }

  void round(const Round& round) {
    const PlacedRewriter rewriter(window_wires(round.number), *task_.device, task_.outputs);
    if (const int width = width_for(round.steps); width > 0) {
      GateList found = eliminated(width, meter_);
      if (meter_.ended()) return;
      incumbent_.offer(found, size_of(found), Origin::certain);
      walk(std::move(found), rewriter, round.steps / tuning.new_part);
    }
    walk(incumbent_.circuit(), rewriter, round.steps);
    if (!task_.by_depth()) return;
    offer_sorted(round.number, sorting_width(tuning.sorting_part * round.steps), meter_);
    anneal_depth(incumbent_.circuit(), rewriter, round.steps, rng_, meter_,
                 [this](const GateList& list, int depth) {
                   incumbent_.offer(list, {list.count(), depth}, Origin::certain);
                 });
  }

 private:
  /// The widest beam that takes no more time than the walk of the round.
  int width_for(std::uint64_t steps) const {
    const auto n = static_cast<std::uint64_t>(wires_);
    const std::uint64_t price =
        n * n * n * std::min(n, tuning.device_wires) / tuning.device_steps + 1;
    return widest_within(tuning.device_widths, static_cast<double>(price),
                         static_cast<double>(steps));
  }

  /// The same for a beam that sorts.
  int sorting_width(std::uint64_t steps) const {
    const auto n = static_cast<std::uint64_t>(wires_);
    const std::uint64_t price = 3 * n * steps_of_sorting(wires_);
    const std::uint64_t most = std::min(tuning.most_sorting_width, tuning.sorting_memory / (n * n));
    return static_cast<int>(std::clamp(steps / price, std::uint64_t{1}, most));
  }

  /// Sorts along a path through all wires, if one was found: from either end of it, rows of either
  /// side, and another path each time.
  void offer_sorted(int number, int width, Meter& meter) {
    if (path_.size() < 2) return;
    SortingWay way{.side = number % 2, .path = path_};
    if (number >= 4) vary_hamiltonian_path(*task_.device, way.path, draw_from(rng_));
    if (number / 2 % 2 == 1) std::ranges::reverse(way.path);
    way.turned = task_.outputs == Outputs::anywhere && number / 4 % 2 == 1;
    OperatorSorting problem(rows_, std::move(way), width > 1 ? tuning.sorting_variants : 1, rng_,
                            meter);
    const BeamOptions options{.width = width, .patience = tuning.patience + wires_};
    BeamSearch<OperatorSorting> search(problem, options, rng_, meter);
    for (const auto& found : search.run(problem.start())) {
      const GateList list = problem.circuit(found.moves);
      incumbent_.offer(list, size_of(list), Origin::certain);
    }
  }

  /// The best circuit so far where the beam finds none.
  GateList eliminated(int width, Meter& meter) {
    const BeamOptions options{.width = width, .patience = wires_, .noise = tuning.device_noise};
    BeamSearch<DeviceElimination> search(problem_, options, rng_, meter);
    const auto found = search.run(start_);
    if (!found.empty()) return circuit_of(found[0].state.rows, found[0].state.gates);
    return incumbent_.empty() ? GateList(wires_, {}) : incumbent_.circuit();
  }

  void walk(GateList list, PlacedRewriter rewriter, std::uint64_t steps) {
    walk_to_shallow(list, rewriter, steps, tuning.cooling_on_device, rng_, meter_,
                    [this](const GateList& shorter, const CircuitSize& size) {
                      incumbent_.offer(shorter, size, Origin::lowering_count);
                    });
  }

  const OperatorRows& rows_;
  int wires_;
  std::vector<int> path_;  ///< through all wires; empty: none was found
  DeviceElimination problem_;
  DeviceElimination::State start_;
};

}  // namespace

GateList search_clifford_on_device(const OperatorRows& rows, const Task& task,
                                   const Effort& effort) {
  CliffordDeviceSearch search(rows, task, effort);
  run_search(search);
  return search.incumbent().circuit();
}

}  // namespace zelt::braidwerk::internal
