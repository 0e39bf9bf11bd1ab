#include "zeltbraidwerk/linear/search/internal/depth_search.h"

#include <algorithm>
#include <cassert>
#include <tuple>
#include <utility>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/linear/internal/block_recursion.h"
#include "zeltbraidwerk/linear/internal/closing.h"
#include "zeltbraidwerk/linear/internal/elimination.h"
#include "zeltbraidwerk/linear/search/internal/block_rewriter.h"
#include "zeltbraidwerk/linear/search/internal/block_search.h"
#include "zeltbraidwerk/linear/search/internal/depth_energy.h"
#include "zeltbraidwerk/linear/search/internal/depth_series.h"
#include "zeltbraidwerk/linear/search/internal/map_bound.h"
#include "zeltbraidwerk/linear/search/internal/map_circuits.h"
#include "zeltbraidwerk/linear/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/driver.h"

namespace zelt::braidwerk::internal {
namespace {

/// The elimination clears the matrix, so that its circuit is read backwards.
GateList eliminated(const BitMatrix& m) {
  structures::CnotCircuit circuit = eliminate_gauss(m);
  circuit.reverse();
  return gate_list(circuit);
}

class ShallowSearch : public SearchBase<GateList> {
 public:
  ShallowSearch(const BitMatrix& m, const Task& task, const Effort& effort)
      : SearchBase(task, effort), m_(m), n_(m.rows()), scheduler_(n_), series_(m) {
    meter_.prove(bound_of_map(m, task.in_place()));
  }

  const Front& front() const { return front_; }

  static Schedule schedule() { return shallow_tuning.rounds; }

  void first() {
    if (task_.start != nullptr) {
      GateList known = *task_.start;
      const int depth = scheduler_.settle(known.gates);
      offer(known, {known.count(), depth});
    }
    take_layers_greedily();
    if (n_ >= shallow_tuning.block_wires && !meter_.ended()) divide_into_blocks();
  }

  bool finished() const { return n_ < 2 || incumbent_.size().depth == 0; }

  void round(const Round& round) {
    const ShallowTuning& t = shallow_tuning;
    const bool divides = n_ >= block_tuning.least_wires && n_ <= block_tuning.most_wires;
    if (divides) {
      if (round.number == 0) search_blocks(round.steps / block_tuning.quick_part);
      search_blocks(round.number == 0 ? round.steps : round.steps * block_tuning.part);
    }
    // Next to blocks, layers are far from the best of many wires.
    if (!divides || n_ < t.large_wires) {
      walk(from_layers(round.steps / t.layer_part), n_ < t.large_wires ? t.heat : t.low_heat,
           t.gate, round.steps, round);
    }
    // On many wires walks find fewer gates and no fewer layers.
    const std::uint64_t steps = round.steps / (divides && n_ >= t.huge_wires ? t.huge_part : 1);
    walk(incumbent_.circuit(), t.low_heat, t.gate, steps / t.best_part, round);
    for (const float gate : t.gate_prices) {
      walk(front_.cheapest(t.layer, gate).list, t.low_heat, gate, steps / t.cheapest_part, round);
    }
  }

 private:
  void take_layers_greedily() {
    Effort whole;
    whole.control = meter_.control();
    if (n_ <= shallow_tuning.quick_wires) whole.control.deadline.reset();
    Meter meter(whole);
    const bool found = n_ > 1 && series_.run(rng_, meter);
    consider(found ? series_.circuit() : eliminated(m_));
    if (StopScope::is_over()) return;
    // Of sparse matrices the elimination by pairs may have fewer layers. Others go on without it.
    GateList pairs = by_pairs(m_, Facing::plain);
    const CircuitSize size{pairs.count(), scheduler_.settle(pairs.gates)};
    if (size.key(Objective::depth) < incumbent_.size().key(Objective::depth)) offer(pairs, size);
    meter_.charge(meter.steps());
  }

  /// Block recursion: of large matrices far fewer layers than the greedy ones, and as many gates.
  void divide_into_blocks() {
    FreeCircuit found(n_);
    BlockRecursion recursion(found.circuit.gates, meter_.control());
    if (!recursion.reduce(m_, found.perm.data())) return;
    found.circuit.reverse();
    found.outputs_from_inputs();
    consider(gate_list(found));
  }

