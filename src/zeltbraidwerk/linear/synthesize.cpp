#include "zeltbraidwerk/linear/synthesize.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <mutex>
#include <span>
#include <stdexcept>
#include <utility>

#include "zeltbraidwerk/graphs/internal/hamiltonian_path.h"
#include "zeltbraidwerk/linear/internal/methods.h"
#include "zeltbraidwerk/linear/internal/options.h"
#include "zeltbraidwerk/linear/internal/row_column.h"
#include "zeltbraidwerk/linear/internal/synthesize.h"
#include "zeltbraidwerk/linear/search/internal/cnot_search.h"
#include "zeltbraidwerk/linear/search/internal/cut_bound.h"
#include "zeltbraidwerk/linear/search/internal/depth_search.h"
#include "zeltbraidwerk/linear/search/internal/device_search.h"
#include "zeltbraidwerk/linear/search/internal/map_bound.h"
#include "zeltbraidwerk/linear/search/internal/map_circuits.h"
#include "zeltbraidwerk/search/internal/known_circuit.h"
#include "zeltbraidwerk/search/internal/runs.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

using synthesis::LinearOptions;
using synthesis::LinearResult;

namespace {

// Of a search without a limit: a second on 64 wires, a few seconds on more.
constexpr std::uint64_t steps_per_qubit = 12'500;
constexpr double most_usual_steps = 1'600'000;
constexpr double wires_of_long_steps = 256;  // beyond them fewer, as each takes longer
// The same for depth, up to 32 qubits. Above, a step takes longer by their square.
constexpr std::uint64_t steps_for_depth = 100'000;
// The tables of windows on five wires take a part of it to build.
constexpr double short_budget = 0.25;
constexpr int brief_wires = 256;  // quick methods and first circuits take milliseconds
constexpr int brief_wires_on_device = 12;
constexpr int path_steps = 10'000;     // towards a Hamiltonian path that "auto" does not need
constexpr double path_seconds = 5;     // towards one that a method needs
constexpr int most_in_sections = 500;  // wires
constexpr int device_runs = 100;       // which are quick, and differ much

struct AutoMethod {
  const char* name;
  int most_qubits;
};
// What "auto" runs beside the search.
constexpr AutoMethod auto_for_count[] = {
    {"pmh", 1 << 30}, {"pairs", 1 << 30}, {"syndrome", 512}, {"greedy", 64}};
constexpr AutoMethod auto_for_depth[] = {{"pmh", 1 << 30}, {"blocks", 512}, {"greedy_inverse", 64}};

/// One call: from options to lanes of runs, and from the best run to a result.
class LinearCall {
 public:
  LinearCall(const BitMatrix& m, const LinearOptions& options)
      : m_(m),
        options_(options),
        method_options_(method_options(options)),
        control_(options.budget) {
    check_options(options, n());
    if (options.device != nullptr) {
      device_.emplace(*options.device);
      require_connected(*device_, n());
    }
    start_ = known_start(options, n(), cnots_of, [this](const GateList& list) {
      const bool cnots_alone = list.gates.size() == options_.start->gates.size();
      const bool in_reach = !in_place() || options_.reach > 0 || list.frame == WireFrame(n());
      return cnots_alone && in_reach && implements(list, m_, device_ ? &*device_ : nullptr);
    });
  }

  LinearResult run() {
    BestRun best = best_of_runs(lanes(), options_, control_, plain_lane());
    LinearResult result{std::move(best.result), {}, 0, {}};
    auto& found = best.as<FreeCircuit>();
    result.circuit = std::move(found.circuit);
    result.permutation = std::move(found.perm);
    if (result.method == "search") result.window = window();
    result.front = front();
    if (!searches() && n() <= most_cut_wires) prove(result, bound());
    return result;
  }

 private:
  struct FrontCircuit {
    CircuitSize size;
    int run;
    FreeCircuit found;
  };

  int n() const { return m_.rows(); }
  bool in_place() const { return options_.outputs != Outputs::anywhere; }
  bool within_auto() const { return options_.method == "auto"; }
  bool searches() const { return within_auto() || options_.method == "search"; }
  /// Whether a quick run ends before anyone would stop it.
  bool is_brief() const { return n() <= (device_ ? brief_wires_on_device : brief_wires); }

  LowerBound bound() const {
    const Task task{.outputs = options_.outputs, .reach = options_.reach};
    return device_ ? bound_of_map_on_device(m_, *device_, task.most_reach())
                   : bound_of_map(m_, in_place());
  }

  // --- lanes ----------------------------------------------------------------------------------

  std::vector<Lane> lanes() {
    if (device_) return lanes_on_device();
    std::vector<Lane> lanes;
    if (within_auto()) {
      const std::span<const AutoMethod> chosen = options_.objective == Objective::depth
                                                     ? std::span<const AutoMethod>(auto_for_depth)
                                                     : std::span<const AutoMethod>(auto_for_count);
      for (const auto& [name, most] : chosen) {
        if (n() <= most) lanes.push_back(lane(*linear_method(name), auto_runs(name)));
      }
    } else if (options_.method != "search") {
      const bool once = !options_.restarts && !options_.budget;
      return {lane(*linear_method(options_.method), once ? 1 : options_.restarts)};
    }
    if (n() <= most_wires) lanes.push_back(search_lane());
    return lanes;
  }

