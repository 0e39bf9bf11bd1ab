#include "zeltbraidwerk/clifford/search/internal/state_list.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "zeltbraidwerk/clifford/search/internal/graph_sorting.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/graphs/internal/edge_coloring.h"
#include "zeltbraidwerk/search/internal/circuit_size.h"

namespace zelt::braidwerk::internal {
namespace {

/// The same list with each wire renamed.
GateList renamed(GateList list, const std::vector<int>& names) {
  const auto name = [&](End end) {
    return end_of(names[static_cast<std::size_t>(wire_of(end))], label_of(end));
  };
  for (Gate& gate : list.gates) gate = {name(gate.a), name(gate.b)};
  list.frame = list.frame.renamed(name);
  return list;
}

/// Wires on which no generator is left come before the others.
GateList with_logical_inputs_first(GateList list, const StateGroup& group) {
  const int n = list.wires();
  std::vector<int> names(static_cast<std::size_t>(n));
  int logical = 0;
  int zero = n - group.generators();
  for (int wire = 0; wire < n; ++wire) {
    names[static_cast<std::size_t>(wire)] = group.label(wire) == 0 ? logical++ : zero++;
  }
  return renamed(std::move(list), names);
}

}  // namespace

GateList by_graph(const StateGraph& form, Objective objective) {
  const int n = form.edges.rows();
  GateList list(n, {});
  const auto join = [&](int a, int b) {
    list.gates.push_back({end_of(a, label_x), end_of(b, label_x)});
  };
  if (objective == Objective::depth && n <= state_tuning.colored_wires) {
    BitGraph graph(n);
    form.each_edge([&](int a, int b) { graph.join(a, b); });
    const StopScope::Suspended to_the_end;  // there has to be a circuit
    for (const auto& matching : matchings_of(graph)) {
      for (const auto& [a, b] : matching) join(a, b);
    }
  } else {
    form.each_edge(join);
  }
  for (int a = 0; a < n; ++a) {
    const bool odd = form.edges.row_weight(a) % 2 != 0;
    // A zero's Z, once for each edge multiplied by X, is to be the qubit's own letter; X, which
    // goes to the neighbours, the other one.
    const int own = form.own[static_cast<std::size_t>(a)];
    const int other = form.other[static_cast<std::size_t>(a)];
    const int now = label_z ^ (odd ? label_x : 0);
    list.frame[end_of(a, label_x)] = end_of(a, other);
    list.frame[end_of(a, now)] = end_of(a, own);
    list.frame[end_of(a, now ^ label_x)] = end_of(a, own ^ other);
  }
  return list;
}

GateList by_sums(StateGraph form) {
  const int n = form.edges.rows();
  std::vector<Gate> apart;
  for (const GraphMove& move : clear_by_sorting(std::move(form.edges))) {
    apart.push_back(form.gate_of(move));
  }
  PauliFrame left(n, n);
  for (int q = 0; q < n; ++q)
    left.set_letter(q, q, letter_for(form.own[static_cast<std::size_t>(q)]));
  return backwards(apart, StateGroup(left));
}

GateList backwards(const std::vector<Gate>& apart, const StateGroup& group) {
  GateList list(group.qubits(), {});
  // On each wire the label that is left and Z change places.
  for (int q = 0; q < group.qubits(); ++q) {
    const int label = group.label(q);
    if (label != 0) std::swap(list.frame[end_of(q, label)], list.frame[end_of(q, label_z)]);
  }
  for (auto gate = apart.rbegin(); gate != apart.rend(); ++gate) {
    list.gates.push_back({list.frame[gate->a], list.frame[gate->b]});
  }
  return with_logical_inputs_first(std::move(list), group);
}

GateList continued(GateList begin, const GateList& list, int count) {
  const WireFrame now = begin.frame.inverse();
  for (auto gate = list.gates.begin() + count; gate != list.gates.end(); ++gate) {
    begin.gates.push_back({now[gate->a], now[gate->b]});
  }
  begin.frame = list.frame.renamed([&](End end) { return now[end]; });
  return begin;
}

std::vector<int> order_by_layers(GateList& list) {
  LayerCount layers(list.wires());
  std::vector<std::vector<Gate>> sorted;
  for (const Gate& gate : list.gates) {
    const auto layer = static_cast<std::size_t>(layers.add(wire_of(gate.a), wire_of(gate.b)));
    if (layer > sorted.size()) sorted.emplace_back();
    sorted[layer - 1].push_back(gate);
  }
  list.gates.clear();
  std::vector<int> ends;
  for (const std::vector<Gate>& layer : sorted) {
    list.gates.insert(list.gates.end(), layer.begin(), layer.end());
    ends.push_back(list.count());
  }
  return ends;
}

GateList in_place(GateList list) {
  std::vector<int> places(static_cast<std::size_t>(list.wires()));
  for (int wire = 0; wire < list.wires(); ++wire) {
    places[static_cast<std::size_t>(wire)] = wire_of(list.frame[end_of(wire, label_x)]);
  }
  return renamed(std::move(list), places);
}

}  // namespace zelt::braidwerk::internal
