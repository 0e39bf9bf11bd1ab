#include "zeltbraidwerk/pauli/internal/methods.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <optional>
#include <ranges>
#include <string>
#include <utility>

#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/clifford/search/internal/search.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/pauli/internal/commuting_sets.h"
#include "zeltbraidwerk/pauli/internal/greedy.h"
#include "zeltbraidwerk/pauli/internal/network.h"
#include "zeltbraidwerk/pauli/internal/recursive.h"
#include "zeltbraidwerk/search/internal/runs.h"

namespace zelt::braidwerk::internal {

using structures::Graph;

structures::Parameter row_label(int row) {
  return {std::to_string(row)};
}

LabelledRow labelled_row(const structures::Gate& gate) {
  if (gate.params.empty() || !gate.params[0].is_abstract) return {};
  const std::string& text = gate.params[0].expression;  // a number, or "UMINUS " and one
  const std::size_t space = text.find(' ');
  if (space == std::string::npos) return {std::stoi(text), false};
  return {std::stoi(text.substr(space)), true};
}

LabelledTable::LabelledTable(PauliFrame rows) : frame(std::move(rows)) {
  for (int r = 0; r < frame.rows(); ++r) labels.push_back(row_label(r));
}

namespace {

constexpr std::uint64_t closing_steps = 10'000;  ///< a few milliseconds, and no large table

std::vector<structures::Gate> recursively(Rotations rotations, Graph*, const Draw&) {
  std::vector<structures::Gate> circuit;
  std::vector<Word> done(static_cast<std::size_t>(rotations.frame.words()));
  RecursiveSynthesis{rotations.frame, rotations.params, circuit, done}.run();
  return circuit;
}

template <int basis>
std::vector<structures::Gate> in_sets(Rotations rotations, Graph* device, const Draw& draw) {
  if (device != nullptr) return synthesise_open_sets_on_graph(std::move(rotations), *device);
  return synthesise_open_sets(std::move(rotations), basis, draw);
}

constexpr PauliMethod table_of_methods[] = {
    {"ladder", [](Rotations r, Graph*, const Draw&) { return synthesise_ladders(r); }, true},
    {"recursive", recursively},
    {"greedy", [](Rotations r, Graph*, const Draw&) { return synthesise_greedily(std::move(r)); }},
    {"greedy_depth",
     [](Rotations r, Graph*, const Draw&) { return synthesise_in_matchings(std::move(r)); }},
    {"sets", in_sets<0>},
    {"sets_graph", in_sets<1>},
    {"sets_decoding", in_sets<2>},
    {"sets_closed",
     [](Rotations r, Graph*, const Draw& draw) { return synthesise_sets(r, 0, draw); }},
};

/// Back to the qubits that had the names.
void rename_back(PauliNetwork& network, const std::vector<int>& names) {
  std::vector<int> old(names.size());
  for (std::size_t q = 0; q < names.size(); ++q) {
    old[static_cast<std::size_t>(names[q])] = static_cast<int>(q);
  }
  for (structures::Gate& gate : network.gates) {
    for (int& q : gate.qbits) q = old[static_cast<std::size_t>(q)];
  }
  std::vector<int> wires(names.size());
  for (std::size_t q = 0; q < names.size(); ++q) {
    const int wire = network.wires[static_cast<std::size_t>(names[q])];
    wires[q] = old[static_cast<std::size_t>(wire)];
  }
  network.wires = std::move(wires);
}

}  // namespace

std::span<const PauliMethod> pauli_method_table() {
  return table_of_methods;
}

const PauliMethod* pauli_method(std::string_view name) {
  const PauliMethod* entry = std::ranges::find(table_of_methods, name, &PauliMethod::name);
  return entry == std::end(table_of_methods) ? nullptr : entry;
}

PauliNetwork PauliRuns::make(int run) const {
  SeededDraw engine(seed, static_cast<std::uint32_t>(run));
  const Draw draw = std::ref(engine);
  std::vector<int> names = shuffled(qubits(), draw);
  if (run == 0 || device != nullptr) std::ranges::sort(names);

  std::optional<Graph> own;  // trees are kept in it
  if (device != nullptr) own.emplace(*device);
  const Synthesis synthesis = [&](Rotations rotations) {
    return method.make(arranged(std::move(rotations), run, draw), own ? &*own : nullptr, draw);
  };
  PauliNetwork network;
  network.in_order = in_order;
  network.gates =
      in_order ? synthesise_in_order(renamed(names), synthesis) : synthesis(renamed(names));
  close(network, run, names);
  rename_back(network, names);
  return network;
}

Rotations PauliRuns::renamed(const std::vector<int>& names) const {
  const PauliFrame& given = table.frame;
  Rotations rotations{PauliFrame(qubits(), given.rows()), table.labels};
  for (int r = 0; r < given.rows(); ++r) {
    for (int q = 0; q < qubits(); ++q) {
      const unsigned char letter = given.letter(r, q);
      if (letter != 0) rotations.frame.set_letter(r, names[static_cast<std::size_t>(q)], letter);
    }
  }
  return rotations;
}

Rotations PauliRuns::arranged(Rotations rotations, int run, const Draw& draw) const {
  if (method.closes) return rotations;
  const int rows = rotations.frame.rows();
  std::vector<int> order = shuffled(rows, draw);
  if (run == 0 || device == nullptr) {
    std::vector<PauliLetters> letters;
    for (int r = 0; r < rows; ++r) letters.push_back(rotations.frame.letters(r));
    std::ranges::sort(order, {}, [&](int r) -> const PauliLetters& {
      return letters[static_cast<std::size_t>(r)];
    });
  }
  Rotations result{rotations.frame.select(order), {}};
  for (const int r : order) {
    result.params.push_back(std::move(rotations.params[static_cast<std::size_t>(r)]));
  }
  return result;
}

/// Undoes the Clifford gates, and appends the target, by a short search for one circuit of them
/// all, or one by one where that is no longer. The target has the given names of qubits, not these.
void PauliRuns::close(PauliNetwork& network, int run, const std::vector<int>& names) const {
  network.wires = internal::in_order(qubits());
  if (outputs == Outputs::left_open || (method.closes && target == nullptr)) return;
  stop_point();
  const auto is_undone = [&](const structures::Gate& gate) {
    return !method.closes && labelled_row(gate).row < 0;
  };
  std::vector<structures::Gate> last;
  if (target != nullptr) last = target->gates;
  for (structures::Gate& gate : last) {
    for (int& q : gate.qbits) q = names[static_cast<std::size_t>(q)];
  }
  int pairs = size_of(last, qubits()).count;
  PauliFrame images = identity_images(qubits());
  for (const structures::Gate& gate : std::views::reverse(network.gates)) {
    if (!is_undone(gate)) continue;
    images.apply(inverse_of(gate));
    pairs += gate.qbits.size() == 2 ? 1 : 0;
  }
  for (const structures::Gate& gate : last) images.apply(gate);

  const Task task{.objective = objective,
                  .outputs = outputs,
                  .device = edges,
                  .seed = seed,
                  .stream = static_cast<std::uint64_t>(run)};
  Effort effort;
  effort.steps = closing_steps;
  CliffordCircuit closing = search_clifford(images, task, effort);
  const bool is_off_edges = device != nullptr && target != nullptr;
  if (is_off_edges || closing.size.count < pairs) {
    last = to_gates(closing.gates);
    network.wires = std::move(closing.wires);
  } else {
    const std::size_t made = network.gates.size();
    network.gates.reserve(2 * made + last.size());
    for (std::size_t k = made; k-- > 0;) {
      if (is_undone(network.gates[k])) network.gates.push_back(inverse_of(network.gates[k]));
    }
  }
  network.gates.insert(network.gates.end(), std::move_iterator(last.begin()),
                       std::move_iterator(last.end()));
}

}  // namespace zelt::braidwerk::internal
