#include "zeltbraidwerk/phase/synthesize.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <utility>

#include "zeltbraidwerk/graphs/internal/edge_paths.h"
#include "zeltbraidwerk/linear/internal/synthesize.h"
#include "zeltbraidwerk/phase/internal/methods.h"
#include "zeltbraidwerk/phase/internal/synthesize.h"
#include "zeltbraidwerk/phase/search/internal/parity_bound.h"
#include "zeltbraidwerk/phase/search/internal/parity_search.h"
#include "zeltbraidwerk/phase/search/internal/parity_terms.h"
#include "zeltbraidwerk/search/internal/known_circuit.h"

namespace zelt::braidwerk::internal {

using synthesis::PhaseOptions;

namespace {

// Over the square of the qubits, with the search that closes, and without.
constexpr double bytes_of_run = 40;
constexpr double bytes_of_method = 4;
constexpr double bytes_of_parity = 3'000;
constexpr int most_searched = 16'383;  // qubits
constexpr int default_runs = 20;
// Wires to the power of 5/2 times parities to that of 3/2, by which a greedy run takes time: some
// seconds over all runs. Where fewer than so many are made in these, which do not find the decay
// that fits, "auto" leaves them out.
constexpr double greedy_work = 2.5e9;
constexpr int least_greedy_runs = 4;
constexpr int default_device_runs = 100;         // which are quicker, and differ more
constexpr double closing_share = 0.25;           // of a budget
constexpr std::uint64_t closing_steps = 50'000;  // of the search that closes, for each run
constexpr std::uint64_t most_closing_steps = 1'000'000;

/// One call: from options to lanes of runs, and from the best run, closed anew, to a result.
class PhaseCall {
 public:
  PhaseCall(const BitMatrix& parities, const PhaseOptions& options)
      : parities_(parities), options_(options), methods_(chosen()), control_(budget()) {
    if (options.device == nullptr) return;
    device_.emplace(*options.device);
    require_connected(*device_, qubits());
  }

  PhaseStepsResult run() {
    PhaseStepsResult result;
    if (parities_.cols() == 0) {
      result.method = methods_.front();
      result.objective = options_.objective;
      result.permutation = in_order(qubits());
      result.seed = options_.seed;
      return result;
    }
    std::vector<Lane> lanes;
    for (const std::string& name : methods_) {
      lanes.push_back(name == "search" ? search_lane() : lane(name));
    }
    BestRun best = best_of_runs(lanes, options_, control_, plain_lane());
    auto& network = best.as<ClosedNetwork>();
    if (closes_anew(best.result)) close_anew(network, best.result);
    if (!searches()) prove(best.result, bound());
    result = {std::move(best.result), std::move(network.steps)};
    for (const auto& [c, t] : network.closing.circuit.gates) {
      result.steps.push_back(PhaseStep::cnot(c, t));
    }
    result.permutation = std::move(network.closing.perm);
    return result;
  }

 private:
  int qubits() const { return parities_.rows(); }
  bool searches() const { return methods_.back() == "search"; }
  bool leaves_open() const { return options_.outputs == Outputs::left_open; }

  LowerBound bound() const {
    return bound_of_parities(
        parities_to_make(parities_),
        {.outputs = options_.outputs, .device = device_ ? &*device_ : nullptr});
  }

  /// The methods to run, checked.
  std::vector<std::string> chosen() const {
    check_effort(options_);
    const bool on_device = options_.device != nullptr;
    std::vector<std::string> known = synthesis::phase_methods(on_device);
    check_method(options_.method, known, on_device);
    check_options_of(options_.method, {{"steps", options_.steps.has_value(), {"auto", "search"}},
                                       {"start", options_.start.has_value(), {"auto", "search"}}});
    if (options_.outputs == Outputs::within_reach) {
      throw std::invalid_argument(
          "outputs: got within_reach, wanted in_place, anywhere or left_open");
    }
    const bool too_large = qubits() > most_searched;
    if (!too_large || options_.method != "search") {
      check_search_memory("polynomial", qubits(), options_,
                          too_large ? bytes_of_method : bytes_of_run,
                          {parities_.cols(), "parities", bytes_of_parity + qubits()});
    }
    if (options_.method != "auto") {
      if (too_large && options_.method == "search") {
        throw synthesis::TooLargeError("polynomial: got " + std::to_string(qubits()) +
                                       " qubits, wanted at most " + std::to_string(most_searched) +
                                       " for 'search'");
      }
      return {options_.method};
    }
    known.erase(known.begin());
    if (too_large) std::erase(known, "search");
    if (!too_large && !on_device && !options_.restarts && greedy_runs() < least_greedy_runs) {
      std::erase(known, "greedy");
    }
    return known;
  }

