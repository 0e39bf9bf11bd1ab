#include "zeltbraidwerk/circuit/internal/steps.h"

#include <cmath>
#include <iterator>
#include <stdexcept>
#include <string_view>

#include "zeltbraidwerk/foundations/internal/turns.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr int letter_x = 1;
constexpr int letter_y = 2;
constexpr int letter_z = 3;

struct NamedGate {
  std::string_view name;
  int letter;
  int quarters;
  int eighths = 0;  // its phase against the rotation by so many quarters
};
constexpr NamedGate turns[] = {{"S", letter_z, 1},    {"D-S", letter_z, 3, 4},
                               {"X", letter_x, 2, 2}, {"Y", letter_y, 2, 2},
                               {"Z", letter_z, 2, 2}, {"I", letter_z, 0}};
constexpr NamedGate rotations[] = {
    {"RX", letter_x, 0}, {"RY", letter_y, 0}, {"RZ", letter_z, 0}, {"PH", letter_z, 0}};

const NamedGate* named(const auto& table, const std::string& name) {
  for (const NamedGate& entry : table) {
    if (entry.name == name) return &entry;
  }
  return nullptr;
}

structures::Gate turn_gate(const Step& step) {
  constexpr const char* halves[] = {"X", "Y", "Z"};
  constexpr const char* names[] = {"RX", "RY", "RZ"};
  const std::size_t kind = step.letter - 1U;
  if (step.quarters == 2) return {halves[kind], {step.a}};
  if (step.letter == letter_z) return {step.quarters == 1 ? "S" : "D-S", {step.a}, true};
  return {names[kind], {step.a}, {step.quarters == 1 ? quarter_turn : -quarter_turn}, false};
}

structures::Gate rotation_gate(const Step& step, const LinearAngle& angle) {
  constexpr const char* names[] = {"RX", "RY", "RZ"};
  LinearAngle turned;
  turned.add(angle, step.negative ? -1 : 1);
  return {names[step.letter - 1U], std::vector<int>{step.a},
          std::vector<structures::Parameter>{turned.parameter()}, step.letter == letter_z};
}

}  // namespace

int quarters_of(const LinearAngle& angle) {
  if (!angle.is_number() || !(rounding_of(angle) <= clifford_tolerance)) return -1;  // nor NaN
  const double whole = std::round(angle.constant / quarter_turn);
  return static_cast<int>(std::lround(std::fmod(whole, 4)) + 4) % 4;
}

int sign_of_turns(const LinearAngle& angle) {
  const double whole = std::round(angle.constant / quarter_turn);
  const int of_eight = static_cast<int>(std::lround(std::fmod(whole, 8)) + 8) % 8;
  return of_eight >= 4 ? 4 : 0;
}

double rounding_of(const LinearAngle& angle) {
  return std::abs(std::remainder(angle.constant, quarter_turn));
}

Step turn(int letter, int q, int quarters) {
  return {.kind = StepKind::turn,
          .letter = static_cast<std::uint8_t>(letter),
          .quarters = static_cast<std::uint8_t>(quarters),
          .a = q};
}

void StepReader::read(const structures::Gate& gate) {
  check_qubits(gate);
  const int a = gate.qbits[0];
  if (gate.name == "XX") {
    read_global(gate);
  } else if (gate.name == "CNOT" || gate.name == "CSIGN" || gate.name == "CZ") {
    check_size(gate, 2);
    append(
        {.kind = gate.name == "CNOT" ? StepKind::cnot : StepKind::cz, .a = a, .b = gate.qbits[1]});
  } else if (gate.name == "H") {
    check_size(gate, 1);
    append({.kind = StepKind::h, .a = a});
  } else if (const NamedGate* entry = named(turns, gate.name)) {
    check_size(gate, 1);
    if (entry->quarters != 0) append(turn(entry->letter, a, entry->quarters));
    circuit_.eighths += entry->eighths;
  } else if (const NamedGate* rotation = named(rotations, gate.name)) {
    check_size(gate, 1);
    if (gate.params.empty()) fail(gate, "an angle");
    rotate(rotation->letter, a, LinearAngle(gate.params[0]));
  } else {
    fail(gate, "Clifford gates and rotations");
  }
  ++place_;
}

void StepReader::rotate(int letter, int q, const LinearAngle& angle) {
  if (!std::isfinite(angle.constant)) throw std::invalid_argument("gates: got an infinite angle");
  const int quarters = quarters_of(angle);
  if (quarters < 0) {
    append({.kind = StepKind::rotation,
            .letter = static_cast<std::uint8_t>(letter),
            .a = q,
            .row = static_cast<int>(circuit_.angles.size())});
    circuit_.angles.push_back(angle);
    return;
  }
  circuit_.rounding = std::max(circuit_.rounding, rounding_of(angle));
  circuit_.eighths += sign_of_turns(angle);
  if (quarters > 0) append(turn(letter, q, quarters));
}

