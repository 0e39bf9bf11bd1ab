#include "zeltbraidwerk/circuit/two_wire/internal/two_wire_windows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <random>
#include <string>

#include "support/circuits.h"
#include "support/oracles.h"
#include "support/state_vector.h"

namespace {

using namespace zelt::braidwerk::internal;
using structures::Gate;
using support::AngleKind;
using support::at;
using support::turn;
using Circuit = std::vector<Gate>;
using Rng = std::mt19937;
constexpr double pi = std::numbers::pi;

bool numeric(const Gate& gate) {
  return gate.params.empty() || !gate.params[0].is_abstract;
}

struct Counts {
  int two_wire = 0;
  int rotations = 0;
  int one_wire = 0;
  bool operator==(const Counts&) const = default;
};

Counts counts_of(const Circuit& circuit) {
  Counts counts;
  for (const Gate& gate : circuit) {
    counts.two_wire += gate.qbits.size() == 2;
    counts.one_wire += gate.qbits.size() == 1;
    if (gate.params.empty() || gate.params[0].is_abstract) continue;
    counts.rotations += std::abs(std::remainder(gate.params[0].value, std::acos(0.0))) > 1e-9;
  }
  return counts;
}

/// The Pauli operator by which a gate acts on one of its wires, or 0.
char label(const Gate& gate, int wire) {
  if (gate.name == "CNOT") return gate.qbits[0] == wire ? 'Z' : 'X';
  if (gate.name == "CZ" || gate.name == "CSIGN") return 'Z';
  const std::string last(1, gate.name.back());
  if (gate.qbits.size() != 1) return 0;
  if (last == "X" || last == "Y" || last == "Z") return last[0];
  return last == "S" || gate.name == "PH" || gate.name == "I" ? 'Z' : 0;
}

/// Plays the log of a circuit step by step on lists of gates by wire. Each replacement is proven by
/// its matrices. Returns the first fault, or an empty text.
class Player {
 public:
  Player(const Circuit& circuit, int n) : wires_(at(n)) {
    for (const Gate& gate : circuit) {
      for (const int wire : gate.qbits) {
        wires_[at(wire)].push_back(gates_.size());
      }
      gates_.push_back(gate);
    }
  }

  std::string play(const WindowStep& step) {
    return step.kind == WindowStep::Kind::move ? move(step) : replace(step);
  }

  /// Whether each wire has the gates of a circuit.
  bool matches(const Circuit& circuit) const {
    std::vector<Circuit> wanted(wires_.size());
    std::vector<Circuit> found(wires_.size());
    for (const Gate& gate : circuit) {
      for (const int wire : gate.qbits) wanted[at(wire)].push_back(gate);
    }
    for (std::size_t w = 0; w < wires_.size(); ++w) {
      for (const std::size_t number : wires_[w]) found[w].push_back(gates_[number]);
    }
    return wanted == found;
  }

 private:
  std::string replace(const WindowStep& step) {
    Circuit before;
    for (const std::size_t number : step.before) before.push_back(gates_[number]);
    if (const double off = distance_of(before, step); off > 1e-10) {
      return "an operator changes by " + std::to_string(off);
    }
    const std::size_t first_new = gates_.size();
    gates_.insert(gates_.end(), step.after.begin(), step.after.end());
    for (const int wire : step.wires) {
      if (wire < 0) continue;
      auto& list = wires_[at(wire)];
      std::vector<std::size_t> old;
      std::vector<std::size_t> fresh;
      for (const std::size_t number : step.before) {
        if (std::ranges::count(gates_[number].qbits, wire)) old.push_back(number);
      }
      for (std::size_t k = 0; k < step.after.size(); ++k) {
        if (std::ranges::count(step.after[k].qbits, wire)) fresh.push_back(first_new + k);
      }
      const auto found = std::ranges::search(list, old);
      if (!old.empty() && found.empty()) return "gates do not stand together";
      if (old.empty() && !fresh.empty()) return "gates on a new wire";
      const auto at = list.erase(found.begin(), found.end());
      list.insert(at, fresh.begin(), fresh.end());
    }
    return "";
  }

