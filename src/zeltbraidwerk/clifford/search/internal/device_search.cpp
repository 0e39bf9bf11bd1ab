#include "zeltbraidwerk/clifford/search/internal/device_search.h"

#include <algorithm>

#include "zeltbraidwerk/clifford/search/internal/device_elimination.h"
#include "zeltbraidwerk/clifford/search/internal/operator_bound.h"
#include "zeltbraidwerk/clifford/search/internal/placed_rewriter.h"
#include "zeltbraidwerk/clifford/search/internal/reduction.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/graphs/internal/hamiltonian_path.h"
#include "zeltbraidwerk/linear/search/internal/plane_sorting.h"
#include "zeltbraidwerk/linear/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/depth_judge.h"
#include "zeltbraidwerk/search/internal/driver.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr const CliffordTuning& tuning = clifford_tuning;

class CliffordDeviceSearch : public SearchBase<GateList> {
 public:
  CliffordDeviceSearch(const OperatorRows& rows, const Task& task, const Effort& effort)
      : SearchBase(task, effort), rows_(rows), wires_(rows.wires()) {
    meter_.prove(bound_of_operator(rows, task.outputs, task.device));
  }

  static Schedule schedule() { return tuning.device_rounds; }

  void first() {
    if (task_.start != nullptr) {
      incumbent_.offer(*task_.start, size_of(*task_.start), Origin::certain);
    }
    Control few = meter_.control();
    few.max_operations = tuning.path_operations;
    path_ = find_hamiltonian_path(*task_.device, few).path;
    const Effort unlimited;
    Meter own(unlimited);
    Rng draws(task_.seed, ~task_.stream);  // the rounds have the same draws without sorting
    // First, as on many wires it takes a tenth of the time of an elimination.
    const CircuitSize sorted = path_.empty() ? CircuitSize{} : offer_sorted(0, 1, draws, own);
    if (const auto list = eliminate_on_device(rows_, *task_.device, 1, rng_, own)) {
      incumbent_.offer(*list, size_of(*list), Origin::certain);
    }
    stop_if_lagging(sorted, 1);
    for (int way = 1; way < 4 && !path_.empty(); ++way) {
      stop_if_lagging(offer_sorted(way, 1, draws, own), 1);
    }
  }

  bool finished() const { return incumbent_.size().count <= 1; }

  void round(const Round& round) {
    PlacedRewriter rewriter(window_wires(round.number), *task_.device, task_.outputs);
    if (!path_.empty()) {
      const int width = sorting_width(wires_, PlaneGates::cliffords, task_.objective, round);
      stop_if_lagging(offer_sorted(round.number, width, rng_, meter_), width);
    }
    // Where sorted circuits are the best, and for few layers, new ones are of less use.
    if (task_.by_depth() || !path_.empty()) {
      begin_anew(rewriter, round.steps, round.steps / tuning.new_part);
      walk_from_best(rewriter, round.steps);
    } else {
      begin_often(rewriter, round.steps);
    }
    if (!task_.by_depth()) return;
    anneal_depth(incumbent_.circuit(), rewriter, round.steps, rng_, meter_,
                 [this](const GateList& list, int depth) {
                   incumbent_.offer(list, {list.count(), depth}, Origin::certain);
                 });
  }

 private:
  /// A new circuit after a walk of its own; nothing where there is no time for a beam.
  std::optional<GateList> begin_anew(PlacedRewriter& rewriter, std::uint64_t beam_steps,
                                     std::uint64_t walk_steps) {
    const int width = width_for(beam_steps);
    if (width == 0) return std::nullopt;
    auto fresh = eliminate_on_device(rows_, *task_.device, width, rng_, meter_);
    if (!fresh) return std::nullopt;
    incumbent_.offer(*fresh, size_of(*fresh), Origin::certain);
    walk(*fresh, rewriter, walk_steps);
    return fresh;
  }

