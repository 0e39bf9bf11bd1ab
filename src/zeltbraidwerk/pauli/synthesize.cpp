#include "zeltbraidwerk/pauli/synthesize.h"

#include <algorithm>
#include <optional>
#include <span>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/graphs/internal/edge_paths.h"
#include "zeltbraidwerk/pauli/internal/methods.h"
#include "zeltbraidwerk/pauli/internal/network.h"
#include "zeltbraidwerk/pauli/search/internal/known_network.h"
#include "zeltbraidwerk/pauli/search/internal/network_bound.h"
#include "zeltbraidwerk/pauli/search/internal/network_circuit.h"
#include "zeltbraidwerk/pauli/search/internal/network_search.h"
#include "zeltbraidwerk/search/internal/known_circuit.h"
#include "zeltbraidwerk/search/internal/orders.h"
#include "zeltbraidwerk/search/internal/runs.h"

namespace zelt::braidwerk::internal {

using synthesis::PauliOptions;
using synthesis::PauliResult;

namespace {

constexpr std::uint64_t auto_steps = 30'000;  // of the search within "auto"
constexpr long run_letters = 600'000;         // letters of all strings, over all runs of a method
// Letters times qubits, which greedy methods take time by: over all runs, and for one at all, which
// takes some seconds.
constexpr double greedy_work = 2e6;
constexpr double most_greedy_work = 2.5e6;

struct AutoMethod {
  const char* name;
  bool in_order;
  int runs;  // names of the qubits to try, fewer on long lists
};
// What "auto" runs beside the search. Layers in the order given often beat an order of the method's
// own.
constexpr AutoMethod auto_free[] = {
    {"ladder", true, 1},        {"greedy", true, 2},     {"greedy_depth", true, 2},
    {"sets_closed", true, 2},   {"recursive", false, 2}, {"greedy", false, 4},
    {"greedy_depth", false, 4}, {"sets", false, 2},      {"sets_closed", false, 2}};
constexpr AutoMethod auto_in_order[] = {{"greedy", true, 2}, {"greedy_depth", true, 2},
                                        {"ladder", true, 1}, {"recursive", true, 2},
                                        {"sets", true, 2},   {"sets_closed", true, 2}};

constexpr double bytes_of_run = 60;  // over the square of the qubits
constexpr double bytes_of_rotation = 12'000;
constexpr double bytes_of_letter = 100;

/// One call: from options to lanes of runs, and from the best run to a result.
class PauliCall {
 public:
  PauliCall(PauliFrame rows, const PauliOptions& options)
      : table_(std::move(rows)), options_(options), control_(options.budget) {
    check();
    if (options.tail) target_ = target_of(images_under(*options.tail));
    if (options.device == nullptr) return;
    edges_.emplace(*options.device);
    require_connected(*edges_, table_.frame.qubits());
    device_.emplace(*options.device);
    device_->set_shortest_paths();
  }

  PauliResult run(const std::vector<structures::Parameter>& params) {
    read_start(params);
    BestRun best = best_of_runs(lanes(), options_, control_, plain_lane());
    auto& network = best.as<PauliNetwork>();
    PauliResult result{std::move(best.result), std::move(network.gates), {}, network.in_order};
    result.permutation = std::move(network.wires);
    if (!searches()) prove(result, bound());
    for (structures::Gate& gate : result.gates) {
      const LabelledRow label = labelled_row(gate);
      result.rows.push_back(label.row);
      if (label.row < 0) continue;
      const structures::Parameter& angle = params[static_cast<std::size_t>(label.row)];
      gate.params[0] = label.negative ? angle.flip_sign() : angle;
    }
    return result;
  }

 private:
  bool within_auto() const { return options_.method == "auto"; }
  bool searches() const { return within_auto() || options_.method == "search"; }

  void check() const {
    const int qubits = table_.frame.qubits();
    check_wires("rotations", qubits);
    check_search_memory(
        "rotations", qubits, options_, bytes_of_run,
        {table_.frame.rows(), "rotations", bytes_of_rotation + bytes_of_letter * qubits});
    check_effort(options_);
    const bool on_device = options_.device != nullptr;
    std::vector<std::string> known = synthesis::pauli_methods(on_device);
    check_method(options_.method, known, on_device);
    std::erase(known, "ladder");  // each of its runs would be the same
    check_options_of(options_.method, {{"steps", options_.steps.has_value(), {"auto", "search"}},
                                       {"start", options_.start.has_value(), {"auto", "search"}},
                                       {"restarts", options_.restarts.has_value(), known}});
    if (options_.tail && options_.tail->nbqbits != table_.frame.qubits()) {
      throw std::invalid_argument("tail: got an operator on " +
                                  std::to_string(options_.tail->nbqbits) + " qubits, wanted " +
                                  std::to_string(table_.frame.qubits()));
    }
    if (options_.tail && options_.outputs == Outputs::left_open) {
      throw std::invalid_argument("tail: got one, and outputs: got left_open");
    }
    if (options_.outputs == Outputs::within_reach) {
      throw std::invalid_argument(
          "outputs: got within_reach, wanted in_place, anywhere or left_open");
    }
    if (on_device && options_.outputs == Outputs::anywhere) {
      throw std::invalid_argument(
          "outputs: got anywhere, wanted in_place or left_open on a device");
    }
  }

  void read_start(const std::vector<structures::Parameter>& params) {
    if (!options_.start) return;
    check_known(*options_.start, table_.frame.qubits());
    try {
      given_ = known_network(*options_.start, table_.frame, params, task_of_search(0));
    } catch (const std::logic_error&) {  // of a gate outside the Clifford group
    }
    if (!given_) refuse_start();
  }

