#include "zeltbraidwerk/clifford/search/internal/search.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

#include "zeltbraidwerk/clifford/search/internal/beams.h"
#include "zeltbraidwerk/clifford/search/internal/closing.h"
#include "zeltbraidwerk/clifford/search/internal/device_search.h"
#include "zeltbraidwerk/clifford/search/internal/few_wires.h"
#include "zeltbraidwerk/clifford/search/internal/layered_form.h"
#include "zeltbraidwerk/clifford/search/internal/operator_bound.h"
#include "zeltbraidwerk/clifford/search/internal/operator_layers.h"
#include "zeltbraidwerk/clifford/search/internal/placed_rewriter.h"
#include "zeltbraidwerk/clifford/search/internal/starts.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/clifford/search/internal/window_rewriter.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/search/internal/beam.h"
#include "zeltbraidwerk/search/internal/depth_judge.h"
#include "zeltbraidwerk/search/internal/driver.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr const CliffordTuning& tuning = clifford_tuning;

/// Circuits with free outputs come from beams and walks, also where outputs are wanted in place:
/// closing one is better than what any search finds in place from the start.
class CliffordSearch : public SearchBase<GateList> {
 public:
  CliffordSearch(const PauliFrame& images, const Task& task, const Effort& effort,
                 OnFewQubits on_few)
      : SearchBase(task, effort),
        images_(images),
        wires_(images.qubits()),
        finds_fewest_(on_few == OnFewQubits::finds_fewest && !task.by_depth()),
        beams_(images) {
    meter_.prove(bound_of_operator(beams_.operator_rows(), task.outputs, nullptr));
  }

  static Schedule schedule() { return tuning.rounds; }

  void first() {
    if (task_.start != nullptr) {
      shorten(*task_.start);
      offer(*task_.start);
    }
    shorten(eliminated_list(images_, Outputs::anywhere));
    offer(task_.in_place() ? eliminated_list(images_, task_.outputs) : shortest_.circuit());
    if (!meter_.proven()) make_first_circuits();
    nothing_left_ = meter_.proven();
    if (nothing_left_) return;
    if (!task_.in_place()) {
      offer(shortest_.circuit());
    } else if (wires_ <= tuning.quick_wires || !meter_.ended()) {
      // With more effort a greedy run that was cut would lead to another circuit to close.
      offer(with_outputs_in_place(shortest_.circuit(), window_wires(0), rng_));
    }
    if (finds_fewest_ && wires_ == 5 && !meter_.ended()) find_fewest_of_five();
  }

  bool finished() const {
    const CircuitSize& size = incumbent_.size();
    return nothing_left_ || (task_.by_depth() ? size.depth <= 1 : has_table() || size.count <= 1);
  }

  void round(const Round& round) {
    if (finds_fewest_ && wires_ == 6 && round.number >= tuning.first_for_fewest) {
      find_fewest_of_six();
    }
    task_.in_place() ? round_in_place(round) : round_freely(round);
  }

 private:
  bool has_table() const { return wires_ <= tuning.table_wires; }
  /// The layered form has few layers on many qubits.
  bool takes_layers() const { return task_.by_depth() && wires_ > tuning.two_sided_wires; }
  /// Beams of whole layers find fewer on few qubits. On the fewest, the layers that swaps take in
  /// place are too many.
  bool takes_whole_layers() const {
    const int few = task_.in_place() ? tuning.two_sided_wires : tuning.table_wires;
    return task_.by_depth() && wires_ > few && wires_ <= tuning.whole_layer_wires;
  }

  void make_first_circuits() {
    const bool quick = wires_ <= tuning.quick_wires;
    if (takes_layers() && (quick || !meter_.ended())) {
      const GateList by_edges = layered(1);
      offer(by_edges);
      graphs_by_ = GraphsBy::blocks;
      const GateList by_blocks = layered(1);
      offer(by_blocks);
      if (depth_of(by_edges.gates, wires_) < depth_of(by_blocks.gates, wires_)) {
        graphs_by_ = GraphsBy::edges;
      }
    }
    if (wires_ < 2) return;
    if (!quick && !task_.by_depth() && !meter_.ended()) offer_layered_by_count();
    if (has_table()) {
      shortest_ = Smallest<GateList>(Objective::count);
      shorten(shortest_list(images_, Outputs::anywhere, rng_));
      const GateList shortest = shortest_list(images_, task_.outputs, rng_);
      offer(shortest);
      meter_.prove({shortest.count(), layers_to_hold(shortest.count(), wires_)});
      return;
    }
    const Effort no_limit;
    Meter unlimited(no_limit);
    if (takes_whole_layers()) {
      offer_whole_layers(0, wires_ <= tuning.quick_layer_wires ? unlimited : meter_);
    }
    shorten(beam(beams_.side_for(0), 1, quick ? unlimited : meter_));
    if (wires_ > tuning.two_sided_wires && wires_ <= tuning.quick_two_sided) {
      shorten(beam(Side::both, 1, unlimited));
    }
  }

