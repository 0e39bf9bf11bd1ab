#include "zeltbraidwerk/clifford/search/internal/state_device_search.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/code.h"
#include "zeltbraidwerk/clifford/search/internal/encoder_list.h"
#include "zeltbraidwerk/clifford/search/internal/placed_elimination.h"
#include "zeltbraidwerk/clifford/search/internal/placed_rewriter.h"
#include "zeltbraidwerk/clifford/search/internal/state_bound.h"
#include "zeltbraidwerk/clifford/search/internal/state_list.h"
#include "zeltbraidwerk/clifford/search/internal/tree_elimination.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/search/internal/depth_judge.h"
#include "zeltbraidwerk/search/internal/driver.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr const PlacedStateTuning& tuning = placed_state_tuning;

std::size_t at(int k) {
  return static_cast<std::size_t>(k);
}

std::vector<WireString> strings_of(const PauliFrame& frame) {
  std::vector<WireString> strings(at(frame.rows()));
  for (int r = 0; r < frame.rows(); ++r) {
    for (int q = 0; q < frame.qubits(); ++q) {
      strings[at(r)].x |= Word{frame.x_planes().get(q, r)} << q;
      strings[at(r)].z |= Word{frame.z_planes().get(q, r)} << q;
    }
  }
  return strings;
}

std::vector<int> inverse(const std::vector<int>& order) {
  std::vector<int> result(order.size());
  for (std::size_t k = 0; k < order.size(); ++k) result[at(order[k])] = static_cast<int>(k);
  return result;
}

BitGraph complete(int n) {
  BitGraph graph(n);
  for (int b = 1; b < n; ++b) {
    for (int a = 0; a < b; ++a) graph.join(a, b);
  }
  return graph;
}

/// The beams of placed states, on up to 64 wires.
class PlacedBeams {
 public:
  PlacedBeams(const PauliFrame& stabilisers, const BitGraph& device, Rng& rng)
      : n_(device.size()), rng_(rng), by_letters_(complete(n_)), weights_(device) {
    light_ = PlacedGroup(strings_of(stabilisers), tuning.placed_spare, by_letters_);
    light_.lighten(tuning.first_sets, rng, by_letters_);
    in_place_ = PlacedGroup(strings_of(stabilisers), tuning.spare, weights_);
    in_place_.lighten(tuning.first_sets, rng, weights_);
  }

  /// A circuit for the state as it stands on the wires; none where the effort ended.
  std::optional<GateList> in_place(int width, Meter& meter) { return run(in_place_, width, meter); }

  /// One for a random placement that puts its light generators on few wires each.
  std::optional<GateList> anywhere(int width, Meter& meter) {
    std::vector<int> wires(at(n_));
    const PlacedGroup group = placed(wires, meter);
    std::optional<GateList> list = run(group, width, meter);
    if (list) rename_outputs(*list, wires);
    return list;
  }

  /// The state that the first gates of a list make, on its wires.
  std::optional<GateList> renewed(const GateList& list, int count, Meter& meter) {
    PlacedGroup group(strings_of(code_after(list, count, 0, false).stabilisers), tuning.spare,
                      weights_);
    group.lighten(tuning.begun_sets, rng_, weights_);
    return run(group, 1, meter);
  }

 private:
  /// From a random placement, exchanges the qubits of two wires as long as the generators get
  /// lighter, and then looks for other generators.
  PlacedGroup placed(std::vector<int>& wires, Meter& meter) {
    std::iota(wires.begin(), wires.end(), 0);
    for (std::size_t k = wires.size(); k > 1; --k) {
      std::swap(wires[k - 1], wires[at(rng_.below(static_cast<int>(k)))]);
    }
    PlacedGroup group = light_.renamed(wires, weights_);
    while (exchange_wires(group, wires) && !meter.ended()) {
      stop_point();
      group = light_.renamed(wires, weights_);
      meter.charge(static_cast<std::uint64_t>(n_ * n_) / tuning.exchanges_per_step);
    }
    group.lighten(tuning.begun_sets, rng_, weights_);
    return group;
  }

  /// Once through all pairs; false where none makes the generators lighter.
  bool exchange_wires(const PlacedGroup& group, std::vector<int>& wires) {
    std::vector<Word> supports;
    for (int k = 0; k < n_; ++k) supports.push_back(group.element(k).support());
    std::vector<int> qubits = inverse(wires);
    const auto worth = [&](Word support) { return PlacedGroup::worth_of(weights_(support)); };
    bool better = false;
    for (int a = 1; a < n_; ++a) {
      for (int b = 0; b < a; ++b) {
        const Word both = Word{1} << a | Word{1} << b;
        double gain = 0;
        for (const Word support : supports) {
          if (std::has_single_bit(support & both)) gain += worth(support ^ both) - worth(support);
        }
        if (gain < tuning.least_gain) continue;
        better = true;
        for (Word& support : supports) {
          if (std::has_single_bit(support & both)) support ^= both;
        }
        std::swap(qubits[at(a)], qubits[at(b)]);
      }
    }
    wires = inverse(qubits);
    return better;
  }

  std::optional<GateList> run(const PlacedGroup& group, int width, Meter& meter) {
    PlacedElimination problem(weights_, rng_);
    const BeamOptions options{.width = width, .patience = n_, .noise = tuning.noise};
    const std::uint64_t before = meter.steps();
    const auto found =
        BeamSearch<PlacedElimination>(problem, options, rng_, meter).run(problem.start(group));
    const auto size = static_cast<std::uint64_t>(n_);
    meter.charge(size * size * size / tuning.states_per_step * (meter.steps() - before));
    if (found.empty()) return std::nullopt;
    return backwards(found[0].state.letters, found[0].state.gates);
  }

