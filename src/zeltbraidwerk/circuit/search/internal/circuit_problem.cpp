#include "zeltbraidwerk/circuit/search/internal/circuit_problem.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>

#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/pauli/search/internal/network_emission.h"
#include "zeltbraidwerk/search/internal/orders.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr int label_of_letter(int letter) {
  return (letter != 3 ? label_x : 0) | (letter != 1 ? label_z : 0);
}

void apply(PauliFrame& images, const Step& step) {
  switch (step.kind) {
    case StepKind::cnot:
      images.cnot(step.a, step.b);
      break;
    case StepKind::cz:
      images.cz(step.a, step.b);
      break;
    case StepKind::h:
      images.h(step.a);
      break;
    case StepKind::turn: {
      constexpr OneQubitGate gates[3][3] = {
          {OneQubitGate::rx_plus, OneQubitGate::x, OneQubitGate::rx_minus},
          {OneQubitGate::ry_plus, OneQubitGate::y, OneQubitGate::ry_minus},
          {OneQubitGate::s, OneQubitGate::z, OneQubitGate::s_dagger}};
      images.apply(gates[step.letter - 1][step.quarters - 1], step.a);
      break;
    }
    case StepKind::rotation:
      break;
  }
}

PauliFrame strings_of(int qubits, const std::vector<Step>& steps) {
  PauliFrame rows(qubits, static_cast<int>(std::ranges::count(steps, false, &Step::is_clifford)));
  Preimages before(qubits);
  std::vector<Word> string(2 * static_cast<std::size_t>(before.words()));
  for (const Step& step : steps) {
    if (step.is_clifford()) {
      play(before, step);
      continue;
    }
    const bool negative = before.read(step.letter, step.a, string.data());
    const Word bit = Word{1} << (step.row % word_bits);
    for_each_bit(string.data(), before.words(),
                 [&](int q) { rows.x(q)[step.row / word_bits] |= bit; });
    for_each_bit(string.data() + before.words(), before.words(),
                 [&](int q) { rows.z(q)[step.row / word_bits] |= bit; });
    rows.set_negative(step.row, negative != step.negative);
  }
  return rows;
}

CliffordTarget target_of(int qubits, const std::vector<Step>& steps) {
  CliffordTarget target{identity_images(qubits), {}};
  StepCircuit clifford;
  clifford.qubits = qubits;
  std::ranges::copy_if(steps, std::back_inserter(clifford.steps), &Step::is_clifford);
  for (const Step& step : inverted(clifford.steps, 0)) apply(target.preimages, step);
  target.gates = written(clifford);
  return target;
}

/// The gates on single wires that are left where the images of qubit q are on wire wires[q].
std::vector<structures::Gate> gates_left(const PauliFrame& images, const std::vector<int>& wires) {
  std::vector<structures::Gate> gates;
  const int n = images.qubits();
  for (int q = 0; q < n; ++q) {
    const int wire = wires[static_cast<std::size_t>(q)];
    PauliFrame there(1, 2);
    for (const int k : {0, 1}) {
      there.set_letter(k, 0, images.letter(q + k * n, wire));
      there.set_negative(k, images.is_negative(q + k * n));
    }
    for (const CliffordGate& gate : eliminate_clifford(std::move(there), false).gates) {
      gates.push_back(to_gate({gate.kind, wire}));
    }
  }
  return gates;
}

class StepWriter {
 public:
  StepWriter(PauliFrame& images, bool with_cz) : allows_cz(with_cz), images_(images) {}

  const bool allows_cz;

  void cnot(int control, int target) {
    append({.kind = StepKind::cnot, .a = control, .b = target});
  }
  void cz(int a, int b) { append({.kind = StepKind::cz, .a = a, .b = b}); }
  void change(int label, int q) {
    append(label == label_y ? Step{.kind = StepKind::h, .a = q}
                            : turn(letter_of_label(label), q, 1));
  }
  void rotate(int row, int label, int q, bool negative) {
    steps.push_back({.kind = StepKind::rotation,
                     .letter = letter_of_label(label),
                     .negative = negative,
                     .a = q,
                     .row = row});
  }

  std::vector<Step> steps;

 private:
  void append(const Step& step) {
    apply(images_, step);
    steps.push_back(step);
  }

  PauliFrame& images_;
};

}  // namespace

std::vector<NetworkEvent> events_of(int qubits, const std::vector<Step>& steps) {
  WireLabels labels(qubits);
  std::vector<NetworkEvent> events;
  for (const Step& step : steps) {
    switch (step.kind) {
      case StepKind::cnot:
        events.push_back({{labels.origin(step.a, label_z), labels.origin(step.b, label_x)}, -1});
        break;
      case StepKind::cz:
        events.push_back({{labels.origin(step.a, label_z), labels.origin(step.b, label_z)}, -1});
        break;
      case StepKind::h:
        labels.exchange_others(step.a, label_y);
        break;
      case StepKind::turn:
        if (step.quarters % 2 != 0) labels.exchange_others(step.a, label_of_letter(step.letter));
        break;
      case StepKind::rotation: {
        const End end = labels.origin(step.a, label_of_letter(step.letter));
        events.push_back({{end, end}, step.row});
        break;
      }
    }
  }
  return events;
}

CircuitProblem problem_of(int qubits, const std::vector<Step>& steps) {
  return {strings_of(qubits, steps), target_of(qubits, steps),
          network_of(events_of(qubits, steps), in_order(qubits), true),
          std::ranges::find(steps, StepKind::cz, &Step::kind) != steps.end()};
}

std::vector<Step> steps_of(const Network& network, const CircuitProblem& problem) {
  PauliFrame images = problem.target.preimages;
  StepWriter writer(images, problem.has_cz);
  NetworkEmission(problem.rows, writer).run(network.events);
  const StepCircuit last = read_steps(problem.rows.qubits(), gates_left(images, network.wires));
  writer.steps.insert(writer.steps.end(), last.steps.begin(), last.steps.end());
  return std::move(writer.steps);
}

}  // namespace zelt::braidwerk::internal