  void offer_layered_by_count() {
    try {
      const StopScope scope(meter_.control(), true);  // there is a circuit already
      const GateList found = layered_list_by_count(beams_.operator_rows(), rng_);
      if (!task_.in_place()) shorten(found);
      offer(found);
    } catch (const Stopped&) {
    }
  }
  Effort in_time(std::uint64_t steps) const {
    Effort effort;
    effort.control = meter_.control();
    effort.steps = steps;
    return effort;
  }

  /// What is left to do is to make its layers fewer.
  void find_fewest_of_five() {
    FewWireSearch<5> search(beams_.operator_rows(), task_.outputs, rng_);
    find_fewest(search, meter_.control(), tuning.most_tries_on_five);
  }

  /// Goes on where the round before ended, in half of the time that is left.
  void find_fewest_of_six() {
    if (has_fewest_ || meter_.ended()) return;
    const Control control = meter_.control().for_half_the_time();
    if (!on_six_) {
      if (!has_time_for_table(control)) return;
      try {
        const StopScope scope(control, true);  // there is a circuit already
        on_six_.emplace(beams_.operator_rows(), task_.outputs, rng_on_six_);
      } catch (const Stopped&) {
        return;
      }
    }
    const bool by_time = control.deadline && meter_.effort().steps == Effort().steps;
    const std::uint64_t tries =
        meter_.steps() * (by_time ? tuning.tries_of_timed_step : tuning.tries_of_step);
    find_fewest(*on_six_, control, std::min(tries, tuning.most_tries_on_six),
                incumbent_.size().count);
  }
  static bool has_time_for_table(const Control& control) {
    if (!control.deadline) return true;
    const std::chrono::duration<double> left = *control.deadline - Control::Clock::now();
    return left.count() > tuning.seconds_for_table ||
           (left.count() > tuning.seconds_on_six && ClassTable<6>::is_at_hand());
  }

  template <class Search, class... Limits>
  void find_fewest(Search& search, const Limits&... limits) {
    if (const std::optional<GateList> fewest = search.run(limits...)) {
      if (!task_.in_place()) shorten(*fewest);
      offer(*fewest);
      has_fewest_ = true;
    }
    meter_.prove({search.least(), layers_to_hold(search.least(), wires_)});
  }

  void round_freely(const Round& round) {
    const WindowRewriter rewriter(window_wires(round.number));
    begin_anew(round);
    if (meter_.ended()) return;
    offer(shortest_.circuit());
    shorten(walked(shortest_.circuit(), rewriter, round.steps));
    layer_again(round);
    offer_whole_layers(tuning.whole_layers * round.steps, meter_);
    anneal(round.number % 2 == 0 ? shortest_.circuit() : incumbent_.circuit(), rewriter,
           round.steps);
  }

  void round_in_place(const Round& round) {
    const PlacedRewriter rewriter(window_wires(round.number));
    if (begin_anew(round)) {
      shorten(walked(shortest_.circuit(), WindowRewriter(window_wires(round.number)),
                     round.steps / tuning.new_part));
      if (meter_.ended()) return;
      const GateList closed =
          with_outputs_in_place(shortest_.circuit(), window_wires(round.number), rng_);
      offer(closed);
      walked(closed, rewriter, round.steps / tuning.closed_part);
    }
    walked(incumbent_.circuit(), rewriter, round.steps / tuning.best_part);
    layer_again(round);
    offer_whole_layers(tuning.whole_layers * round.steps, meter_);
    anneal(incumbent_.circuit(), rewriter, round.steps / tuning.best_part);
  }

  /// A beam and half a walk from there. False where the fewest gates are known, or the round has no
  /// effort for it.
  bool begin_anew(const Round& round) {
    const Side side = beams_.side_for(round.number);
    const int width = has_table() || has_fewest_ ? 0 : beams_.width_for(side, round.steps);
    if (width == 0) return false;
    GateList found = beam(side, width, meter_);
    if (meter_.ended()) return false;
    shorten(walked(std::move(found), WindowRewriter(window_wires(round.number)),
                   round.steps / tuning.new_part));
    return true;
  }

  /// The shortest circuit where the beam finds none.
  GateList beam(Side side, int width, Meter& meter) {
    return beams_.run(side, width, rng_, meter).value_or(shortest_.circuit());
  }

