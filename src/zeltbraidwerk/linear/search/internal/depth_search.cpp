#include "zeltbraidwerk/linear/search/internal/depth_search.h"

#include <algorithm>
#include <cassert>
#include <tuple>
#include <utility>

#include "zeltbraidwerk/linear/internal/closing.h"
#include "zeltbraidwerk/linear/internal/elimination.h"
#include "zeltbraidwerk/linear/search/internal/depth_layers.h"
#include "zeltbraidwerk/linear/search/internal/depth_rewriter.h"
#include "zeltbraidwerk/search/internal/beam.h"

namespace zelt::braidwerk::internal {

namespace {

GateList list_of(const structures::CnotCircuit& circuit) {
  GateList list(circuit.nbqbits, {});
  for (const auto& [control, target] : circuit.gates) list.gates.push_back(cnot(control, target));
  return list;
}

FreeCircuit free_circuit(const GateList& list) {
  FreeCircuit found(list.wires());
  for (const Gate& gate : list.gates) found.circuit.addGate(wire_of(gate.a), wire_of(gate.b));
  for (int w = 0; w < list.wires(); ++w) {
    found.perm[static_cast<std::size_t>(wire_of(list.origin[end_of(w, 0)]))] = w;
  }
  return found;
}

[[maybe_unused]] bool implements(const GateList& list, const BitMatrix& m) {
  BitMatrix map = BitMatrix::identity(m.rows());
  for (const Gate& gate : list.gates) map.add_row(wire_of(gate.a), wire_of(gate.b));
  for (int w = 0; w < m.rows(); ++w) {
    const int r = wire_of(list.origin[end_of(w, 0)]);
    if (!std::equal(map.row(w), map.row(w) + map.stride(), m.row(r))) return false;
  }
  return true;
}

class ShallowSearch {
 public:
  ShallowSearch(const BitMatrix& m, const ShallowOptions& options, const Effort& effort)
      : m_(m),
        n_(m.rows()),
        options_(options),
        rng_(options.seed, options.stream),
        meter_(effort),
        scheduler_(n_) {}

  std::vector<LayeredCircuit> run() {
    first_circuit();
    for (const GateList& list : options_.known) consider(list);
    for (int round = 0; n_ > 1 && !meter_.ended() && !front_.shallowest().list.gates.empty();
         ++round) {
      const std::uint64_t steps = std::uint64_t{5000} << std::min(round, 30);
      const int width = static_cast<int>(std::min<std::int64_t>(
          std::int64_t{4} << std::min(round, 10), std::max(4, (1 << 24) / (n_ * n_))));
      GateList fresh;
      if (beam({.width = width, .noise = 1e-6}, 3, exponent(), meter_, fresh)) {
        anneal(std::move(fresh), 0.02F, steps, round);
      }
      anneal(front_.shallowest().list, 0.02F, steps, round);
      for (const float gate : {0.1F, 0.5F, 2.0F}) {
        anneal(front_.cheapest(2, gate).list, gate, steps / 4, round);
      }
    }
    return front_.circuits();
  }

 private:
  double exponent() {
    // As light lines are to count the more the larger the matrix is; the best for one is not the
    // best for another.
    const double middle = n_ < 24 ? 0.75 - n_ / 24.0 : n_ < 48 ? -n_ / 24.0 : -n_ / 16.0;
    return middle * (0.7 + 0.6 * static_cast<double>(rng_.unit()));
  }

  bool beam(const BeamOptions& options, int variants, double exponent, Meter& meter,
            GateList& list) {
    LayerReduction problem(n_, {{exponent, true, 0}, variants, 0.3F});
    const auto found =
        BeamSearch<LayerReduction>(problem, options, rng_, meter).run(problem.start(m_));
    if (found.empty()) return false;
    list = consider(problem.circuit(found[0].state, found[0].moves));
    return true;
  }

  void first_circuit() {
    Effort whole;
    whole.control.stop = meter_.control().stop;
    Meter meter(whole);
    GateList list;
    const double middle = n_ < 24 ? 0 : n_ < 48 ? -n_ / 24.0 : -n_ / 16.0;
    if (n_ < 2 || !beam({}, 1, middle, meter, list)) consider(list_of(eliminate_gauss(m_)));
    for (std::uint64_t k = 0; k < meter.steps() && meter_.step(); ++k) {
    }
  }

  /// The circuit as it is wanted: closed where outputs have their places, and in layers.
  GateList consider(GateList list) {
    if (!options_.permuted) list = closed(list);
    const int depth = scheduler_.settle(list.gates);
    offer(depth, list);
    return list;
  }

  GateList closed(const GateList& list) {
    const FreeCircuit found = free_circuit(list);
    GateList by_swaps = list_of(close_by_swaps(found));
    const Draw draw = [this](int a, int b) { return a + rng_.below(b - a + 1); };
    GateList within = list_of(close_within_gates(found, draw));
    const auto size = [this](GateList& closed) {
      const int depth = scheduler_.settle(closed.gates);
      return std::tuple(depth, closed.count());
    };
    return size(within) < size(by_swaps) ? within : by_swaps;
  }

  void offer(int depth, const GateList& list) {
    if (!front_.offer(depth, list)) return;
    assert(implements(list, m_) && depth_of(list.gates, n_) <= depth);
    meter_.better(list.count(), depth);
  }

  void anneal(GateList list, float gate, std::uint64_t steps, int round) {
    if (meter_.ended() || list.gates.empty()) return;
    // The small windows need no large table, and little time has no use for it.
    const int largest = std::min(n_, round == 0 ? 4 : most_window_wires);
    DepthRewriter rewriter(n_, largest, options_.permuted, rng_);
    rewriter.enter(list.gates, {2, gate, 1.0F / static_cast<float>(list.count())});
    Walk<DepthRewriter> walk(std::move(list), rewriter);
    const Cooling heat{n_ < 24 ? 0.4F : n_ < 48 ? 0.3F : 0.2F, 0.05F};
    const float uphill = n_ < 24 ? 0.3F : 0.1F;
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
  const ShallowOptions& options_;
  Rng rng_;
  Meter meter_;
  Scheduler scheduler_;
  Front front_;
};

}  // namespace

std::vector<LayeredCircuit> search_shallow_cnot(const BitMatrix& m, const ShallowOptions& options,
                                                const Effort& effort) {
  return ShallowSearch(m, options, effort).run();
}

}  // namespace zelt::braidwerk::internal
