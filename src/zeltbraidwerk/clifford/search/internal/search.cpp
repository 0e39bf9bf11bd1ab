#include "zeltbraidwerk/clifford/search/internal/search.h"

#include <algorithm>
#include <tuple>
#include <type_traits>
#include <utility>

#include "zeltbraidwerk/clifford/search/internal/closing.h"
#include "zeltbraidwerk/clifford/search/internal/device_elimination.h"
#include "zeltbraidwerk/clifford/search/internal/layered_form.h"
#include "zeltbraidwerk/clifford/search/internal/one_sided.h"
#include "zeltbraidwerk/clifford/search/internal/operator_bound.h"
#include "zeltbraidwerk/clifford/search/internal/placed_rewriter.h"
#include "zeltbraidwerk/clifford/search/internal/reduction.h"
#include "zeltbraidwerk/clifford/search/internal/starts.h"
#include "zeltbraidwerk/clifford/search/internal/window_rewriter.h"
#include "zeltbraidwerk/search/internal/depth_judge.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {
namespace {

/// A list and its layers.
struct Layered {
  GateList list;
  int depth;

  explicit Layered(GateList gates)
      : list(std::move(gates)), depth(depth_of(list.gates, list.wires())) {}
};

/// Circuits with free outputs come from beams and walks, also where outputs are wanted in place:
/// closing one is better than what any search finds in place from the start.
class CliffordSearch {
 public:
  CliffordSearch(const PauliFrame& images, const Task& task, const Effort& effort)
      : images_(images),
        task_(task),
        rng_(task.seed, task.stream),
        meter_(effort, task.objective),
        wires_(images.qubits()),
        problem_(wires_, cost_for(wires_)),
        one_sided_(wires_),
        start_(problem_.start(OperatorRows(images))),
        sparse_(start_.rows.weight() < 3 * wires_ * wires_ / 2),
        shortest_(GateList(wires_, {})),
        best_(GateList(wires_, {})) {}

  CliffordResult run() {
    if (are_images_of_operator(images_)) {
      meter_.prove(bound_of_operator(start_.rows, task_.outputs, task_.device));
      if (task_.device != nullptr) {
        search_on_device();
      } else {
        begin();
        if (!meter_.proven()) in_place() ? search_in_place() : search_freely();
      }
    }
    return {to_circuit(best_.list, images_), best_.list.count(), best_.depth};
  }

 private:
  bool in_place() const { return task_.in_place(); }
  bool go_on() {
    const bool optimal =
        task_.by_depth() ? best_.depth <= 1 : wires_ <= 4 || best_.list.count() <= 1;
    return !optimal && !meter_.ended();
  }

  static constexpr int quick_wires = 256;  ///< a greedy run takes a second
  static constexpr int most_two_sided = 18;
  static constexpr int quick_two_sided = 40;  ///< a greedy run takes a twentieth of a second

  void begin() {
    shortest_ = Layered(eliminated_list(images_, Outputs::anywhere));
    best_ = in_place() ? Layered(eliminated_list(images_, task_.outputs)) : shortest_;
    report();
    if (meter_.proven()) return;
    if (takes_layers() && (wires_ <= quick_wires || !meter_.ended())) offer(layered(1));
    if (wires_ > 4) {
      shorten(shortest_, beam(start_for(0), 1, wires_ <= quick_wires ? unlimited_ : meter_));
      if (wires_ > most_two_sided && wires_ <= quick_two_sided) {
        shorten(shortest_, beam(Start::both, 1, unlimited_));
      }
    } else if (wires_ > 1) {
      shortest_ = Layered(shortest_list(images_, Outputs::anywhere, rng_));
      const GateList shortest = shortest_list(images_, task_.outputs, rng_);
      offer(shortest);
      meter_.prove({shortest.count(), layers_to_hold(shortest.count(), wires_)});
    }
  }

  void search_freely() {
    offer(shortest_.list);
    for (int round = 0; go_on(); ++round) {
      const WindowRewriter rewriter(window_of(round));
      challenge(round);
      if (meter_.ended()) break;
      offer(shortest_.list);
      walk(shortest_, rewriter, steps_of(round));
      layer_again(round);
      if (task_.by_depth()) anneal(round % 2 == 0 ? shortest_ : best_, rewriter, steps_of(round));
    }
  }

