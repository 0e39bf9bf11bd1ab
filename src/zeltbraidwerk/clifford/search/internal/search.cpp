#include "zeltbraidwerk/clifford/search/internal/search.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/clifford/search/internal/closing.h"
#include "zeltbraidwerk/clifford/search/internal/placed_rewriter.h"
#include "zeltbraidwerk/clifford/search/internal/reduction.h"
#include "zeltbraidwerk/clifford/search/internal/window_rewriter.h"

namespace zelt::braidwerk::internal {
namespace {

/// The cost that leads to the shortest circuits on so many qubits.
OperatorCost cost_for(int wires) {
  OperatorCost cost;
  if (wires <= 12) {
    cost.twice_power = -5;
  } else if (wires <= 24) {
    cost.twice_power = -8;
  } else {
    cost.twice_power = -12;
    cost.scale = wires;
    cost.other_side = 0.05;
  }
  return cost;
}

GateList eliminated(const PauliFrame& images) {
  const Elimination undone = eliminate_clifford(images, false);
  GateList by_wire = to_list(inverted(undone.gates), images.qubits());
  std::vector<int> qubit(undone.wires.size());
  for (std::size_t q = 0; q < qubit.size(); ++q) {
    qubit[static_cast<std::size_t>(undone.wires[q])] = static_cast<int>(q);
  }
  const auto renamed = [&](End end) {
    return end_of(qubit[static_cast<std::size_t>(wire_of(end))], label_of(end));
  };
  GateList list(images.qubits(), {});
  for (const Gate& gate : by_wire.gates) list.gates.push_back({renamed(gate.a), renamed(gate.b)});
  for (std::size_t end = 0; end < list.origin.size(); ++end) {
    list.origin[renamed(static_cast<End>(end))] = by_wire.origin[end];
  }
  return list;
}

class Search {
 public:
  Search(const PauliFrame& images, const CliffordOptions& options, const Effort& effort)
      : images_(images),
        options_(options),
        rng_(options.seed, options.stream),
        meter_(effort),
        wires_(images.qubits()),
        problem_(wires_, cost_for(wires_)),
        start_(problem_.start(OperatorRows(images))) {}

  CliffordResult run() {
    free_.list = eliminated(images_);
    run_beam(1, unlimited());
    if (in_place()) place_outputs(0);
    for (int round = 0; !meter_.ended() && worth_a_walk(); ++round) {
      const std::uint64_t steps = std::uint64_t{1} << (14 + round);
      if (round > 0 && round < 4) run_beam(beam_width(round), meter_);
      if (!in_place() || round < 4) walk(free_, WindowRewriter(round == 0 ? 3 : 4), steps);
      if (!in_place() || meter_.ended()) continue;
      if (round < 4) place_outputs(steps / 4);
      walk(placed_, PlacedRewriter(round == 0 ? 3 : 4), steps / 2);
    }
    return result();
  }

 private:
  /// The shortest list found, with or without its outputs in place.
  struct Best {
    GateList list;
    bool wanted;  ///< what the search is asked for
  };

  bool in_place() const { return options_.outputs == Outputs::in_place; }
  bool worth_a_walk() const { return free_.list.count() > 1 || placed_.list.count() > 1; }
  Meter& unlimited() { return unlimited_; }

  int beam_width(int round) const {
    constexpr int widths[2][4] = {{1, 30, 100, 300}, {1, 10, 30, 100}};
    return widths[wires_ <= 24 ? 0 : 1][round];
  }

  void take(Best& best, GateList list) {
    if (best.list.wires() == wires_ && list.count() >= best.list.count()) return;
    best.list = std::move(list);
    report(best);
  }
  void report(const Best& best) const {
    if (best.wanted) meter_.better(best.list.count(), depth_of(best.list.gates, wires_));
  }

  void run_beam(int width, Meter& meter) {
    BeamOptions options;
    options.width = width;
    options.noise = 1e-3 * problem_.small_change();
    BeamSearch<OperatorReduction> search(problem_, options, rng_, meter);
    for (const auto& found : search.run(start_)) take(free_, circuit_of(found));
  }

  template <class Rewriter>
  void walk(Best& best, Rewriter rewriter, std::uint64_t steps) {
    walk_round(best.list, rewriter, steps, Cooling{}, rng_, meter_,
               [&](const GateList& list, bool shorter) {
                 if (!shorter) {
                   return depth_of(list.gates, wires_) < depth_of(best.list.gates, wires_);
                 }
                 report(best);
                 return false;
               });
  }

  /// The shortest list with its outputs put in place, and a walk from there.
  void place_outputs(std::uint64_t steps) {
    Best closed{with_outputs_in_place(free_.list, rng_), false};
    walk(closed, PlacedRewriter(4), steps);
    take(placed_, std::move(closed.list));
  }

  CliffordResult result() const {
    const GateList& best = (in_place() ? placed_ : free_).list;
    return {to_circuit(best, images_), best.count(), depth_of(best.gates, wires_)};
  }

  const PauliFrame& images_;
  CliffordOptions options_;
  Rng rng_;
  Meter meter_;
  Effort no_limit_;
  Meter unlimited_{no_limit_};
  int wires_;
  OperatorReduction problem_;
  OperatorReduction::State start_;
  Best free_{GateList(), !in_place()};
  Best placed_{GateList(), in_place()};
};

}  // namespace

CliffordResult search_clifford(const PauliFrame& images, const CliffordOptions& options,
                               const Effort& effort) {
  return Search(images, options, effort).run();
}

}  // namespace zelt::braidwerk::internal
