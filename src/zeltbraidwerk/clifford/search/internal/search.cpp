#include "zeltbraidwerk/clifford/search/internal/search.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "zeltbraidwerk/clifford/internal/elimination.h"
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
    best_ = eliminated(images_);
    greedy();
    std::uint64_t steps = 1 << 14;
    int width = wires_ <= 24 ? 30 : 10;
    for (int round = 0; !meter_.ended(); ++round) {
      if (round == 0) beam(width);
      walk(steps, round == 0 ? 3 : 4);
      steps *= 2;
    }
    return result();
  }

 private:
  void take(GateList list) {
    if (list.count() >= best_.count()) return;
    best_ = std::move(list);
    report();
  }
  void report() const { meter_.better(best_.count(), depth_of(best_.gates, wires_)); }

  void greedy() {
    const Effort own;
    Meter unlimited(own);
    run_beam(1, unlimited);
  }
  void beam(int width) { run_beam(width, meter_); }

  void run_beam(int width, Meter& meter) {
    BeamOptions options;
    options.width = width;
    options.noise = 1e-3 * problem_.small_change();
    BeamSearch<OperatorReduction> search(problem_, options, rng_, meter);
    for (const auto& found : search.run(start_)) take(circuit_of(found));
  }

  void walk(std::uint64_t steps, int window) {
    WindowRewriter rewriter(window);
    walk_round(best_, rewriter, steps, Cooling{}, rng_, meter_, [&](const GateList&, bool shorter) {
      if (shorter) report();
      return false;
    });
  }

  CliffordResult result() const {
    return {to_circuit(best_, images_), best_.count(), depth_of(best_.gates, wires_)};
  }

  const PauliFrame& images_;
  CliffordOptions options_;
  Rng rng_;
  Meter meter_;
  int wires_;
  OperatorReduction problem_;
  OperatorReduction::State start_;
  GateList best_;
};

}  // namespace

CliffordResult search_clifford(const PauliFrame& images, const CliffordOptions& options,
                               const Effort& effort) {
  return Search(images, options, effort).run();
}

}  // namespace zelt::braidwerk::internal
