#pragma once

#include <string>
#include <utility>
#include <vector>

#include "support/pauli.h"
#include "zeltbraidwerk/pauli/internal/rotations.h"
#include "zeltbraidwerk/pauli/pauli_table.h"

/// \file
/// Pauli rotations to test on, and what their circuits are checked with.

namespace support {

/// Angles a0, a1, ... in the order given.
inline PauliRotationMap symbolic(const PauliRows& table) {
  PauliRotationMap rotations;
  for (const auto& row : table) {
    rotations.emplace(row, structures::Parameter("a" + std::to_string(rotations.size())));
  }
  return rotations;
}

/// What a circuit does: the signed strings that its rotations, the gates with a symbolic angle,
/// turn about at its front, in time order; and the Clifford operator of all other gates.
struct Unfolded {
  std::vector<std::pair<SignedString, structures::Parameter>> rotations;
  std::vector<structures::Gate> clifford;
  structures::OperatorTableau pulled_back;  ///< P to U-dagger P U, for that operator U
};

inline Unfolded unfold(const std::vector<structures::Gate>& circuit, int n) {
  Unfolded result{{}, {}, structures::OperatorTableau(n)};
  for (const structures::Gate& gate : circuit) {
    if (gate.params.empty() || !gate.params[0].is_abstract) {
      result.clifford.push_back(gate);
      result.pulled_back.apply_right(gate);
      continue;
    }
    std::string letters(static_cast<std::size_t>(n), 'I');
    letters[static_cast<std::size_t>(gate.qbits.at(0))] = gate.name == "PH" ? 'Z' : gate.name.at(1);
    result.rotations.emplace_back(carried(letters, result.pulled_back), gate.params[0]);
  }
  return result;
}

/// Rows with angles a0, a1, ... as the syntheses take them inside.
inline zelt::braidwerk::internal::Rotations named(const PauliRows& table, int n) {
  zelt::braidwerk::internal::Rotations rotations{
      zelt::braidwerk::internal::PauliFrame::pack(table, n), {}};
  for (std::size_t r = 0; r < table.size(); ++r) {
    rotations.params.emplace_back("a" + std::to_string(r));
  }
  return rotations;
}

/// Each of the rows, whose angles are a0, a1, ..., must come up once with its sign, but for those
/// without letters; where `in_order`, after all earlier rows that it does not commute with. Returns
/// the first fault, or an empty text.
inline std::string fault(const PauliRows& table, bool in_order, const Unfolded& circuit) {
  std::vector<std::size_t> served;
  for (const auto& [string, angle] : circuit.rotations) {
    const structures::Parameter own = string.first ? angle.flip_sign() : angle;
    if (own.expression[0] != 'a') return "wrong sign: " + string.second;
    const std::size_t row = std::stoul(own.expression.substr(1));
    if (string.second != text(table.at(row))) return "not that rotation: " + string.second;
    for (const std::size_t earlier : served) {
      if (earlier == row) return "twice: " + string.second;
      if (in_order && earlier > row && anticommute(text(table[earlier]), string.second)) {
        return "out of order: " + string.second;
      }
    }
    served.push_back(row);
  }
  const auto wanted = std::ranges::count_if(
      table, [](const auto& row) { return text(row).find_first_not_of('I') != std::string::npos; });
  return std::ssize(served) == wanted ? "" : "rotations are missing";
}

/// Each rotation but identity strings must come up once, under its own angle and sign. Returns the
/// first fault, or an empty text.
inline std::string fault(const PauliRotationMap& rotations, const Unfolded& circuit) {
  PauliRotationMap left = rotations;
  std::erase_if(left, [](const auto& entry) {
    return text(entry.first).find_first_not_of('I') == std::string::npos;
  });
  for (const auto& [string, angle] : circuit.rotations) {
    const auto& [negative, letters] = string;
    const auto found = left.find(rows({letters})[0]);
    if (found == left.end()) return letters + " is not left to be served";
    if (angle != (negative ? found->second.flip_sign() : found->second)) {
      return "wrong angle about " + letters;
    }
    left.erase(found);
  }
  return left.empty() ? "" : text(left.begin()->first) + " is not served";
}

}  // namespace support