  std::string move(const WindowStep& step) {
    const std::size_t moved = step.before.at(2);
    for (std::size_t k = 0; k < 2; ++k) {
      const int wire = step.wires[k];
      auto& list = wires_[at(wire)];
      const auto from = std::ranges::find(list, step.before[k]);
      const auto to = std::find(from, list.end(), moved);
      if (from == list.end() || to == list.end()) return "a gate does not move to an earlier place";
      const char wanted = label(gates_[moved], wire);
      if (std::any_of(from + 1, to, [&](auto g) { return label(gates_[g], wire) != wanted; })) {
        return "a gate passes one that it does not commute with";
      }
      std::rotate(from + 1, to, to + 1);
    }
    return "";
  }

  static double distance_of(const Circuit& before, const WindowStep& step) {
    const auto on_places = [&](Circuit circuit) {
      for (Gate& gate : circuit) {
        for (int& wire : gate.qbits) wire = wire == step.wires[0] ? 0 : 1;
      }
      return circuit;
    };
    double squares = 0;
    for (std::size_t column = 0; column < 4; ++column) {
      support::State state(4);
      state[column] = 1;
      const auto old = support::after(on_places(before), 2, state);
      const auto made = support::after(on_places(step.after), 2, state);
      for (std::size_t row = 0; row < 4; ++row) {
        squares += std::norm(made[row] * std::polar(1.0, step.phase) - old[row]);
      }
    }
    return std::sqrt(squares);
  }

