#include "graph_states/classes.h"

#include <algorithm>
#include <bit>
#include <unordered_map>
#include <utility>

namespace graph_states {

using namespace zelt::braidwerk::internal;

namespace {

std::size_t at(int k) {
  return static_cast<std::size_t>(k);
}

SmallStabilisers zeros(int n) {
  SmallStabilisers state{n};
  for (int q = 0; q < n; ++q) state.z[at(q)] = static_cast<std::uint16_t>(1U << q);
  return state;
}

std::string graph6(const SmallGraph& graph) {
  std::string text(1, static_cast<char>(63 + graph.n));
  int bits = 0;
  int filled = 0;
  const auto add = [&](bool bit) {
    bits = bits << 1 | (bit ? 1 : 0);
    if (++filled < 6) return;
    text.push_back(static_cast<char>(63 + bits));
    bits = filled = 0;
  };
  for (int b = 1; b < graph.n; ++b) {
    for (int a = 0; a < b; ++a) add(graph.joined(a, b));
  }
  while (filled != 0) add(false);
  return text;
}

}  // namespace

void apply(const PairGate& gate, SmallStabilisers& state) {
  const auto has_x = [](int pauli) { return pauli != 3 ? 1U : 0U; };
  const auto has_z = [](int pauli) { return pauli != 1 ? 1U : 0U; };
  for (int r = 0; r < state.n; ++r) {
    const auto anticommutes = [&](int q, int pauli) {
      return ((state.x[at(r)] >> q & has_z(pauli)) ^ (state.z[at(r)] >> q & has_x(pauli))) & 1U;
    };
    const unsigned with_a = anticommutes(gate.a, gate.pauli_a);
    const unsigned with_b = anticommutes(gate.b, gate.pauli_b);
    state.x[at(r)] ^= static_cast<std::uint16_t>(with_a * has_x(gate.pauli_b) << gate.b |
                                                 with_b * has_x(gate.pauli_a) << gate.a);
    state.z[at(r)] ^= static_cast<std::uint16_t>(with_a * has_z(gate.pauli_b) << gate.b |
                                                 with_b * has_z(gate.pauli_a) << gate.a);
  }
}

namespace {

/// The classes found so far, with the graphs of each.
class Classes {
 public:
  explicit Classes(int n) : n_(n) {}

  /// False when it is known.
  bool add(const SmallStabilisers& state, std::vector<PairGate> circuit) {
    const std::uint64_t key = canonical_key(state.graph());
    if (!class_of_.try_emplace(key, found_.size()).second) return false;
    const std::vector<std::uint64_t> orbit = keys_of_orbit(graph_of_key(key, n_));
    for (const std::uint64_t other : orbit) class_of_.try_emplace(other, found_.size());
    const std::uint64_t best = representative(orbit);
    const int gates = static_cast<int>(circuit.size());
    found_.push_back(
        {graph_of_key(best, n_), static_cast<int>(orbit.size()), gates, std::move(circuit)});
    states_.push_back(state);
    return true;
  }

  void expand(std::size_t k) {
    for (int a = 0; a < n_; ++a) {
      for (int b = a + 1; b < n_; ++b) {
        for (int paulis = 0; paulis < 9; ++paulis) {
          const PairGate gate{a, 1 + paulis / 3, b, 1 + paulis % 3};
          SmallStabilisers next = states_[k];
          apply(gate, next);
          std::vector<PairGate> circuit = found_[k].circuit;
          circuit.push_back(gate);
          add(next, std::move(circuit));
        }
      }
    }
  }

  std::size_t size() const { return found_.size(); }
  std::vector<GraphClass> take() { return std::move(found_); }

 private:
  int n_;
  std::unordered_map<std::uint64_t, std::size_t> class_of_;
  std::vector<GraphClass> found_;
  std::vector<SmallStabilisers> states_;
};

}  // namespace

/// Classes are added in the order of their gates, since they are expanded in the order in which
/// they were added.
std::vector<GraphClass> classes(int n) {
  Classes found(n);
  found.add(zeros(n), {});
  for (std::size_t k = 0; k < found.size(); ++k) found.expand(k);
  return found.take();
}

std::vector<GraphClass> connected_ones(std::vector<GraphClass> found) {
  std::erase_if(found, [](const GraphClass& each) { return !each.graph.connected(); });
  std::ranges::stable_sort(
      found, {}, [](const GraphClass& each) { return std::pair(each.gates, each.graph.edges()); });
  return found;
}

bool are_known(const std::vector<GraphClass>& found) {
  return std::ranges::all_of(found, [](const GraphClass& each) {
    const int n = each.graph.n;
    PauliFrame stabilisers(n, n);
    for (int v = 0; v < n; ++v) {
      stabilisers.set_letter(v, v, 1);
      for (int w = 0; w < n; ++w) {
        if (each.graph.joined(v, w)) stabilisers.set_letter(v, w, 3);
      }
    }
    return fewest_gates_of_state(stabilisers) == each.gates;
  });
}

std::uint64_t entry_of(const GraphClass& found) {
  return table_entry(found.graph.n, canonical_key(found.graph), found.gates);
}

std::string as_csv(const GraphClass& found) {
  const SmallGraph& graph = found.graph;
  std::string line = std::to_string(graph.n) + ',' + graph6(graph);
  for (const int number : {found.size, graph.edges(), found.gates}) {
    line += ',' + std::to_string(number);
  }
  char before = ',';
  for (const auto& [a, pauli_a, b, pauli_b] : found.circuit) {
    line += before;
    line += "IXYZ"[pauli_a] + std::to_string(a) + "IXYZ"[pauli_b] + std::to_string(b);
    before = ' ';
  }
  return line;
}

}  // namespace graph_states