  /// The same with searched steps, in about that number of steps.
  void search_blocks(std::uint64_t steps) {
    const std::uint64_t more = steps / block_tuning.steps_of_try;
    const int tries = 1 + static_cast<int>(std::min<std::uint64_t>(more, block_tuning.most_tries));
    const std::uint64_t each = steps / static_cast<std::uint64_t>(tries);
    for (int k = 0; k < tries && !meter_.ended(); ++k) {
      const GateList found = by_blocks(m_, each);
      if (!meter_.ended()) consider(found);
    }
  }

  /// Of small matrices what a search of their own finds.
  GateList by_blocks(const BitMatrix& m, std::uint64_t steps) {
    if (m.rows() <= block_tuning.leaf_wires) return leaf(m, steps);
    const auto part = [steps](double share) {
      return static_cast<std::uint64_t>(share * static_cast<double>(steps));
    };
    const HalfSearch half = [&](const BitMatrix& each) {
      return by_blocks(each, part(block_tuning.share_of_half));
    };
    return search_by_blocks(m, part(block_tuning.share_of_blocks), half, rng_, meter_)
        .value_or(GateList(m.rows(), {}));
  }

  GateList leaf(const BitMatrix& m, std::uint64_t steps) {
    const Task task{
        .objective = Objective::depth, .outputs = Outputs::left_open, .seed = rng_.next()};
    Effort effort;
    effort.control = meter_.control();
    effort.steps = std::clamp(steps, block_tuning.least_leaf_steps, block_tuning.most_leaf_steps);
    GateList list = search_shallow_cnot(m, task, effort).front().list;
    meter_.charge(effort.steps);
    return list;
  }

  /// The best of layers alone after that number of steps.
  GateList from_layers(std::uint64_t steps) {
    // Of small matrices other circuits make better starts than the best one does once more.
    if (n_ < shallow_tuning.large_wires) series_.begin_anew();
    const std::uint64_t end = meter_.steps() + steps;
    GateList best = incumbent_.circuit();
    while (meter_.steps() < end && !meter_.ended()) {
      if (series_.run(rng_, meter_)) best = consider(series_.circuit());
      meter_.step();  // a permutation has no layers to take off
    }
    return best;
  }

  /// The circuit as it is wanted: closed where outputs have their places, and in layers.
  GateList consider(GateList list) {
    if (task_.in_place()) list = closed(list);
    const int depth = scheduler_.settle(list.gates);
    offer(list, {list.count(), depth});
    return list;
  }

  GateList closed(const GateList& list) {
    GateList best = gate_list(close_by_swaps(free_circuit(list)));
    int least = scheduler_.settle(best.gates);
    try {
      for (int k = 0; k < shallow_tuning.closings && !StopScope::is_over(); ++k) {
        GateList within = closed_within_gates(list, rng_);
        const int depth = scheduler_.settle(within.gates);
        if (std::tuple(depth, within.count()) >= std::tuple(least, best.count())) continue;
        best = std::move(within);
        least = depth;
      }
    } catch (const Stopped&) {
      // What there is so far is closed.
    }
    return best;
  }

  void offer(const GateList& list, const CircuitSize& size) {
    if (!front_.offer(size.depth, list)) return;
    assert(implements(list, m_) && depth_of(list.gates, n_) <= size.depth);
    incumbent_.offer(list, size, Origin::certain);
  }

  void walk(GateList list, Cooling heat, float gate, std::uint64_t steps, const Round& round) {
    if (meter_.ended() || list.gates.empty()) return;
    const int window =
        std::min(n_, round.number == 0 ? shallow_tuning.first_window : most_window_wires);
    const BlockRewriter rewriter(window, !task_.in_place());
    const float bound = shallow_tuning.bound_gates / static_cast<float>(list.count());
    DepthEnergy energy(list.gates, n_,
                       {.layer = shallow_tuning.layer,
                        .gate = gate,
                        .bound_gate = std::min(shallow_tuning.bound_gate, bound)});
    anneal(std::move(list), rewriter, energy, heat, steps, rng_, meter_,
           [this](const GateList& found, int depth) { offer(found, {found.count(), depth}); });
  }

  const BitMatrix& m_;
  int n_;
  Scheduler scheduler_;
  LayerSeries series_;
  Front front_;
};

}  // namespace

std::vector<LayeredCircuit> search_shallow_cnot(const BitMatrix& m, const Task& task,
                                                const Effort& effort) {
  if (!is_invertible(m)) {
    const GateList list = eliminated(m);
    return {{list, depth_of(list.gates, list.wires())}};
  }
  Task wanted = task;
  wanted.objective = Objective::depth;
  ShallowSearch search(m, wanted, effort);
  run_search(search);
  return search.front().circuits();
}

}  // namespace zelt::braidwerk::internal
