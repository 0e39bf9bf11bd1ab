#include "zeltbraidwerk/graph_state/synthesize.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <stdexcept>
#include <utility>

#include "zeltbraidwerk/clifford/internal/synthesize.h"
#include "zeltbraidwerk/clifford/search/internal/state_bound.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/graph_state/internal/synthesis.h"
#include "zeltbraidwerk/graph_state/internal/synthesize.h"
#include "zeltbraidwerk/search/internal/orders.h"
#include "zeltbraidwerk/search/internal/placed_circuit.h"
#include "zeltbraidwerk/search/internal/runs.h"
#include "zeltbraidwerk/search/internal/window.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {

using synthesis::graph_state_methods;
using synthesis::GraphStateOptions;
using Kind = CliffordGate::Kind;

namespace {

constexpr int default_runs = 10;
constexpr int default_tries = 100;

/// X on a vertex, or Y where it has a loop, and Z on its neighbours.
PauliFrame stabilisers_of(const BitMatrix& graph) {
  const int n = graph.rows();
  PauliFrame stabilisers(n, n);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      if (graph.get(i, j)) stabilisers.set_letter(i, j, i == j ? 2 : 3);
    }
    if (!graph.get(i, i)) stabilisers.set_letter(i, i, 1);
  }
  return stabilisers;
}

/// A circuit that prepares a graph state, from the gates that take the graph apart: these backward,
/// after H on every qubit, and a Z on each qubit whose stabiliser they leave negative.
template <class IsNegative>
std::vector<CliffordGate> preparation(int n, const std::vector<CliffordGate>& apart,
                                      IsNegative&& is_negative) {
  std::vector<CliffordGate> gates;
  gates.reserve(apart.size() + 2 * static_cast<std::size_t>(n));
  for (int q = 0; q < n; ++q) gates.push_back({Kind::h, q});
  for (auto gate = apart.rbegin(); gate != apart.rend(); ++gate) gates.push_back(gate->inverse());
  for (int q = 0; q < n; ++q) {
    if (is_negative(q)) gates.push_back({Kind::z, q});
  }
  return gates;
}

/// One CZ per edge, and an S per loop, which turns Y into -X.
std::vector<CliffordGate> prepared_by_edges(const BitMatrix& graph) {
  const int n = graph.rows();
  std::vector<CliffordGate> apart;
  for (int i = 0; i < n; ++i) {
    stop_point();
    if (graph.get(i, i)) apart.push_back({Kind::s, i});
    for_each_bit(graph.row(i), graph.stride(), [&](int j) {
      if (j > i) apart.push_back({Kind::cz, i, j});
    });
  }
  return preparation(n, apart, [&](int q) { return graph.get(q, q); });
}

BitMatrix renumbered(const BitMatrix& graph, const std::vector<int>& order) {
  BitMatrix result(graph.rows(), graph.rows());
  for (int i = 0; i < graph.rows(); ++i) {
    for (int j = 0; j < graph.rows(); ++j) {
      result.set(i, j,
                 graph.get(order[static_cast<std::size_t>(i)], order[static_cast<std::size_t>(j)]));
    }
  }
  return result;
}

/// Run 0 takes the qubits in their order, later ones in one that they draw.
std::vector<CliffordGate> prepared_by_decoding(const BitMatrix& graph, int tries,
                                               std::uint64_t seed, int run,
                                               const Control& control) {
  SeededDraw engine(seed, static_cast<std::uint32_t>(run));
  const Draw draw = std::ref(engine);
  std::vector<int> order = shuffled(graph.rows(), draw);
  if (run == 0) std::ranges::sort(order);
  TripleCircuit circuit;
  synthesise_graph_state(renumbered(graph, order), circuit, tries, draw, control);
  std::vector<CliffordGate> gates;
  PauliFrame stabilisers = stabilisers_of(graph);
  for (const auto& [code, first, second] : circuit) {
    const int a = order[static_cast<std::size_t>(first)];
    const int b = order[static_cast<std::size_t>(second)];
    gates.push_back(code == 0   ? CliffordGate{Kind::s, a}
                    : code == 1 ? CliffordGate{Kind::cz, a, b}
                                : CliffordGate::cnot(a, b));
    stop_point();
    stabilisers.apply(gates.back());
  }
  return preparation(graph.rows(), gates, [&](int q) { return stabilisers.is_negative(q); });
}

