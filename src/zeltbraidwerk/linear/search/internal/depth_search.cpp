#include "zeltbraidwerk/linear/search/internal/depth_search.h"

#include <algorithm>
#include <cassert>
#include <tuple>
#include <utility>

#include "zeltbraidwerk/linear/internal/block_recursion.h"
#include "zeltbraidwerk/linear/internal/closing.h"
#include "zeltbraidwerk/linear/internal/elimination.h"
#include "zeltbraidwerk/linear/search/internal/depth_rewriter.h"
#include "zeltbraidwerk/linear/search/internal/depth_series.h"
#include "zeltbraidwerk/linear/search/internal/free_search.h"
#include "zeltbraidwerk/linear/search/internal/map_bound.h"

namespace zelt::braidwerk::internal {

namespace {

GateList list_of(const structures::CnotCircuit& circuit) {
  GateList list(circuit.nbqbits, {});
  for (const auto& [control, target] : circuit.gates) list.gates.push_back(cnot(control, target));
  return list;
}

[[maybe_unused]] bool implements(const GateList& list, const BitMatrix& m) {
  BitMatrix map = BitMatrix::identity(m.rows());
  for (const Gate& gate : list.gates) map.add_row(wire_of(gate.a), wire_of(gate.b));
  for (int w = 0; w < m.rows(); ++w) {
    const int r = list.frame.output_on(w);
    if (!std::equal(map.row(w), map.row(w) + map.stride(), m.row(r))) return false;
  }
  return true;
}

class ShallowSearch {
 public:
  ShallowSearch(const BitMatrix& m, const Task& task, const Effort& effort)
      : m_(m),
        n_(m.rows()),
        task_(task),
        rng_(task.seed, task.stream),
        meter_(effort, Objective::depth),
        scheduler_(n_),
        series_(m) {
    meter_.prove(bound_of_map(m, task.in_place()));
  }

  std::vector<LayeredCircuit> run() {
    first_circuit();
    if (n_ >= wires_of_blocks && !meter_.ended()) block_recursion();
    if (n_ < 2) return front_.circuits();
    for (int round = 0; !meter_.ended() && front_.shallowest().depth > 0; ++round) {
      const std::uint64_t steps = std::uint64_t{10000} << std::min(round, 30);
      // Large circuits are never molten: they would not come back.
      anneal(from_layers(steps / 5), {n_ < 48 ? 0.4F : 0.2F, 0.05F}, 0.02F, steps, round);
      anneal(front_.shallowest().list, {0.2F, 0.05F}, 0.02F, steps / 2, round);
      for (const float gate : {0.1F, 0.5F, 2.0F}) {
        anneal(front_.cheapest(2, gate).list, {0.2F, 0.05F}, gate, steps / 8, round);
      }
    }
    return front_.circuits();
  }

 private:
  static constexpr int wires_of_blocks = 24;  ///< on fewer wires, greedy layers are fewer

  void first_circuit() {
    Effort whole;
    whole.control.stop = meter_.control().stop;
    Meter meter(whole);
    const bool found = n_ > 1 && series_.run(rng_, meter);
    consider(found ? series_.circuit() : list_of(eliminate_gauss(m_)));
    // Of sparse matrices the elimination by pairs may have fewer layers. Others go on without it.
    GateList pairs = by_pairs(m_, Facing::plain);
    const int depth = scheduler_.settle(pairs.gates);
    const LayeredCircuit& best = front_.shallowest();
    if (std::tuple(depth, pairs.count()) < std::tuple(best.depth, best.list.count())) {
      offer(depth, pairs);
    }
    for (std::uint64_t k = 0; k < meter.steps() && meter_.step(); ++k) {
    }
  }

  /// Of large matrices far fewer layers than the greedy ones, and as many gates.
  void block_recursion() {
    FreeCircuit found(n_);
    BlockRecursion recursion(found.circuit.gates, meter_.control());
    if (!recursion.reduce(m_, found.perm.data())) return;
    found.circuit.reverse();
    found.outputs_from_inputs();
    consider(gate_list(found));
  }

  /// The best of layers alone after so many steps.
  GateList from_layers(std::uint64_t steps) {
    // Of small matrices other circuits make better starts than the best one does once more.
    if (n_ < 48) series_.begin_anew();
    const std::uint64_t end = meter_.steps() + steps;
    GateList best = front_.shallowest().list;
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
    offer(depth, list);
    return list;
  }

  GateList closed(const GateList& list) {
    const FreeCircuit found = free_circuit(list);
    const Draw draw = [this](int a, int b) { return a + rng_.below(b - a + 1); };
    GateList best = list_of(close_by_swaps(found));
    int least = scheduler_.settle(best.gates);
    for (int k = 0; k < 4; ++k) {
      GateList within = list_of(close_within_gates(found, draw));
      const int depth = scheduler_.settle(within.gates);
      if (std::tuple(depth, within.count()) >= std::tuple(least, best.count())) continue;
      best = std::move(within);
      least = depth;
    }
    return best;
  }

  void offer(int depth, const GateList& list) {
    if (!front_.offer(depth, list)) return;
    assert(implements(list, m_) && depth_of(list.gates, n_) <= depth);
    meter_.better(list.count(), depth);
  }

  void anneal(GateList list, Cooling heat, float gate, std::uint64_t steps, int round) {
    if (meter_.ended() || list.gates.empty()) return;
    // The small windows need no large table, and little time has no use for it.
    const int largest = std::min(n_, round == 0 ? 4 : most_window_wires);
    DepthRewriter rewriter(n_, largest, !task_.in_place(), rng_);
    rewriter.enter(list.gates, {2, gate, std::min(0.02F, 2.5F / static_cast<float>(list.count()))});
    Walk<DepthRewriter> walk(std::move(list), rewriter);
    constexpr float uphill = 0.3F;
    for (std::uint64_t k = 0; k < steps; ++k) {
      if (k % 64 == 0) {
        rewriter.set_temperature(heat.at(static_cast<double>(k) / static_cast<double>(steps)));
      }
      if (walk.step(uphill, rng_)) offer(rewriter.depth(), walk.list());
      if (!meter_.step() || (walk.count() > 1000 && meter_.ended())) return;
    }
  }

  const BitMatrix& m_;
  int n_;
  const Task& task_;
  Rng rng_;
  Meter meter_;
  Scheduler scheduler_;
  LayerSeries series_;
  Front front_;
};

}  // namespace

std::vector<LayeredCircuit> search_shallow_cnot(const BitMatrix& m, const Task& task,
                                                const Effort& effort) {
  if (!is_invertible(m)) {
    const GateList list = list_of(eliminate_gauss(m));
    return {{list, depth_of(list.gates, list.wires())}};
  }
  return ShallowSearch(m, task, effort).run();
}

}  // namespace zelt::braidwerk::internal