/// A rotation about XX by pi/2 on each pair: Z rotations within Hadamard gates. About ZZ it is
/// exp(i pi/4) times a CZ and a quarter turn about Z on both.
void StepReader::read_global(const structures::Gate& gate) {
  if (gate.params.empty() || gate.params[0].is_abstract ||
      quarters_of(LinearAngle(gate.params[0])) < 0) {
    fail(gate, "an XX gate by a multiple of pi/2");
  }
  const LinearAngle angle(gate.params[0]);
  const int quarters = quarters_of(angle);
  circuit_.rounding = std::max(circuit_.rounding, rounding_of(angle));
  for (const int q : gate.qbits) append({.kind = StepKind::h, .a = q});
  for (std::size_t i = 0; i < gate.qbits.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      circuit_.eighths += quarters + sign_of_turns(angle);
      if (quarters % 2 != 0) {
        append({.kind = StepKind::cz, .a = gate.qbits[j], .b = gate.qbits[i]});
      }
      for (const int q : {gate.qbits[i], gate.qbits[j]}) {
        if (quarters != 0) append(turn(letter_z, q, quarters));
      }
    }
  }
  for (const int q : gate.qbits) append({.kind = StepKind::h, .a = q});
}

void StepReader::check_qubits(const structures::Gate& gate) const {
  if (gate.qbits.empty()) fail(gate, "gates on qubits");
  for (std::size_t k = 0; k < gate.qbits.size(); ++k) {
    const int q = gate.qbits[k];
    if (q < 0 || q >= circuit_.qubits) {
      fail(gate, "qubits below " + std::to_string(circuit_.qubits));
    }
    for (std::size_t other = 0; other < k; ++other) {
      if (gate.qbits[other] == q) fail(gate, "qubits that differ");
    }
  }
}

void StepReader::check_size(const structures::Gate& gate, std::size_t size) const {
  if (gate.qbits.size() != size) fail(gate, "a gate on " + std::to_string(size) + " qubits");
}

void StepReader::fail(const structures::Gate& gate, const std::string& wanted) const {
  throw std::invalid_argument("gates: got " + gate.to_string() + " (gate " +
                              std::to_string(place_) + "), wanted " + wanted);
}

StepCircuit read_steps(int qubits, const std::vector<structures::Gate>& gates) {
  StepReader reader(qubits);
  for (const structures::Gate& gate : gates) reader.read(gate);
  return reader.take();
}

std::vector<structures::Gate> written(const StepCircuit& circuit) {
  std::vector<structures::Gate> gates;
  gates.reserve(circuit.steps.size());
  for (const Step& step : circuit.steps) {
    switch (step.kind) {
      case StepKind::cnot:
        gates.push_back(structures::Gate::CNOT(step.a, step.b));
        break;
      case StepKind::cz:
        gates.push_back(structures::Gate::CZ(step.a, step.b));
        break;
      case StepKind::h:
        gates.push_back(structures::Gate::H(step.a));
        break;
      case StepKind::turn:
        gates.push_back(turn_gate(step));
        break;
      case StepKind::rotation:
        gates.push_back(rotation_gate(step, circuit.angles[static_cast<std::size_t>(step.row)]));
        break;
    }
  }
  return gates;
}

void renumber(StepCircuit& circuit) {
  std::vector<LinearAngle> angles;
  for (Step& step : circuit.steps) {
    if (step.is_clifford()) continue;
    angles.push_back(std::move(circuit.angles[static_cast<std::size_t>(step.row)]));
    step.row = static_cast<int>(angles.size()) - 1;
  }
  circuit.angles = std::move(angles);
}

std::vector<Step> inverted(const std::vector<Step>& steps, int rows) {
  std::vector<Step> result(steps.rbegin(), steps.rend());
  for (Step& step : result) {
    if (step.kind == StepKind::turn) {
      step.quarters = static_cast<std::uint8_t>(4 - step.quarters);
    } else if (step.kind == StepKind::rotation) {
      step.negative = !step.negative;
      step.row = rows - 1 - step.row;
    }
  }
  return result;
}

void play(Preimages& frame, const Step& step) {
  switch (step.kind) {
    case StepKind::cnot:
      frame.cnot(step.a, step.b);
      break;
    case StepKind::cz:
      frame.cz(step.a, step.b);
      break;
    case StepKind::h:
      frame.h(step.a);
      break;
    case StepKind::turn:
      frame.turn(step.letter, step.a, step.quarters);
      break;
    case StepKind::rotation:
      break;
  }
}

}  // namespace zelt::braidwerk::internal
