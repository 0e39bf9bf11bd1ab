#include "zeltbraidwerk/clifford/search/internal/state_list.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace zelt::braidwerk::internal {
namespace {

/// The generators of a state, made by row operations such that on every qubit one of two letters,
/// X or else Z, is found in a generator of its own, and the other one in what are its neighbours.
struct GraphForm {
  BitMatrix own;
  BitMatrix other;
  std::vector<int> label;  ///< by qubit: of its own letter

  explicit GraphForm(const PauliFrame& stabilisers)
      : own(stabilisers.x_planes().transposed()),
        other(stabilisers.z_planes().transposed()),
        label(static_cast<std::size_t>(stabilisers.qubits()), label_x) {
    const int n = std::min(own.rows(), own.cols());
    for (int q = 0; q < n; ++q) {
      int pivot = first_with(own, q);
      if (pivot == n) {
        pivot = first_with(other, q);
        exchange_letters(q);
      }
      if (pivot == n) continue;
      own.swap_rows(q, pivot);
      other.swap_rows(q, pivot);
      for (int r = 0; r < n; ++r) {
        if (r == q || !own.get(r, q)) continue;
        own.add_row(q, r);
        other.add_row(q, r);
      }
    }
  }

 private:
  static int first_with(const BitMatrix& letters, int q) {
    int r = q;
    while (r < letters.rows() && !letters.get(r, q)) ++r;
    return r;
  }

  void exchange_letters(int q) {
    label[static_cast<std::size_t>(q)] = label_z;
    for (int r = 0; r < own.rows(); ++r) {
      const bool bit = own.get(r, q);
      own.set(r, q, other.get(r, q));
      other.set(r, q, bit);
    }
  }
};

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

GateList by_graph(const PauliFrame& stabilisers) {
  const GraphForm form(stabilisers);
  const int n = stabilisers.qubits();
  GateList list(n, {});
  for (int a = 0; a < n; ++a) {
    int degree = 0;
    for (int b = 0; b < n; ++b) {
      if (a == b || !form.other.get(a, b)) continue;
      ++degree;
      if (a < b) list.gates.push_back({end_of(a, label_x), end_of(b, label_x)});
    }
    // A zero's Z, once for each edge multiplied by X, is to be the qubit's own letter or, with a
    // one on the diagonal, the third; X, which goes to the neighbours, the other one.
    const int own = form.label[static_cast<std::size_t>(a)];
    const int other = label_x + label_z - own;
    const int now = label_z ^ (degree % 2 != 0 ? label_x : 0);
    const int wanted = own ^ (form.other.get(a, a) ? other : 0);
    list.frame[end_of(a, label_x)] = end_of(a, other);
    list.frame[end_of(a, now)] = end_of(a, wanted);
    list.frame[end_of(a, now ^ label_x)] = end_of(a, wanted ^ other);
  }
  return list;
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

GateList in_place(GateList list) {
  std::vector<int> places(static_cast<std::size_t>(list.wires()));
  for (int wire = 0; wire < list.wires(); ++wire) {
    places[static_cast<std::size_t>(wire)] = wire_of(list.frame[end_of(wire, label_x)]);
  }
  return renamed(std::move(list), places);
}

}  // namespace zelt::braidwerk::internal