  /// The circuit that is undone by gates which leave a letter on each wire.
  GateList backwards(const std::vector<End>& letters, const std::vector<Gate>& apart) const {
    GateList list(n_, {});
    for (const End end : letters) {
      std::swap(list.frame[end], list.frame[end_of(wire_of(end), label_z)]);
    }
    for (auto gate = apart.rbegin(); gate != apart.rend(); ++gate) {
      list.gates.push_back({list.frame[gate->a], list.frame[gate->b]});
    }
    return list;
  }

  static void rename_outputs(GateList& list, const std::vector<int>& wires) {
    const std::vector<int> qubits = inverse(wires);
    for (std::size_t end = 0; end < list.frame.size(); ++end) {
      const End from = list.frame[end];
      list.frame[end] = end_of(qubits[at(wire_of(from))], label_of(from));
    }
  }

  int n_;
  Rng& rng_;
  SupportWeights by_letters_;
  SupportWeights weights_;
  PlacedGroup light_;     ///< by letters alone
  PlacedGroup in_place_;  ///< by weights on the device
};

class PlacedStateSearch : public SearchByBoth<GateList> {
 public:
  PlacedStateSearch(const PauliFrame& stabilisers, const Task& task, const Effort& effort)
      : SearchByBoth(task, effort), stabilisers_(stabilisers), wires_(stabilisers.qubits()) {
    const WireGroups entangled = entangled_groups(stabilisers);
    meter_.prove(bound_of_state(stabilisers, entangled.joins(), entangled.largest()));
  }

  static Schedule schedule() { return tuning.rounds; }

  void first() {
    if (task_.start != nullptr) offer(*task_.start);
    offer(eliminated_on_device(stabilisers_, *task_.device));
    if (finished() || wires_ > tuning.beam_wires || wires_ < 2) return;
    beams_.emplace(stabilisers_, *task_.device, rng_);
    const Effort unlimited;
    Meter own(unlimited);
    offer(beams_->in_place(1, wires_ <= tuning.quick_wires ? own : meter_));
    for (int k = 0; k < tuning.first_placements && !meter_.ended(); ++k) begin_anew(1);
  }

  bool finished() const {
    return meter_.proven() ||
           (!task_.by_depth() && incumbent_.size().count <= meter_.bound().count);
  }

  void round(const Round& round) {
    const PlacedRewriter rewriter(window_wires(round.number), *task_.device, task_.outputs,
                                  Inputs::zeros);
    walk(shortest(), rewriter, round.steps);
    if (task_.by_depth()) {
      anneal(round.number % 2 == 0 ? shortest() : shallowest(), rewriter,
             tuning.anneal_walks * round.steps);
    }
    if (!beams_) return;
    renew(tuning.renewals << std::min(round.number, tuning.most_renewal_doublings));
    const int width = tuning.width << std::min(round.number, tuning.most_doublings);
    for (int k = 0; k < tuning.placements && !meter_.ended(); ++k) {
      std::optional<GateList> found = begin_anew(width);
      if (!found) continue;
      if (task_.by_depth()) anneal(*found, rewriter, round.steps);
      walk(std::move(*found), rewriter, round.steps / tuning.new_part);
    }
  }

 private:
  using SearchByBoth::offer;
  void offer(const GateList& list) { offer(list, size_of(list), Origin::certain); }
  void offer(const std::optional<GateList>& list) {
    if (list) offer(*list);
  }

  std::optional<GateList> begin_anew(int width) {
    std::optional<GateList> found =
        task_.in_place() ? beams_->in_place(width, meter_) : beams_->anywhere(width, meter_);
    if (meter_.ended()) return std::nullopt;
    offer(found);
    return found;
  }

  void walk(GateList list, PlacedRewriter rewriter, std::uint64_t steps) {
    walk_to_shallow(list, rewriter, steps, tuning.cooling, rng_, meter_,
                    [this](const GateList& shorter, const CircuitSize& size) {
                      offer(shorter, size, Origin::lowering_count);
                    });
  }

  void anneal(const GateList& list, const PlacedRewriter& rewriter, std::uint64_t steps) {
    anneal_depth(list, rewriter, steps, rng_, meter_, [this](const GateList& found, int depth) {
      offer(found, {found.count(), depth}, Origin::certain);
    });
  }

  /// Searches again for what leads up to random gates, from the best circuit on and then from what
  /// comes of it, as long as it is no longer.
  void renew(int tries) {
    GateList now = shortest();
    for (int k = 0; k < tries && now.count() > 1 && !meter_.ended(); ++k) {
      const int cut = 2 + rng_.below(now.count() - 1);
      std::optional<GateList> begin = beams_->renewed(now, cut, meter_);
      if (!begin || begin->count() > cut || meter_.ended()) continue;
      now = continued(std::move(*begin), now, cut);
      offer(now);
    }
  }

  const PauliFrame& stabilisers_;
  int wires_;
  std::optional<PlacedBeams> beams_;
};

}  // namespace

CliffordCircuit search_state_on_device(const PauliFrame& stabilisers, const Task& task,
                                       const Effort& effort) {
  PlacedStateSearch search(stabilisers, task, effort);
  run_search(search);
  const StopScope::Suspended to_the_end;
  return state_circuit(search.incumbent().circuit(), stabilisers);
}

}  // namespace zelt::braidwerk::internal