  /// Of the runs. What they leave is closed anew in the rest.
  std::optional<double> budget() const {
    if (!options_.budget || searches() || leaves_open()) return options_.budget;
    return (1 - closing_share) * *options_.budget;
  }

  Lane lane(const std::string& name) {
    std::optional<int> runs = options_.restarts;
    // A budget is for the search, where there is one.
    if (!runs && (methods_.size() > 1 || !options_.budget)) {
      runs = device_ ? default_device_runs : default_runs;
      if (name == "greedy") runs = std::max(std::min(*runs, greedy_runs()), 1);
    }
    const PhaseRuns made{parities_,        device_ ? &*device_ : nullptr,
                         name == "greedy", options_.objective,
                         options_.outputs, options_.seed};
    return {
        .method = name, .runs = runs, .make = [this, made](int run) -> std::optional<MadeCircuit> {
          auto network = made.make(run, control_);
          if (!network) return std::nullopt;
          const CircuitSize size = size_of(network->cnots());
          return made_circuit(size, std::move(*network));
        }};
  }

  /// That fit in some seconds.
  int greedy_runs() const {
    const double work = std::pow(qubits(), 2.5) * std::pow(parities_.cols(), 1.5);
    return static_cast<int>(std::min(greedy_work / std::max(work, 1.0), 1.0 * default_runs));
  }

  Lane search_lane() {
    std::optional<std::uint64_t> steps = steps_of_search(options_);
    // There are other methods at work, and more runs.
    if (methods_.size() > 1 && !options_.steps && steps && options_.restarts) steps = *steps / 10;
    Task asked{.objective = options_.objective,
               .outputs = options_.outputs,
               .device = device_ ? &*device_ : nullptr,
               .seed = options_.seed};
    start_ = known_start(options_, qubits(), cnots_of, [&](const GateList& list) {
      return shows_all(list, parities_to_make(parities_), asked) &&
             (!device_ || std::ranges::all_of(list.gates, [this](const Gate& gate) {
               return device_->joined(wire_of(gate.a), wire_of(gate.b));
             }));
    });
    if (start_) asked.start = &*start_;
    return {.method = "search",
            .runs = runs_of_search(options_),
            .make =
                [this, steps, asked](int run) {
                  Task task = asked;
                  task.stream = static_cast<std::uint64_t>(run);
                  auto found = search_parities(parities_, task, control_.effort(steps));
                  ClosedNetwork network{
                      std::move(found.gates),
                      FreeCircuit(structures::CnotCircuit(qubits()), std::move(found.wires))};
                  return std::optional(made_circuit(found.size, std::move(network)));
                },
            .proves = true};
  }

  /// Each parity by itself, and undone before the next.
  Lane plain_lane() const {
    return {.method = searches() ? "search" : "plain",
            .runs = 1,
            .make =
                [this](int) {
                  ClosedNetwork network{{}, FreeCircuit(qubits())};
                  for (int term = 0; term < parities_.cols(); ++term) append_ladder(term, network);
                  const CircuitSize size = size_of(network.cnots());
                  return std::optional(made_circuit(size, std::move(network)));
                },
            .draws = false,
            .for_stops = !searches()};
  }

