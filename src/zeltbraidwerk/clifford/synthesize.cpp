#include "zeltbraidwerk/clifford/synthesize.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <utility>

#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/clifford/internal/synthesize.h"
#include "zeltbraidwerk/clifford/search/internal/circuit.h"
#include "zeltbraidwerk/clifford/search/internal/graph_classes.h"
#include "zeltbraidwerk/clifford/search/internal/layered_form.h"
#include "zeltbraidwerk/clifford/search/internal/operator_bound.h"
#include "zeltbraidwerk/clifford/search/internal/search.h"
#include "zeltbraidwerk/clifford/search/internal/starts.h"
#include "zeltbraidwerk/clifford/search/internal/state_search.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/graphs/internal/edge_paths.h"
#include "zeltbraidwerk/linear/search/internal/cut_bound.h"
#include "zeltbraidwerk/search/internal/known_circuit.h"
#include "zeltbraidwerk/search/internal/runs.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {

using synthesis::CliffordOptions;
using synthesis::SynthesisOptions;

namespace {

/// While it lives, kernels that ask the question of the caller alone also ask whether the scope of
/// this thread is over.
class QuestionInScope {
 public:
  QuestionInScope() : kept_(std::exchange(stop_question, StopScope::is_over)) {}
  ~QuestionInScope() { stop_question = kept_; }
  QuestionInScope(const QuestionInScope&) = delete;
  QuestionInScope& operator=(const QuestionInScope&) = delete;

