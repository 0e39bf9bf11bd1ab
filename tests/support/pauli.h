#pragma once

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/foundations/structures.h"

/// \file
/// Pauli tables to test on, and the signed strings that circuits are checked with.

namespace support {

using PauliRows = std::vector<std::vector<unsigned char>>;
using Angles = std::vector<structures::Parameter>;
using SignedString = std::pair<bool, std::string>;  ///< true for minus

/// rows({"XIZ", "IYY"})
inline PauliRows rows(const std::vector<std::string>& strings) {
  PauliRows table;
  for (const std::string& letters : strings) {
    auto& row = table.emplace_back();
    for (const char letter : letters) {
      row.push_back(static_cast<unsigned char>(std::string("IXYZ").find(letter)));
    }
  }
  return table;
}

inline std::string text(const std::vector<unsigned char>& row) {
  std::string letters;
  for (const unsigned char letter : row) letters += "IXYZ"[letter];
  return letters;
}

/// Rows with a blank between them.
inline std::string text(const PauliRows& table) {
  std::string all;
  for (const auto& row : table) all += (all.empty() ? "" : " ") + text(row);
  return all;
}

/// 1, 2, 3, ...: angles that tell rows apart, and a flipped one from one that is not.
inline Angles numbered_angles(std::size_t count) {
  Angles angles;
  for (std::size_t r = 1; r <= count; ++r) angles.emplace_back(static_cast<double>(r));
  return angles;
}

inline PauliRows random_rows(int count, int qubits, std::mt19937& rng) {
  PauliRows table(static_cast<std::size_t>(count),
                  std::vector<unsigned char>(static_cast<std::size_t>(qubits)));
  for (auto& row : table) {
    for (unsigned char& letter : row) letter = static_cast<unsigned char>(rng() % 4);
  }
  return table;
}

/// Strings of I and Z after a random Clifford circuit.
inline PauliRows random_commuting_rows(int count, int qubits, std::mt19937& rng) {
  using namespace zelt::braidwerk::internal;
  PauliFrame frame(qubits, count);
  for (int r = 0; r < count; ++r) {
    for (int q = 0; q < qubits; ++q) frame.set_letter(r, q, rng() % 2 ? 3 : 0);
  }
  for (int k = 0; k < 6 * qubits; ++k) {
    const int a = static_cast<int>(rng() % static_cast<unsigned>(qubits));
    const int b = static_cast<int>(rng() % static_cast<unsigned>(qubits));
    if (rng() % 2) frame.h(a);
    if (rng() % 2) frame.s(a);
    if (a != b) frame.cnot(a, b);
  }
  PauliRows table(static_cast<std::size_t>(count),
                  std::vector<unsigned char>(static_cast<std::size_t>(qubits)));
  frame.unpack_into(table);
  return table;
}

inline bool anticommute(const std::string& a, const std::string& b) {
  bool odd = false;
  for (std::size_t q = 0; q < a.size(); ++q) odd ^= a[q] != 'I' && b[q] != 'I' && a[q] != b[q];
  return odd;
}

/// Half of the gates on two qubits, where there are two.
inline std::vector<structures::Gate> random_clifford(int n, int gates, std::mt19937& rng) {
  using structures::Gate;
  const auto qubit = [&] { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
  std::vector<Gate> circuit;
  while (n > 0 && static_cast<int>(circuit.size()) < gates) {
    const int a = qubit();
    const int b = qubit();
    const Gate singles[] = {Gate::H(a), Gate::S(a), Gate("Y", {a}), Gate::RXP(a), Gate("Z", {a})};
    circuit.push_back(a != b && rng() % 2 == 0 ? Gate::CNOT(a, b) : singles[rng() % 5]);
  }
  return circuit;
}

inline SignedString carried(const std::string& letters, const structures::OperatorTableau& t) {
  structures::WeylOperator w(letters);
  w.conjugate_with(t);
  return w.to_pauli();
}

inline structures::OperatorTableau tableau_of(const std::vector<structures::Gate>& circuit,
                                              int qubits) {
  structures::OperatorTableau t(qubits);
  for (const structures::Gate& gate : circuit) t.apply_left(gate);
  return t;
}

/// The signed images of X and Z on every qubit.
inline std::vector<SignedString> images(const structures::OperatorTableau& t) {
  std::vector<SignedString> found;
  for (int q = 0; q < t.nbqbits; ++q) {
    for (const char letter : {'X', 'Z'}) {
      std::string letters(static_cast<std::size_t>(t.nbqbits), 'I');
      letters[static_cast<std::size_t>(q)] = letter;
      found.push_back(carried(letters, t));
    }
  }
  return found;
}

inline bool is_identity(const structures::OperatorTableau& t) {
  return images(t) == images(structures::OperatorTableau(t.nbqbits));
}

/// Whether the circuit does what `wanted` does, with output q on wire wires[q], signs included.
inline bool implements(const std::vector<structures::Gate>& circuit, const std::vector<int>& wires,
                       const structures::OperatorTableau& wanted) {
  std::vector<SignedString> moved = images(wanted);
  for (auto& [minus, letters] : moved) {
    std::string on_wires(letters.size(), ' ');  // stays where two outputs share a wire
    for (std::size_t q = 0; q < letters.size(); ++q) {
      on_wires.at(static_cast<std::size_t>(wires.at(q))) = letters[q];
    }
    letters = on_wires;
  }
  return images(tableau_of(circuit, wanted.nbqbits)) == moved;
}

/// Undoes the circuit.
inline std::vector<structures::Gate> inverse(const std::vector<structures::Gate>& circuit) {
  std::vector<structures::Gate> back(circuit.rbegin(), circuit.rend());
  for (structures::Gate& gate : back) {
    if (gate.name == "S" || gate.name == "D-S") gate.name = gate.name == "S" ? "D-S" : "S";
    for (auto& angle : gate.params) angle = angle.flip_sign();
  }
  return back;
}

/// Whether the circuit makes of zeros a state with these stabilisers: back through it, each is plus
/// a product of Z.
inline bool prepares(const std::vector<structures::Gate>& circuit,
                     const std::vector<SignedString>& stabilisers) {
  const auto undo = tableau_of(inverse(circuit), static_cast<int>(stabilisers.size()));
  return std::ranges::all_of(stabilisers, [&](const SignedString& string) {
    const auto [minus, letters] = carried(string.second, undo);
    return minus == string.first && letters.find_first_of("XY") == std::string::npos;
  });
}

/// Whether the rotations (before) equal the circuit, the rotations (after), and the inverse of the
/// circuit, row for row. The angles before are numbered_angles.
inline bool is_rewritten_by(const PauliRows& before, const PauliRows& after, const Angles& angles,
                            const std::vector<structures::Gate>& circuit) {
  if (before.empty()) return after.empty() && circuit.empty();
  const auto t = tableau_of(circuit, static_cast<int>(before[0].size()));
  for (std::size_t r = 0; r < before.size(); ++r) {
    const auto [negative, letters] = carried(text(before[r]), t);
    const double angle = static_cast<double>(r + 1) * (negative ? -1 : 1);
    if (text(after[r]) != letters || angles[r].value != angle) return false;
  }
  return after.size() == before.size();
}

}  // namespace support