  GateList layered(std::uint64_t steps) {
    return layered_list(beams_.operator_rows(), graphs_by_, task_.outputs, rng_, in_time(steps));
  }

  /// Once more with other labels, and the map searched longer.
  void layer_again(const Round& round) {
    if (!takes_layers()) return;
    const std::uint64_t steps = round.steps / tuning.layered_part;
    const GateList found =
        layered(tuning.layered_wires * steps / static_cast<std::uint64_t>(wires_));
    meter_.charge(steps);
    if (!meter_.ended()) offer(found);
  }

  /// A beam of whole layers, as wide as its steps pay for.
  void offer_whole_layers(std::uint64_t steps, Meter& meter) {
    if (!takes_whole_layers()) return;
    const auto n = static_cast<std::uint64_t>(wires_);
    const auto variants = static_cast<std::uint64_t>(tuning.layer_variants);
    const std::uint64_t price = variants * (n * n * n * n / 50 + 1);
    const auto width =
        static_cast<int>(std::clamp(steps / price, std::uint64_t{1}, tuning.most_layer_width));
    OperatorLayers problem(wires_, width > 1 ? tuning.layer_variants : 1, rng_, meter);
    BeamSearch<OperatorLayers> search(problem, {.width = width}, rng_, meter);
    for (const auto& [state, moves] : search.run(problem.start(beams_.operator_rows()))) {
      const GateList found = circuit_of(state.rows, problem.gates_of(moves));
      offer(task_.in_place() ? with_layers_of_swaps(found) : found);
    }
  }

  void shorten(const GateList& list) { shortest_.offer(list, size_of(list)); }
  void offer(const GateList& list) { incumbent_.offer(list, size_of(list), Origin::certain); }

  GateList walked(GateList list, WindowRewriter rewriter, std::uint64_t steps) {
    walk_to_shallow(list, rewriter, steps, tuning.cooling, rng_, meter_,
                    [this](const GateList& shorter, const CircuitSize& size) {
                      if (task_.in_place()) return;
                      incumbent_.offer(shorter, size, Origin::lowering_count);
                    });
    return list;
  }

  void walked(GateList list, PlacedRewriter rewriter, std::uint64_t steps) {
    walk_to_shallow(list, rewriter, steps, tuning.cooling_in_place, rng_, meter_,
                    [this](const GateList& shorter, const CircuitSize& size) {
                      incumbent_.offer(shorter, size, Origin::lowering_count);
                    });
  }

  template <class Rewriter>
  void anneal(const GateList& list, const Rewriter& rewriter, std::uint64_t steps) {
    if (!task_.by_depth()) return;
    anneal_depth(list, rewriter, steps, rng_, meter_, [this](const GateList& found, int depth) {
      incumbent_.offer(found, {found.count(), depth}, Origin::certain);
    });
  }

  const PauliFrame& images_;
  int wires_;
  bool finds_fewest_;
  CliffordBeams beams_;
  Smallest<GateList> shortest_{Objective::count};  // with free outputs
  GraphsBy graphs_by_ = GraphsBy::edges;           // which has fewer layers
  bool nothing_left_ = false;
  bool has_fewest_ = false;                    // found by FewWireSearch
  Rng rng_on_six_{task_.seed, ~task_.stream};  // walks are the same with and without it
  std::optional<FewWireSearch<6>> on_six_;
};

GateList operator_list(const PauliFrame& images, const Task& task, const Effort& effort,
                       OnFewQubits on_few) {
  stop_point();
  if (task.device != nullptr) return search_clifford_on_device(OperatorRows(images), task, effort);
  CliffordSearch search(images, task, effort, on_few);
  run_search(search);
  return search.incumbent().circuit();
}

}  // namespace

bool are_images_of_operator(const PauliFrame& images) {
  const int n = images.qubits();
  BitMatrix wanted(2 * n, 2 * n);
  for (int q = 0; q < n; ++q) {
    wanted.set(q, n + q);
    wanted.set(n + q, q);
  }
  return images.anticommuting() == wanted;
}

GateList clifford_list(const PauliFrame& images, const Task& task, const Effort& effort,
                       OnFewQubits on_few) {
  if (!are_images_of_operator(images)) return GateList(images.qubits(), {});
  return operator_list(images, task, effort, on_few);
}

CliffordCircuit search_operator(const PauliFrame& images, const Task& task, const Effort& effort,
                                OnFewQubits on_few) {
  return to_circuit(operator_list(images, task, effort, on_few), images);
}

CliffordCircuit search_clifford(const PauliFrame& images, const Task& task, const Effort& effort,
                                OnFewQubits on_few) {
  return to_circuit(clifford_list(images, task, effort, on_few), images);
}

}  // namespace zelt::braidwerk::internal