LowerBound bound_of_graph(const BitMatrix& graph, const PauliFrame& stabilisers) {
  WireGroups entangled(graph.rows());
  for (int i = 0; i < graph.rows(); ++i) {
    for_each_bit(graph.row(i), graph.stride(), [&](int j) { entangled.join(i, j); });
  }
  return bound_of_state(stabilisers, entangled.joins(), entangled.largest());
}

/// As the search for states makes them: qubits in place.
std::optional<MadeCircuit> sized(std::vector<CliffordGate> gates, int n) {
  const CircuitSize size = size_of(gates, n);
  return made_circuit(size, CliffordCircuit{std::move(gates), in_order(n), size});
}

constexpr double bytes_of_run = 100;  // over the square of the qubits

void check_symmetric(const BitMatrix& graph) {
  if (graph != graph.transposed()) {
    throw std::invalid_argument("graph: got a matrix that is not symmetric, wanted one that is");
  }
}

void check_options(const GraphStateOptions& options) {
  check_effort(options);
  const bool on_device = options.device != nullptr;
  check_method(options.method, graph_state_methods(on_device), on_device);
  const std::vector<std::string> long_ones{"auto", "decoding", "search"};
  check_options_of(options.method, {{"tries", options.tries.has_value(), {"decoding"}},
                                    {"restarts", options.restarts.has_value(), long_ones},
                                    {"budget", options.budget.has_value(), long_ones},
                                    {"steps", options.steps.has_value(), {"auto", "search"}},
                                    {"start", options.start.has_value(), {"auto", "search"}}});
  if (options.tries.value_or(0) < 0) {
    throw std::invalid_argument("tries: got " + std::to_string(*options.tries) +
                                ", wanted at least 0");
  }
}

}  // namespace

FoundCliffords synthesize_graph_state(const BitMatrix& bits, const GraphStateOptions& options) {
  check_symmetric(bits);
  check_options(options);
  const int n = bits.rows();
  if (options.method == "search" || options.device != nullptr) check_wires("graph", n);
  check_search_memory("graph", n, options, bytes_of_run);
  const std::optional<BitGraph> device = device_of_state(options, n);
  RunControl control(options.budget);
  const PauliFrame stabilisers = stabilisers_of(bits);
  Lane naive{.method = "naive",
             .runs = 1,
             .make = [&](int) { return sized(prepared_by_edges(bits), n); },
             .draws = false,
             .brief = true};
  std::vector<Lane> lanes;
  if (!device && (options.method == "auto" || options.method == "naive")) lanes.push_back(naive);
  if (options.method == "decoding") {
    const bool usual = !options.restarts && !options.budget;
    lanes.push_back({.method = "decoding",
                     .runs = usual ? default_runs : options.restarts,
                     .make = [&](int run) {
                       const int tries = options.tries.value_or(default_tries);
                       return sized(
                           prepared_by_decoding(bits, tries, options.seed, run, control.control(n)),
                           n);
                     }});
  }
  if ((options.method == "auto" && n <= most_wires) || options.method == "search") {
    lanes.push_back(state_search_lane(stabilisers, options, device, control));
  }
  naive.for_stops = true;
  BestRun best =
      best_of_runs(lanes, options, control, device ? std::nullopt : std::optional(naive));
  auto& found = best.as<CliffordCircuit>();
  FoundCliffords result{std::move(best.result), std::move(found.gates)};
  result.permutation = std::move(found.wires);
  if (options.method == "naive" || options.method == "decoding") {
    prove(result, bound_of_graph(bits, stabilisers));
  } else {
    prove_by_table(result, stabilisers, options);
  }
  return result;
}

}  // namespace zelt::braidwerk::internal

namespace synthesis {

std::vector<std::string> graph_state_methods(bool on_device) {
  if (on_device) return {"auto", "search"};
  return {"auto", "naive", "decoding", "search"};
}

GraphStateResult synthesize_graph_state(const BoolMatrix& graph, const GraphStateOptions& options) {
  const auto n = static_cast<int>(graph.size());
  const bool square = std::ranges::all_of(
      graph, [&](const BoolRow& row) { return static_cast<int>(row.size()) == n; });
  using zelt::braidwerk::internal::BitMatrix;
  const BitMatrix bits = square ? BitMatrix::pack(graph, n, n) : BitMatrix(0, 1);
  return zelt::braidwerk::internal::unpacked<GraphStateResult>(
      zelt::braidwerk::internal::synthesize_graph_state(bits, options));
}

}  // namespace synthesis