  void search_in_place() {
    // With more effort a greedy run that was cut would have led to another circuit to close.
    if (wires_ > quick_wires && meter_.ended()) return;
    offer(with_outputs_in_place(shortest_.list, window_of(0), rng_));
    for (int round = 0; go_on(); ++round) {
      const PlacedRewriter rewriter(window_of(round));
      if (challenge(round)) {
        walk(shortest_, WindowRewriter(window_of(round)), steps_of(round) / 2);
        if (meter_.ended()) break;
        Layered closed(with_outputs_in_place(shortest_.list, window_of(round), rng_));
        offer(closed.list);
        walk(closed, rewriter, steps_of(round) / 4);
      }
      Layered next = best_;
      walk(next, rewriter, steps_of(round) / 2);
      layer_again(round);
      if (task_.by_depth()) anneal(best_, rewriter, steps_of(round) / 2);
    }
  }

  /// Eliminations on the device, and walks on windows of its edges. Hot ones, as few circuits of a
  /// window are equally short.
  void search_on_device() {
    DeviceElimination problem(*task_.device);
    const DeviceElimination::State start = problem.start(start_.rows);
    best_ = eliminated_on_device(problem, start, 1, unlimited_);
    report();
    for (int round = 0; best_.list.count() > 1 && !meter_.ended(); ++round) {
      const PlacedRewriter rewriter(window_of(round), *task_.device, task_.outputs);
      if (const int width = elimination_width(round); width > 0) {
        Layered found = eliminated_on_device(problem, start, width, meter_);
        if (meter_.ended()) break;
        offer(found.list);
        walk(found, rewriter, steps_of(round) / 2);
      }
      Layered next = best_;
      walk(next, rewriter, steps_of(round));
      if (task_.by_depth()) anneal(best_, rewriter, steps_of(round));
    }
  }

  /// The widest beam that takes no more time than the walk of the round.
  int elimination_width(int round) const {
    const auto n = static_cast<std::uint64_t>(wires_);
    const std::uint64_t price = n * n * n * std::min<std::uint64_t>(n, 24) / 8 + 1;  // in windows
    int width = 0;
    for (const int wider : {1, 3, 10, 30, 100, 300}) {
      if (static_cast<std::uint64_t>(wider) * price <= steps_of(round)) width = wider;
    }
    return width;
  }

  Layered eliminated_on_device(DeviceElimination& problem, const DeviceElimination::State& start,
                               int width, Meter& meter) {
    BeamOptions options;
    options.width = width;
    options.patience = wires_;
    options.noise = 0.01;
    BeamSearch<DeviceElimination> search(problem, options, rng_, meter);
    const auto found = search.run(start);
    return found.empty() ? best_ : Layered(circuit_of(found[0].state.rows, found[0].state.gates));
  }

  static std::uint64_t steps_of(int round) { return std::uint64_t{1} << std::min(14 + round, 50); }
  /// The small windows need no large table, and little effort has no use for it.
  static int window_of(int round) { return round == 0 ? 3 : 4; }

  /// Dense operators on many qubits are brought down from one side, others also from both.
  enum class Start { behind, before, both };
  Start start_for(int round) const {
    if (wires_ <= most_two_sided || (sparse_ && round % 2 == 1)) return Start::both;
    return (sparse_ ? round / 2 : round) % 2 == 0 ? Start::behind : Start::before;
  }

  /// A new beginning on more than four qubits: a beam, and half a walk from there. From both sides
  /// it takes no more time than four walks of the round do, and from one side more the more qubits
  /// there are, as walks bring less there.
  bool challenge(int round) {
    const Start start = start_for(round);
    const bool both = start == Start::both;
    const auto n = static_cast<std::uint64_t>(wires_);
    const std::uint64_t price =  // in windows
        both ? n * n * n * n / 512 : n * n * std::min<std::uint64_t>(n, 64) / 100;
    int width = 0;
    for (const int wider : {1, 3, 10, 30, 100, 300, 1000, 3000}) {
      const bool allowed = static_cast<std::uint64_t>(wider) * price <= steps_of(round);
      if (allowed && (!both || wider <= 300)) width = wider;
    }
    if (width == 0 || wires_ <= 4) return false;
    Layered found = beam(start, width, meter_);
    if (meter_.ended()) return false;
    walk(found, WindowRewriter(window_of(round)), steps_of(round) / 2);
    shorten(shortest_, std::move(found));
    return true;
  }