  NetworkTask task_of_search(int run) const {
    NetworkTask task;
    task.objective = options_.objective;
    task.outputs = options_.outputs;
    task.device = edges_ ? &*edges_ : nullptr;
    task.seed = options_.seed;
    task.stream = static_cast<std::uint64_t>(run);
    task.in_order = options_.in_order;
    task.target = target_ ? &*target_ : nullptr;
    task.given = given_ ? &*given_ : nullptr;
    return task;
  }

  /// Closed networks that end in a given operator are bounded as open ones.
  LowerBound bound() const {
    NetworkTask task = task_of_search(0);
    if (target_) task.outputs = Outputs::left_open;
    return bound_of_network(table_.frame, task);
  }

  std::vector<Lane> lanes() {
    std::vector<Lane> lanes;
    if (within_auto() && device_) {
      lanes.push_back(lane("sets", options_.in_order, runs(1)));
    } else if (within_auto()) {
      const std::span<const AutoMethod> chosen = options_.in_order
                                                     ? std::span<const AutoMethod>(auto_in_order)
                                                     : std::span<const AutoMethod>(auto_free);
      for (const auto& [name, in_order, wished] : chosen) {
        const bool greedy = std::string_view(name).starts_with("greedy");
        if (greedy && work() > most_greedy_work && !options_.restarts) continue;
        lanes.push_back(lane(name, in_order, greedy ? greedy_runs(wished) : runs(wished)));
      }
    } else if (options_.method != "search") {
      const bool endless = options_.budget && !options_.restarts;
      lanes.push_back(lane(options_.method, options_.in_order,
                           endless ? std::nullopt : std::optional(runs(1))));
    }
    if (searches()) lanes.push_back(search_lane());
    return lanes;
  }

  int runs(int wished) const {
    if (options_.restarts) return *options_.restarts;
    return static_cast<int>(std::clamp(run_letters / std::max(letters(), 1L), 1L, long{wished}));
  }
  int greedy_runs(int wished) const {
    if (options_.restarts) return *options_.restarts;
    const double in_time = std::max(greedy_work / std::max(work(), 1.0), 1.0);
    return std::min(runs(wished), static_cast<int>(std::min(in_time, double(wished))));
  }
  long letters() const { return static_cast<long>(table_.frame.rows()) * table_.frame.qubits(); }
  double work() const { return static_cast<double>(letters()) * table_.frame.qubits(); }

  Lane lane(const std::string& name, bool in_order, std::optional<int> runs) {
    const PauliRuns made{
        *pauli_method(name),         table_,           in_order,
        options_.objective,          options_.outputs, device_ ? &*device_ : nullptr,
        edges_ ? &*edges_ : nullptr, options_.seed,    target_ ? &*target_ : nullptr};
    return {.method = name, .runs = runs, .make = [this, made](int run) {
              return sized(made.make(run));
            }};
  }

  Lane search_lane() {
    std::optional<std::uint64_t> steps = steps_of_search(options_);
    if (within_auto() && !options_.steps && steps) {
      steps = options_.restarts ? auto_steps / 10 : auto_steps;
    }
    return {.method = "search",
            .runs = runs_of_search(options_),
            .make =
                [this, steps](int run) {
                  PlacedCircuit found = search_network({table_.frame, table_.labels},
                                                       task_of_search(run), control_.effort(steps));
                  return sized({std::move(found.gates), std::move(found.wires), options_.in_order});
                },
            .proves = !target_};
  }

  Lane plain_lane() const {
    return {.method = searches() ? "search" : "plain",
            .runs = 1,
            .make =
                [this](int) {
                  std::vector<structures::Gate> gates =
                      synthesise_ladders({table_.frame, table_.labels});
                  if (target_) {
                    gates.insert(gates.end(), target_->gates.begin(), target_->gates.end());
                  }
                  if (edges_) gates = along_edges(gates, *edges_);
                  return sized({std::move(gates), internal::in_order(table_.frame.qubits()), true});
                },
            .draws = false,
            .for_stops = !searches()};
  }

  std::optional<MadeCircuit> sized(PauliNetwork network) const {
    const CircuitSize size = size_of(network.gates, table_.frame.qubits());
    return made_circuit(size, std::move(network));
  }

  const LabelledTable table_;
  const PauliOptions& options_;
  RunControl control_;
  std::optional<BitGraph> edges_;
  std::optional<structures::Graph> device_;
  std::optional<CliffordTarget> target_;
  std::optional<Network> given_;
};

}  // namespace
}  // namespace zelt::braidwerk::internal

namespace synthesis {

using namespace zelt::braidwerk::internal;

std::vector<std::string> pauli_methods(bool on_device) {
  if (on_device) return {"auto", "sets", "search"};
  std::vector<std::string> names{"auto"};
  for (const PauliMethod& method : pauli_method_table()) names.emplace_back(method.name);
  names.emplace_back("search");
  return names;
}

PauliResult synthesize_pauli(int n, const PauliTable& table,
                             const std::vector<structures::Parameter>& params,
                             const PauliOptions& options) {
  if (n < 0) throw std::invalid_argument("n: got " + std::to_string(n) + ", wanted at least 0");
  if (params.size() != table.size()) {
    throw std::invalid_argument("params: got " + std::to_string(params.size()) +
                                " angles, wanted " + std::to_string(table.size()));
  }
  for (const auto& row : table) {
    if (static_cast<int>(row.size()) == n) continue;
    throw std::invalid_argument("table: got a row of " + std::to_string(row.size()) +
                                " letters, wanted " + std::to_string(n));
  }
  return PauliCall(PauliFrame::pack(table, n), options).run(params);
}

}  // namespace synthesis