  Circuit gates_;  // by number
  std::vector<std::vector<std::size_t>> wires_;
};

/// Everything that must hold of a result; returns it.
WindowResult check(const Circuit& circuit, int n, bool keep_rotations, const std::string& what) {
  WindowResult found = two_wire_windows(circuit, {keep_rotations});
  Player player(circuit, n);
  for (const WindowStep& step : found.log) {
    const std::string fault = player.play(step);
    EXPECT_EQ(fault, "") << what;
    if (!fault.empty()) return found;
  }
  EXPECT_TRUE(player.matches(found.circuit)) << what;
  const Counts before = counts_of(circuit);
  const Counts after = counts_of(found.circuit);
  EXPECT_LE(after.two_wire, before.two_wire) << what;
  if (keep_rotations || after.two_wire == before.two_wire) {
    EXPECT_LE(after.rotations, before.rotations) << what;
  }
  EXPECT_EQ(two_wire_windows(found.circuit, {keep_rotations}).circuit, found.circuit) << what;
  if (std::ranges::all_of(circuit, numeric)) {
    Rng rng(7);
    const support::State state = support::random_state(n, rng);
    EXPECT_LE(support::distance(support::after(found.circuit, n, state),
                                support::after(circuit, n, state), std::polar(1.0, found.phase)),
              1e-9)
        << what;
  }
  return found;
}

TEST(TwoWireWindows, keep_the_operator_and_the_proof) {
  Rng rng(1);
  std::ptrdiff_t moves = 0;
  for (const int n : {1, 2, 3, 4, 6, 8}) {
    for (const AngleKind kind : {AngleKind::numeric, AngleKind::mixed, AngleKind::generic}) {
      for (const bool commuting : {false, true}) {
        for (const int length : {0, 1, 5, 20, 60, 150, 200}) {
          Circuit circuit = support::random_circuit(n, length, kind, rng);
          std::erase_if(circuit, [&](const Gate& gate) {
            const bool turns = gate.qbits.size() == 1 && label(gate, gate.qbits[0]) != 'Z';
            return commuting && turns && rng() % 9 != 0;
          });
          const std::string what = std::to_string(n) + " qubits, " + std::to_string(length);
          for (const bool keep : {false, true}) {
            const auto log = check(circuit, n, keep, what).log;
            moves += std::ranges::count(log, WindowStep::Kind::move, &WindowStep::kind);
          }
        }
      }
    }
  }
  EXPECT_GT(moves, 900);
}

/// Two-wire gates left of named circuits.
TEST(TwoWireWindows, named_circuits) {
  const auto cnot = [](int a, int b) { return Gate::CNOT(a, b); };
  const auto ry = [](int wire, double angle) { return turn("RY", wire, angle); };
  const auto rz = [](int wire, double angle) { return turn("RZ", wire, angle); };
  const auto controlled = [&](int a, int b, double by) {
    return Circuit{rz(b, by), cnot(a, b), rz(b, -by), cnot(a, b)};
  };
  const auto joined = [](const std::vector<Circuit>& parts) {
    Circuit all;
    for (const Circuit& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
  };
  Circuit layers;
  Circuit mirror;
  for (int k = 0; k < 8; ++k) {
    layers.push_back(ry(0, 0.1 + k));
    layers.push_back(rz(1, 0.3 * k - 1));
    layers.push_back(cnot(k % 2, 1 - k % 2));
  }
  for (int k = 0; k < 40; ++k) mirror.push_back(cnot(k % 5, k % 5 + 1));
  for (int k = 40; k-- > 0;) mirror.push_back(cnot(k % 5, k % 5 + 1));
  struct Named {
    std::string name;
    Circuit circuit;
    Counts counts;
  };
  const Circuit symbol{cnot(0, 1), turn("RZ", 1, {"t"}), cnot(0, 1)};
  const std::vector<Named> cases{
      {"nothing", {}, {0, 0, 0}},
      {"layers on a pair", layers, {3, 15, 15}},
      {"a circuit and its inverse", mirror, {0, 0, 0}},
      {"gates that pass on their control", {cnot(0, 1), cnot(0, 2), cnot(0, 1)}, {1, 0, 0}},
      {"gates that do not pass", {cnot(0, 1), cnot(1, 2), cnot(0, 1)}, {3, 0, 0}},
      {"controlled rotations from one control",
       joined({controlled(0, 1, 0.3), controlled(0, 2, 0.4), controlled(0, 1, 0.5)}),
       {4, 4, 4}},
      {"a symbol between", symbol, {2, 0, 1}},
      {"a SWAP and a CNOT", {cnot(0, 1), cnot(1, 0), cnot(0, 1), cnot(0, 1)}, {2, 0, 2}},
      {"one wire", {ry(0, 0.1), rz(0, 0.2), rz(0, 0.3), ry(0, 0.4), rz(0, 0.5)}, {0, 3, 3}},
      {"four T gates", {rz(0, pi / 4), rz(0, pi / 4), rz(0, pi / 4), rz(0, pi / 4)}, {0, 0, 1}},
  };
  for (const Named& c : cases) {
    const Counts found = counts_of(check(c.circuit, 6, false, c.name).circuit);
    EXPECT_LE(found.two_wire, c.counts.two_wire) << c.name;
    EXPECT_LE(found.rotations, c.counts.rotations) << c.name;
    EXPECT_LE(found.one_wire, c.counts.one_wire) << c.name;
  }
}

TEST(TwoWireWindows, rotations_do_not_rise_where_that_is_asked) {
  // Three CNOTs take more rotations than these eight do.
  Circuit circuit;
  for (int k = 0; k < 4; ++k) {
    circuit.push_back(turn("RY", 0, 0.3 + k));
    circuit.push_back(turn("RX", 1, 0.7 + k));
    circuit.push_back(Gate::CNOT(k % 2, 1 - k % 2));
  }
  EXPECT_EQ(counts_of(check(circuit, 2, false, "free").circuit).two_wire, 3);
  const Counts kept = counts_of(check(circuit, 2, true, "kept").circuit);
  EXPECT_LE(kept.rotations, 8);
  EXPECT_EQ(kept.two_wire, 4);
}

TEST(TwoWireWindows, long_circuits_meet_their_inverse) {
  Rng rng(5);
  Circuit circuit = support::random_circuit(40, 10000, AngleKind::generic, rng);
  for (Gate& gate : circuit) {
    if (gate.qbits.size() < 2) continue;
    std::ranges::sort(gate.qbits);
    gate = Gate("CNOT", gate.qbits);
  }
  const Circuit back = support::inverse(circuit);
  circuit.insert(circuit.end(), back.begin(), back.end());
  EXPECT_TRUE(two_wire_windows(circuit, {}).circuit.empty());
}

}  // namespace