  /// The shortest circuit if it finds none.
  Layered beam(Start start, int width, Meter& meter) {
    BeamOptions options;
    options.width = width;
    options.patience = 30 + wires_;
    if (start == Start::both) {
      options.noise = 1e-3 * problem_.small_change();
      BeamSearch<OperatorReduction> search(problem_, options, rng_, meter);
      const auto found = search.run(start_);
      return found.empty() ? shortest_ : Layered(circuit_of(found[0].state.rows, found[0].moves));
    }
    const int side = start == Start::behind ? 0 : 1;
    options.noise = 1e-3 * one_sided_.small_change();
    BeamSearch<OneSidedReduction> search(one_sided_, options, rng_, meter);
    const auto found = search.run(one_sided_.start(start_.rows, side));
    return found.empty() ? shortest_
                         : Layered(one_sided_.circuit(found[0].state, found[0].moves, side));
  }

  /// The layered form has few layers on many qubits.
  bool takes_layers() const { return task_.by_depth() && wires_ > most_two_sided; }
  GateList layered(std::uint64_t steps) {
    Effort effort;
    effort.control = meter_.control();
    effort.steps = steps;
    return layered_list(start_.rows, task_.outputs, rng_, effort);
  }

  /// Once more with other labels, and the map searched longer. That takes a quarter of the round's
  /// steps, as a step of it takes about as long as a gate on every fourth wire.
  void layer_again(int round) {
    if (!takes_layers()) return;
    const std::uint64_t steps = steps_of(round) / 4;
    const GateList found = layered(4 * steps / static_cast<std::uint64_t>(wires_));
    for (std::uint64_t k = 0; k < steps; ++k) meter_.step();
    if (!meter_.ended()) offer(found);
  }

  static void shorten(Layered& shortest, Layered found) {
    const auto size = [](const Layered& circuit) {
      return std::tuple(circuit.list.count(), circuit.depth);
    };
    if (size(found) < size(shortest)) shortest = std::move(found);
  }

  /// For few gates, and few layers among equals.
  template <class Rewriter>
  void walk(Layered& circuit, Rewriter rewriter, std::uint64_t steps) {
    constexpr bool placed = std::is_same_v<Rewriter, PlacedRewriter>;
    const Cooling cooling = task_.device != nullptr ? Cooling{1.0F, 0.1F}
                            : placed                ? Cooling{0.1F, 0.003F}
                                                    : Cooling{0.3F, 0.003F};
    const bool wanted = in_place() == placed || task_.device != nullptr;
    walk_round(circuit.list, rewriter, steps, cooling, rng_, meter_,
               [&](const GateList& list, bool shorter) {
                 const int depth = depth_of(list.gates, wires_);
                 const bool take = shorter || depth < circuit.depth;
                 if (take) circuit.depth = depth;
                 // Few gates are worth less than few layers, which more effort might lose again.
                 const bool lasts = !task_.by_depth() || !meter_.ended();
                 if (take && wanted && lasts) offer(list);
                 return take;
               });
  }

  template <class Rewriter>
  void anneal(const Layered& circuit, const Rewriter& rewriter, std::uint64_t steps) {
    anneal_depth(circuit.list, rewriter, steps, rng_, meter_,
                 [&](const GateList& list, int depth) { offer(list, depth); });
  }

  void offer(const GateList& list) { offer(list, depth_of(list.gates, wires_)); }
  void offer(const GateList& list, int depth) {
    const int least = best_.list.count();
    const bool better = task_.by_depth()
                            ? std::tuple(depth, list.count()) < std::tuple(best_.depth, least)
                            : std::tuple(list.count(), depth) < std::tuple(least, best_.depth);
    if (!better) return;
    best_.list = list;
    best_.depth = depth;
    report();
  }
  void report() { meter_.better(best_.list.count(), best_.depth); }

  const PauliFrame& images_;
  const Task& task_;
  Rng rng_;
  Meter meter_;
  const Effort no_limit_;
  Meter unlimited_{no_limit_};
  int wires_;
  OperatorReduction problem_;
  OneSidedReduction one_sided_;
  OperatorReduction::State start_;
  bool sparse_;
  Layered shortest_;  ///< with free outputs
  Layered best_;      ///< of those wanted
};

}  // namespace

bool are_images_of_operator(const PauliFrame& images) {
  const int n = images.qubits();
  for (int r = 0; r < 2 * n; ++r) {
    for (int s = r + 1; s < 2 * n; ++s) {
      if (images.commute(r, s) == (s == r + n)) return false;
    }
  }
  return true;
}

CliffordResult search_clifford(const PauliFrame& images, const Task& task, const Effort& effort) {
  return CliffordSearch(images, task, effort).run();
}

}  // namespace zelt::braidwerk::internal
