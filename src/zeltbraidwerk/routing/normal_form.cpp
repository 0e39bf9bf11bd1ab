#include "zeltbraidwerk/routing/normal_form.h"

#include <algorithm>
#include <ostream>

#include "zeltbraidwerk/foundations/internal/turns.h"
#include "zeltbraidwerk/routing/internal/rotation_rows.h"

namespace synthesis {

namespace internal = zelt::braidwerk::internal;
using internal::RotationRows;
using structures::Gate;
using structures::OperatorTableau;
using structures::Parameter;

const std::vector<std::string> CLIFFORDS = {"S",  "D-S", "S*", "H", "CNOT", "CSIGN",
                                            "CZ", "X",   "Y",  "Z", "I"};
const std::vector<std::string> ROT = {"RX", "RY", "RZ", "PH"};

namespace {

bool contains(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

RotationRows pack(const RotationSequence& rotations) {
  return RotationRows::pack(
      rotations, rotations.empty() ? 0 : static_cast<int>(rotations.front().first.size()));
}

}  // namespace

std::string get_axis(const Gate& gate, int n) {
  std::string axis(static_cast<std::size_t>(std::max(n, 0)), 'I');
  const auto q = static_cast<std::size_t>(gate.qbits.at(0));
  if (contains(ROT, gate.name)) {
    axis.at(q) = gate.name == "RX" ? 'X' : gate.name == "RY" ? 'Y' : 'Z';
  } else {
    axis.erase(q, 1);
  }
  return axis;
}

bool is_clifford(const Gate& gate) {
  return contains(CLIFFORDS, gate.name) ||
         (contains(ROT, gate.name) && is_clifford_angle(gate.params.at(0)));
}

bool is_clifford_angle(const Parameter& angle) {
  if (angle.is_abstract) return false;
  const double size = std::abs(angle.value);
  return internal::is_near(size, 0) || internal::is_near(size, internal::quarter_turn) ||
         internal::is_near(size, internal::half_turn);
}

bool commute(const std::string& a, const std::string& b) {
  bool even = true;
  for (std::size_t q = 0; q < a.size(); ++q) {
    const char other = b.at(q);
    even ^= a[q] != 'I' && other != 'I' && a[q] != other;
  }
  return even;
}

RotationSequence merge_rotations(const RotationSequence& rotations) {
  RotationRows rows = pack(rotations);
  internal::merge_rotations(rows);
  return rows.unpack(0, rows.count());
}

void update_clifford(std::pair<std::string, Parameter>& rotation, OperatorTableau& tableau) {
  const auto& [letters, angle] = rotation;
  const double theta = angle.value;
  if (internal::is_near(theta, 0)) return;
  std::vector<int> support;
  const auto letter = [&](int q) { return letters.at(static_cast<std::size_t>(q)); };
  for (int q = 0; q < tableau.nbqbits; ++q) {
    if (letter(q) != 'I') support.push_back(q);
    if (letter(q) == 'Y') tableau.rx_plus_right(q);
    if (letter(q) == 'X') tableau.h_right(q);
  }
  if (support.empty()) return;
  if (internal::is_near(std::abs(theta), internal::half_turn)) {
    for (const int q : support) tableau.z_right(q);
  } else {
    const int last = support.back();
    std::for_each(support.begin(), support.end() - 1, [&](int q) { tableau.cnot_right(q, last); });
    if (internal::is_near(theta, -internal::quarter_turn)) {
      tableau.rz_minus_right(last);
    } else {
      tableau.rz_plus_right(last);
    }
    std::for_each(support.rbegin() + 1, support.rend(),
                  [&](int q) { tableau.cnot_right(q, last); });
  }
  for (const int q : support) {
    if (letter(q) == 'Y') tableau.rx_minus_right(q);
    if (letter(q) == 'X') tableau.h_right(q);
  }
}

bool renormalize(RotationSequence& rotations, OperatorTableau& tableau) {
  RotationRows rows = RotationRows::pack(rotations, tableau.nbqbits);
  const bool folded = internal::fold_cliffords(rows, tableau);
  rotations = rows.unpack(0, rows.count());
  return folded;
}

std::pair<std::vector<RotationSequence>, OperatorTableau> normalize_circuit(
    const std::vector<Gate>& circuit, OperatorTableau& tableau, bool commuting_blocks, bool merge) {
  internal::NormalForm form = internal::normal_form(circuit, tableau, commuting_blocks, merge);
  return {form.blocks(), std::move(form.clifford)};
}

std::vector<Gate> get_basis_change(const std::string& pauli, int n) {
  std::vector<Gate> gates;
  for (int q = 0; q < n; ++q) {
    const char letter = pauli.at(static_cast<std::size_t>(q));
    if (letter == 'X') gates.push_back(Gate::H(q));
    if (letter == 'Y') gates.push_back(Gate::RXP(q));
  }
  return gates;
}

std::ostream& operator<<(std::ostream& out, const std::map<BoolRow, Parameter>& polynomial) {
  for (const auto& [parity, angle] : polynomial) {
    out << parity << ": ";
    structures::operator<<(out, angle) << std::endl;
  }
  return out;
}

std::ostream& operator<<(std::ostream& out, const BoolRow& row) {
  for (const bool bit : row) out << (bit ? "1 " : "0 ");
  return out;
}

}  // namespace synthesis