  /// The best of some new circuits is walked from for longer, and then once more the best of all.
  void begin_often(PlacedRewriter& rewriter, std::uint64_t steps) {
    Smallest<GateList> winner(Objective::count);
    for (int k = 0; k < tuning.device_starts; ++k) {
      auto fresh = begin_anew(rewriter, steps, steps);
      if (fresh) winner.offer(std::move(*fresh), size_of(*fresh));
    }
    if (!winner.empty()) {
      GateList list = winner.circuit();
      walk(list, rewriter, tuning.walk_from_winner * steps);
    }
    walk_from_best(rewriter, tuning.walk_from_best * steps);
  }

  void walk_from_best(PlacedRewriter& rewriter, std::uint64_t steps) {
    GateList list = incumbent_.circuit();
    walk(list, rewriter, steps);
  }

  /// The widest beam that takes no more time than the walk of the round.
  int width_for(std::uint64_t steps) const {
    const auto n = static_cast<std::uint64_t>(wires_);
    const std::uint64_t price =
        n * n * n * std::min(n, tuning.device_wires) / tuning.device_steps + 1;
    return widest_within(tuning.device_widths, static_cast<double>(price),
                         static_cast<double>(steps));
  }

  /// Sorts rows of either side in turns. The size of what it found, zero where that is nothing.
  CircuitSize offer_sorted(int number, int width, Rng& rng, Meter& meter) {
    const int side = number % 2;
    const std::vector<int> path = sorting_path(*task_.device, path_, number, rng);
    const auto found =
        sort_planes(planes(side, path), PlaneGates::cliffords, task_.objective, width, rng, meter);
    if (!found) return {};
    OperatorRows left = rows_;
    std::vector<OperatorReduction::Move> moves;
    for (const auto& [place, a, b] : *found) {
      const End one = end_of(path[at(place)], a);
      const End other = end_of(path[at(place + 1)], b);
      const Gate gate{std::min(one, other), std::max(one, other)};
      left.multiply(side, gate);
      moves.push_back({side, gate});
    }
    const GateList list = circuit_of(left, moves);
    const CircuitSize size = size_of(list);
    incumbent_.offer(list, size, Origin::certain);
    return size;
  }
  void stop_if_lagging(const CircuitSize& sorted, int width) {
    const bool counts = width > 1 || !task_.by_depth();
    if (counts && sorting_lags(sorted, incumbent_.size(), task_.objective)) path_.clear();
  }

  BitMatrix planes(int side, const std::vector<int>& path) const {
    BitMatrix rows(2 * wires_, 2 * wires_);
    for (int place = 0; place < wires_; ++place) {
      for (int input = 0; input < wires_; ++input) {
        for (const int label : {1, 2}) {
          const int found = rows_.label_at(side, path[at(place)], label, path[at(input)]);
          rows.set(2 * place + label - 1, 2 * input, (found & 1) != 0);
          rows.set(2 * place + label - 1, 2 * input + 1, (found & 2) != 0);
        }
      }
    }
    return rows;
  }
  static std::size_t at(int k) { return static_cast<std::size_t>(k); }

  void walk(GateList& list, PlacedRewriter& rewriter, std::uint64_t steps) {
    const Cooling& cooling = path_.empty() ? tuning.cooling_on_device : tuning.cooling_of_sorted;
    walk_to_shallow(list, rewriter, steps, cooling, rng_, meter_,
                    [this](const GateList& shorter, const CircuitSize& size) {
                      incumbent_.offer(shorter, size, Origin::lowering_count);
                    });
  }

  const OperatorRows& rows_;
  int wires_;
  std::vector<int> path_;  // to sort along; empty: there is none, or others do better
};

}  // namespace

GateList search_clifford_on_device(const OperatorRows& rows, const Task& task,
                                   const Effort& effort) {
  CliffordDeviceSearch search(rows, task, effort);
  run_search(search);
  return search.incumbent().circuit();
}

}  // namespace zelt::braidwerk::internal