  std::vector<Lane> lanes_on_device() {
    std::vector<Lane> lanes;
    const std::string& method = options_.method;
    using enum DeviceRuns::Method;
    if (within_auto() || method == "row_column") lanes.push_back(device_lane(row_column, {}));
    if (method == "steiner") lanes.push_back(device_lane(steiner, needed_path()));
    if (method == "sorting") lanes.push_back(device_lane(sorting, needed_path()));
    const bool by_depth = options_.objective == Objective::depth;
    if (within_auto() && (in_place() || by_depth)) {
      if (std::vector<int> path = quick_path(); !path.empty()) {
        // A path leaves the outputs where they are: where they may move, steiner gains nothing.
        if (in_place()) lanes.push_back(device_lane(steiner, path));
        if (by_depth) lanes.push_back(device_lane(sorting, std::move(path)));
      }
    }
    if (searches() && n() <= most_wires) lanes.push_back(search_lane());
    return lanes;
  }

  /// In about a second up to 128 qubits. To the end of a budget goes the search alone.
  std::optional<int> auto_runs(const char* name) const {
    if (options_.restarts) return options_.restarts;
    if (linear_method(name)->quick) return 2 * plain_runs;
    return n() <= 32 ? 20 : n() <= 96 ? 4 : 1;
  }

  Lane lane(const LinearMethod& method, std::optional<int> runs) {
    const LinearRuns made{method,
                          m_,
                          within_auto() ? LinearMethodOptions{} : method_options_,
                          options_.objective,
                          in_place(),
                          options_.seed};
    return {.method = std::string(method.name),
            .runs = runs,
            .make = [this, made](int run) { return sized(made.make(run, control_.control(n()))); },
            .draws = method.draws || !runs || *runs > plain_runs,
            .brief = is_brief() && method.quick && runs == 1 && !options_.budget};
  }

  Lane device_lane(DeviceRuns::Method method, std::vector<int> path) {
    constexpr const char* names[] = {"row_column", "steiner", "sorting"};
    const DeviceRuns made{m_, *device_, method, std::move(path), in_place(), options_.seed};
    const bool usual = !options_.restarts && !options_.budget;
    const bool sorts = method == DeviceRuns::Method::sorting;
    return {.method = names[static_cast<std::size_t>(method)],
            .runs = usual ? (sorts ? plain_sorting_runs : device_runs) : options_.restarts,
            .make = [this, made](int run) {
              return sized(made.make(run, control_.control_of_run(n(), run)));
            }};
  }

  Lane search_lane() {
    std::optional<std::uint64_t> steps = options_.steps;
    int runs = runs_of_search(options_);
    if (!steps && !options_.budget) {
      const auto size = static_cast<std::uint64_t>(n());
      const double size_ratio = std::min(wires_of_long_steps / std::max(n(), 1), 1.0);
      steps = std::min(steps_per_qubit * std::max<std::uint64_t>(size, 8),
                       static_cast<std::uint64_t>(most_usual_steps * size_ratio * size_ratio));
      if (options_.objective == Objective::depth) {
        const std::uint64_t area =
            std::max<std::uint64_t>(size, 1) * std::max<std::uint64_t>(size, 1);
        steps = std::min(steps_for_depth, steps_for_depth * 32 * 32 / area);
      }
      if (within_auto() && options_.restarts) {
        // One run beside those of other methods, the longer the more there are of them.
        steps = *steps * static_cast<std::uint64_t>(std::min(*options_.restarts, 8)) / 2;
        runs = 1;
      }
    }
    return {.method = "search",
            .runs = runs,
            .make = [this, steps](int run) { return sized(searched(run, steps)); },
            .proves = true,
            .brief = is_brief() && !within_auto() && options_.steps == 0 && runs == 1};
  }

  Lane plain_lane() {
    return {.method = searches() ? "search" : "plain",
            .runs = 1,
            .make =
                [this](int) {
                  std::optional<FreeCircuit> found =
                      device_ ? cleared_along_tree(m_, *device_) : made_plainly();
                  if (options_.objective == Objective::depth) {
                    all_fronts_.push_back({size_of(found->circuit), 0, *found});
                  }
                  return sized(std::move(found));
                },
            .draws = false,
            .for_stops = !searches()};
  }

  /// By "pmh". On many wires "pairs" takes a sixth of the time, and three quarters of the gates
  /// unless the map is sparse.
  FreeCircuit made_plainly() const {
    const auto by = [this](const char* method) {
      const LinearRuns runs{*linear_method(method), m_,         {},
                            options_.objective,     in_place(), options_.seed};
      return *runs.make(0, Control{});
    };
    if (n() <= most_in_sections) return by("pmh");
    FreeCircuit pairs = by("pairs");
    const CircuitSize size = size_of(pairs.circuit);
    if (size.count > 1.0 * n() * n() / 32) return pairs;
    FreeCircuit sections = by("pmh");
    return is_better(size_of(sections.circuit), size, options_.objective) ? sections : pairs;
  }