  void append_ladder(int term, ClosedNetwork& network) const {
    stop_point();
    std::vector<structures::Gate> gates;
    int last = -1;
    for (int q = 0; q < qubits(); ++q) {
      if (!parities_.get(q, term)) continue;
      if (last >= 0) gates.push_back(structures::Gate::CNOT(last, q));
      last = q;
    }
    if (last < 0) return;
    if (device_) gates = along_edges(gates, *device_);
    std::vector<PhaseStep> there;
    for (const structures::Gate& gate : gates) {
      there.push_back(PhaseStep::cnot(gate.qbits[0], gate.qbits[1]));
    }
    std::vector<PhaseStep>& steps = network.steps;
    steps.insert(steps.end(), there.begin(), there.end());
    steps.push_back(PhaseStep::phase(last, term));
    steps.insert(steps.end(), there.rbegin(), there.rend());
  }

  /// Whether there is time for another closing, and a circuit that wants one.
  bool closes_anew(const synthesis::SynthesisResult& result) const {
    if (leaves_open() || result.method == "search" || result.stopped) return false;
    return !searches() || !options_.budget;
  }

  /// Closes what the network leaves by a search of its own, where that is better.
  void close_anew(ClosedNetwork& network, synthesis::SynthesisResult& result) {
    synthesis::LinearOptions closing;
    closing.objective = options_.objective;
    closing.outputs = options_.outputs;
    closing.device = options_.device;
    closing.seed = options_.seed;
    closing.restarts = 1;
    closing.jobs = options_.jobs;
    closing.stop = options_.stop;
    if (options_.budget) {
      closing.budget = closing_share * *options_.budget;
    } else {
      const auto runs = static_cast<std::uint64_t>(options_.restarts.value_or(4));
      closing.steps = std::min(closing_steps * runs, most_closing_steps);
    }
    ClosedNetwork anew = network;
    try {
      auto found = synthesize_linear(inverse(linear_map(network.steps, qubits())), closing);
      result.stopped = found.stopped;
      anew.closing = FreeCircuit(std::move(found.circuit), std::move(found.permutation));
    } catch (const synthesis::UnfinishedError&) {
      result.stopped = true;  // by `stop`; else one run at least is finished
      return;
    }
    result.seconds = control_.seconds();
    const CircuitSize size = size_of(anew.cnots());
    const CircuitSize before{result.count, result.depth};
    if (!is_better(size, before, options_.objective)) return;
    network = std::move(anew);
    result.count = size.count;
    result.depth = size.depth;
    result.trace.push_back({.seconds = result.seconds, .count = size.count, .depth = size.depth});
    const bool objective_fell =
        size.key(options_.objective).first < before.key(options_.objective).first;
    if (objective_fell && options_.progress) options_.progress(result.trace.back());
  }

  const BitMatrix& parities_;
  const PhaseOptions& options_;
  std::vector<std::string> methods_;
  RunControl control_;
  std::optional<BitGraph> device_;
  std::optional<GateList> start_;
};

}  // namespace

PhaseStepsResult synthesize_phase(const BitMatrix& parities, const PhaseOptions& options) {
  return PhaseCall(parities, options).run();
}

}  // namespace zelt::braidwerk::internal

namespace synthesis {

using namespace zelt::braidwerk::internal;

std::vector<std::string> phase_methods(bool on_device) {
  if (on_device) return {"auto", "gray", "search"};
  return {"auto", "gray", "greedy", "search"};
}

PhaseResult synthesize_phase(const PhasePolynomial& polynomial, const PhaseOptions& options) {
  const int n = polynomial.empty() ? 0 : static_cast<int>(polynomial.begin()->first.size());
  PhaseOptions own = options;
  if (polynomial.empty()) own.device = nullptr;  // nothing tells the number of qubits
  PhaseStepsResult found =
      zelt::braidwerk::internal::synthesize_phase(pack_parities(polynomial, n), own);
  PhaseResult result{static_cast<SynthesisResult&&>(found), {}, {}, {}};
  append_gates(found.steps, angles(polynomial), result.gates);
  for (const PhaseStep& step : found.steps) result.terms.push_back(step.term);
  if (options.outputs == Outputs::left_open) {
    result.linear_map = linear_map(found.steps, n).unpack();
  }
  return result;
}

}  // namespace synthesis