 private:
  StopQuestion kept_;
};

std::optional<MadeCircuit> sized(CliffordCircuit found) {
  const CircuitSize size = found.size;
  return made_circuit(size, std::move(found));
}

void check_operator_options(const SynthesisOptions& options) {
  check_effort(options);
  const bool on_device = options.device != nullptr;
  check_method(options.method, synthesis::clifford_methods(on_device), on_device);
  check_search_options(options, {"auto", "search"});
  if (options.outputs != Outputs::in_place && options.outputs != Outputs::anywhere) {
    throw std::invalid_argument("outputs: got another value, wanted in_place or anywhere");
  }
}

/// With outputs where the circuit says that they are.
GateList list_of(const synthesis::KnownCircuit& known) {
  const int n = static_cast<int>(known.permutation.size());
  GateList list = to_list(known.gates, n);
  const WireFrame outputs(known.permutation);
  for (int wire = 0; wire < n; ++wire) {
    for (int label = 0; label < 4; ++label) {
      End& from = list.frame[end_of(wire, label)];
      from = end_of(outputs.output_on(wire), label_of(from));
    }
  }
  return list;
}

bool is_on_edges(const GateList& list, const BitGraph& device) {
  return std::ranges::all_of(list.gates, [&](const Gate& gate) {
    return device.joined(wire_of(gate.a), wire_of(gate.b));
  });
}

std::optional<GateList> start_of_operator(const PauliFrame& images, const SynthesisOptions& options,
                                          const std::optional<BitGraph>& device) {
  const int n = images.qubits();
  return known_start(options, n, list_of, [&](const GateList& list) {
    const std::vector<int>& wires = options.start->permutation;
    PauliFrame found = identity_images(n);
    for (const structures::Gate& gate : options.start->gates) found.apply(gate);
    for (int r = 0; r < 2 * n; ++r) {
      for (int q = 0; q < n; ++q) {
        const int wire = wires[static_cast<std::size_t>(q)];
        if (found.letter(r, wire) != images.letter(r, q)) return false;
      }
    }
    const bool fits = options.outputs == Outputs::anywhere || std::ranges::is_sorted(wires);
    return fits && (!device || is_on_edges(list, *device));
  });
}

// Over the square of the qubits.
constexpr double bytes_of_operator_run = 120;
constexpr double bytes_of_state_run = 100;
// The classes that a proof on six qubits keeps, which begins after so many steps or seconds.
constexpr double bytes_of_proof_on_six = 60e6;
constexpr std::uint64_t least_steps_on_six = 240'000;
constexpr double least_budget_on_six = 0.5;
constexpr double least_budget = 1;  // seconds that leave time for a look into a table

double bytes_of_operator_runs(int n, const SynthesisOptions& options) {
  const bool is_long = options.budget.value_or(0) > least_budget_on_six ||
                       options.steps.value_or(0) > least_steps_on_six;
  const bool proves = n == 6 && is_long && options.device == nullptr &&
                      options.objective == synthesis::Objective::count;
  return bytes_of_operator_run + (proves ? bytes_of_proof_on_six / (n * n) : 0);
}

constexpr int most_for_greedy = 256;  // qubits; a tenth of a second
constexpr int most_made_late = 1000;  // qubits; the plain circuit takes 20 ms, and the check 5

/// Whether half of all letters are there.
bool is_dense(const PauliFrame& images) {
  const std::vector<int> weights = images.weights();
  const auto n = static_cast<std::int64_t>(images.qubits());
  return std::accumulate(weights.begin(), weights.end(), std::int64_t{0}) > n * n;
}

/// What is made where the search has nothing yet. On the most qubits an elimination is given up
/// where it takes more gates than a layered form, which is made as soon.
CliffordCircuit plainly(const PauliFrame& images) {
  const int n = images.qubits();
  if (n <= most_for_greedy) return to_circuit(eliminated_list(images, Outputs::in_place), images);
  std::size_t most = no_limit;
  if (n > most_made_late) {
    most = is_dense(images) ? 0 : static_cast<std::size_t>(2.0 * n * n / std::log2(n));
  }
  const auto eliminated = eliminate_in_order(images, most);
  if (!eliminated) {
    Rng draws(0, 0);
    return to_circuit(layered_list_by_count(OperatorRows(images), draws), images);
  }
  CliffordCircuit found{inverted(eliminated->gates), in_order(n), {}};
  found.size = size_of(found.gates, n);
  return found;
}

void check_images(const PauliFrame& images) {
  if (!are_images_of_operator(images)) {
    throw std::invalid_argument("images: got strings that are images of X and Z under no operator");
  }
}

/// What a deadline or Ctrl-C finds in the place of a plain circuit: of many qubits, where it takes
/// long and a search longer, it is made and the images are checked before the search, in a run that
/// `stop` ends and no deadline.
CliffordCircuit made_before(const PauliFrame& images, const CliffordOptions& options) {
  synthesis::SynthesisOptions stops;
  stops.stop = options.stop;
  RunControl control(std::nullopt);
  const Lane lane{.method = "search", .runs = 1, .make = [&](int) {
                    {
                      const QuestionInScope in_kernels;
                      check_images(images);
                    }
                    return sized(plainly(images));
                  }};
  return std::move(best_of_runs({lane}, stops, control).as<CliffordCircuit>());
}

/// A second or less: a step takes the longer the more qubits there are. Enough for a greedy run at
/// least, which is shorter where generators are light, and left out where it takes ten seconds and
/// more. On a device steps are shorter, but for the windows of few wires, in which zeros come in.
std::uint64_t usual_state_steps(int n, bool on_device, bool is_light) {
  const auto size = static_cast<std::uint64_t>(n);
  const std::uint64_t area = size * size;
  const std::uint64_t light_run = n <= state_tuning.most_peeled ? 4 * size : 1;
  const std::uint64_t dense_run = n <= most_for_greedy ? area / 8 : 1;
  const std::uint64_t greedy_run = is_light ? light_run : dense_run;
  const std::uint64_t steps = std::min<std::uint64_t>(
      50'000, std::max(40'000'000 / std::max<std::uint64_t>(area, 1), greedy_run));
  return on_device ? std::min(4 * steps, std::max<std::uint64_t>(50'000, 1000 * area)) : steps;
}

}  // namespace

std::optional<std::uint64_t> steps_for_state(const PauliFrame& stabilisers,
                                             const SynthesisOptions& options) {
  if (options.steps || options.budget) return options.steps;
  return usual_state_steps(stabilisers.qubits(), options.device != nullptr, are_light(stabilisers));
}

FoundCliffords synthesize_clifford(const PauliFrame& images,
                                   const synthesis::CliffordOptions& options) {
  check_operator_options(options);
  check_wires("images", images.qubits());
  check_search_memory("images", images.qubits(), options,
                      bytes_of_operator_runs(images.qubits(), options));
  const int n = images.qubits();
  RunControl control(options.budget);
  std::optional<CliffordCircuit> before;
  if (n > most_made_late && options.device == nullptr) {
    before = made_before(images, options);
  } else {
    check_images(images);
  }
  std::optional<BitGraph> device;
  if (options.device != nullptr) {
    device.emplace(*options.device);
    require_connected(*device, n);
  }
  const std::optional<GateList> start = start_of_operator(images, options, device);
  std::vector<Lane> lanes;
  if (options.method != "search" && !device) {
    lanes.push_back({.method = "elimination",
                     .runs = 1,
                     .make =
                         [&](int) {
                           return sized(
                               to_circuit(eliminated_list(images, options.outputs), images));
                         },
                     .draws = false,
                     .brief = n <= most_for_greedy});
  }
  if (options.method != "elimination") {
    lanes.push_back({.method = "search",
                     .runs = runs_of_search(options),
                     .make =
                         [&](int run) {
                           const Task task{.objective = options.objective,
                                           .outputs = options.outputs,
                                           .device = device ? &*device : nullptr,
                                           .seed = options.seed,
                                           .stream = static_cast<std::uint64_t>(run),
                                           .start = start ? &*start : nullptr};
                           const Effort effort = control.effort(steps_of_search(options));
                           return sized(
                               search_operator(images, task, effort, OnFewQubits::finds_fewest));
                         },
                     .proves = true});
  }
  const Lane plain{.method = "search",
                   .runs = 1,
                   .make =
                       [&](int) {
                         if (before) return sized(*std::exchange(before, std::nullopt));
                         CliffordCircuit found = plainly(images);
                         if (device) {
                           found.gates = along_edges(found.gates, *device);
                           found.size = size_of(found.gates, n);
                         }
                         return sized(std::move(found));
                       },
                   .draws = false};
  BestRun best = best_of_runs(lanes, options, control, plain);
  auto& found = best.as<CliffordCircuit>();
  FoundCliffords result{std::move(best.result), std::move(found.gates)};
  result.permutation = std::move(found.wires);
  if (options.method == "elimination" && n <= most_cut_wires) {
    prove(result, bound_of_operator(OperatorRows(images), options.outputs, nullptr));
  }
  return result;
}

void check_encoder_options(const SynthesisOptions& options) {
  if (options.device != nullptr) {
    throw std::invalid_argument("device: got one, wanted none for codes");
  }
  if (options.outputs != Outputs::in_place) {
    throw std::invalid_argument("outputs: got another value, wanted in_place for codes");
  }
}

std::optional<BitGraph> device_of_state(const SynthesisOptions& options, int n) {
  const bool anywhere = options.device != nullptr && options.outputs == Outputs::anywhere;
  if (options.outputs != Outputs::in_place && !anywhere) {
    throw std::invalid_argument(
        "outputs: got another value, wanted in_place, or anywhere on a device");
  }
  if (options.device == nullptr) return std::nullopt;
  BitGraph device(*options.device);
  require_connected(device, n);
  return device;
}

Lane state_search_lane(const PauliFrame& stabilisers, const SynthesisOptions& options,
                       const std::optional<BitGraph>& device, RunControl& control) {
  const int n = stabilisers.qubits();
  const std::optional<std::uint64_t> steps = steps_for_state(stabilisers, options);
  const auto start = known_start(options, n, list_of, [&](const GateList& list) {
    const std::vector<int>& wires = options.start->permutation;
    PauliFrame before = on_wires(stabilisers, wires);
    // Back to where the zeros come in, all are products of Z.
    for (const structures::Gate& gate : inverted(options.start->gates)) before.apply(gate);
    const bool fits = options.outputs == Outputs::anywhere || std::ranges::is_sorted(wires);
    return fits && before.x_planes().weight() == 0 && (!device || is_on_edges(list, *device));
  });
  return {.method = "search",
          .runs = runs_of_search(options),
          .make =
              [&, steps, start](int run) {
                const Task task{.objective = options.objective,
                                .outputs = options.outputs,
                                .device = device ? &*device : nullptr,
                                .seed = options.seed,
                                .stream = static_cast<std::uint64_t>(run),
                                .start = start ? &*start : nullptr};
                return sized(search_state(stabilisers, task, control.effort(steps)));
              },
          .proves = true};
}

void prove_by_table(synthesis::SynthesisResult& result, const PauliFrame& stabilisers,
                    const SynthesisOptions& options) {
  const bool in_haste = result.stopped || options.budget.value_or(least_budget) < least_budget;
  if (in_haste || result.count <= result.least_count) return;
  if (const std::optional<int> fewest = fewest_gates_of_state(stabilisers)) {
    prove(result, {*fewest, layers_to_hold(*fewest, stabilisers.qubits())});
  }
}

FoundCliffords synthesize_state(const PauliFrame& stabilisers,
                                const synthesis::StateOptions& options) {
  check_effort(options);
  const bool on_device = options.device != nullptr;
  check_method(options.method, synthesis::state_methods(on_device), on_device);
  check_wires("stabilisers", stabilisers.qubits());
  check_search_memory("stabilisers", stabilisers.qubits(), options, bytes_of_state_run);
  if (!stabilise_a_state(stabilisers)) {
    throw std::invalid_argument(
        "stabilisers: got strings that do not commute or are not independent, wanted one per qubit "
        "that are");
  }
  const std::optional<BitGraph> device = device_of_state(options, stabilisers.qubits());
  RunControl control(options.budget);
  BestRun best =
      best_of_runs({state_search_lane(stabilisers, options, device, control)}, options, control);
  auto& found = best.as<CliffordCircuit>();
  FoundCliffords result{std::move(best.result), std::move(found.gates)};
  result.permutation = std::move(found.wires);
  prove_by_table(result, stabilisers, options);
  return result;
}

}  // namespace zelt::braidwerk::internal

namespace synthesis {

using zelt::braidwerk::internal::PauliFrame;
using zelt::braidwerk::internal::unpacked;

std::vector<std::string> clifford_methods(bool on_device) {
  if (on_device) return {"auto", "search"};
  return {"auto", "search", "elimination"};
}

CliffordResult synthesize_clifford(const structures::OperatorTableau& tableau,
                                   const CliffordOptions& options) {
  return unpacked<CliffordResult>(zelt::braidwerk::internal::synthesize_clifford(
      zelt::braidwerk::internal::images_under(tableau), options));
}

std::vector<std::string> state_methods(bool /*on_device*/) {
  return {"auto", "search"};
}

StateResult synthesize_state(const structures::OperatorTableau& tableau,
                             const StateOptions& options) {
  std::vector<int> images_of_z(static_cast<std::size_t>(tableau.nbqbits));
  std::iota(images_of_z.begin(), images_of_z.end(), tableau.nbqbits);
  const PauliFrame images = zelt::braidwerk::internal::images_under(tableau);
  return unpacked<StateResult>(
      zelt::braidwerk::internal::synthesize_state(images.select(images_of_z), options));
}

StateResult synthesize_state(const std::vector<std::vector<unsigned char>>& stabilisers,
                             const std::vector<bool>& minus, const StateOptions& options) {
  const auto n = stabilisers.size();
  const bool square = std::ranges::all_of(stabilisers, [&](const auto& string) {
    return string.size() == n && std::ranges::all_of(string, [](int code) { return code <= 3; });
  });
  if (!square || minus.size() != n) {
    throw std::invalid_argument("stabilisers: got others, wanted " + std::to_string(n) +
                                " strings of as many codes 0 to 3, and as many signs");
  }
  PauliFrame frame = PauliFrame::pack(stabilisers, static_cast<int>(n));
  for (int r = 0; r < frame.rows(); ++r) frame.set_negative(r, minus[static_cast<std::size_t>(r)]);
  return unpacked<StateResult>(zelt::braidwerk::internal::synthesize_state(frame, options));
}

}  // namespace synthesis