  static std::optional<MadeCircuit> sized(std::optional<FreeCircuit> found) {
    if (!found) return std::nullopt;
    const CircuitSize size = size_of(found->circuit);
    return made_circuit(size, std::move(*found));
  }

  // --- the search -----------------------------------------------------------------------------

  FreeCircuit searched(int run, std::optional<std::uint64_t> steps) {
    const Task task{.objective = options_.objective,
                    .outputs = options_.outputs,
                    .reach = options_.reach,
                    .device = device_ ? &*device_ : nullptr,
                    .seed = options_.seed,
                    .stream = static_cast<std::uint64_t>(run),
                    .start = start_ ? &*start_ : nullptr};
    const Effort effort = control_.effort(steps);
    if (device_) return free_circuit(search_cnot_on_device(m_, task, effort));
    if (options_.objective == Objective::count) {
      return free_circuit(search_cnot(m_, task, effort, window()));
    }
    const std::vector<LayeredCircuit> found = search_shallow_cnot(m_, task, effort);
    const std::lock_guard lock(mutex_);
    for (const LayeredCircuit& each : found) {
      FreeCircuit circuit = free_circuit(each.list);
      const CircuitSize size = size_of(circuit.circuit);
      all_fronts_.push_back({size, run, std::move(circuit)});
    }
    return free_circuit(found.front().list);
  }

  int window() const {
    return !options_.steps && options_.budget.value_or(1) < short_budget ? 4 : most_window_wires;
  }

  /// Of all runs together.
  std::vector<synthesis::LinearCircuit> front() {
    std::ranges::stable_sort(all_fronts_, {}, [](const FrontCircuit& each) {
      return std::pair(each.size.key(Objective::depth), each.run);
    });
    std::vector<synthesis::LinearCircuit> front;
    int fewest = std::numeric_limits<int>::max();
    for (FrontCircuit& each : all_fronts_) {
      if (each.size.count >= fewest) continue;
      fewest = each.size.count;
      front.push_back({std::move(each.found.circuit), std::move(each.found.perm)});
    }
    return front;
  }

  // --- Hamiltonian paths ----------------------------------------------------------------------

  /// Steps are counted, not seconds, so that the answer is the same every time.
  std::vector<int> quick_path() const {
    Control limits;
    limits.max_operations = path_steps;
    return find_hamiltonian_path(*device_, limits).path;
  }

  std::vector<int> needed_path() const {
    if (!options_.path.empty()) {
      if (options_.device->is_ham_path(options_.path) &&
          static_cast<int>(options_.path.size()) == n()) {
        return options_.path;
      }
      throw std::invalid_argument("path: got one that is no Hamiltonian path of the device");
    }
    Control limits = RunControl(options_.budget.value_or(path_seconds)).control(0);
    limits.stop = nullptr;
    limits.max_operations = std::numeric_limits<int>::max();
    HamiltonianSearch search = find_hamiltonian_path(*device_, limits);
    if (search.outcome == HamiltonianSearch::found) return std::move(search.path);
    throw std::invalid_argument(std::string("device: got one ") +
                                (search.outcome == HamiltonianSearch::none
                                     ? "without a Hamiltonian path"
                                     : "of which no Hamiltonian path was found in time") +
                                ", wanted one with such a path, which method '" + options_.method +
                                "' needs; 'row_column' works without");
  }

  const BitMatrix& m_;
  const LinearOptions& options_;
  LinearMethodOptions method_options_;
  RunControl control_;
  std::optional<BitGraph> device_;
  std::optional<GateList> start_;
  std::mutex mutex_;  // of what follows
  std::vector<FrontCircuit> all_fronts_;
};

}  // namespace

LinearResult synthesize_linear(const BitMatrix& m, const LinearOptions& options) {
  return LinearCall(m, options).run();
}

}  // namespace zelt::braidwerk::internal

namespace synthesis {

using namespace zelt::braidwerk::internal;

std::vector<std::string> linear_methods(bool on_device) {
  std::vector<std::string> names{"auto"};
  if (on_device) {
    names.insert(names.end(), {"row_column", "steiner", "sorting"});
  } else {
    for (const LinearMethod& method : linear_method_table()) names.emplace_back(method.name);
  }
  names.emplace_back("search");
  return names;
}

LinearResult synthesize_linear(const BoolMatrix& matrix, const LinearOptions& options) {
  const auto n = static_cast<int>(matrix.size());
  for (const BoolRow& row : matrix) {
    if (static_cast<int>(row.size()) != n) {
      throw std::invalid_argument("matrix: got a row of " + std::to_string(row.size()) +
                                  " entries, wanted " + std::to_string(n));
    }
  }
  const BitMatrix m = BitMatrix::pack(matrix, n, n);
  if (!is_invertible(m)) {
    throw std::invalid_argument(
        "matrix: got a singular one, wanted one with an inverse over GF(2)");
  }
  return zelt::braidwerk::internal::synthesize_linear(m, options);
}

}  // namespace synthesis
