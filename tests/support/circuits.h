#pragma once

#include <string>
#include <vector>

#include "support/dense.h"
#include "support/rotations.h"
#include "zeltbraidwerk/foundations/gate.h"

/// \file
/// Circuits of Clifford gates and rotations to test on, and what routed circuits are checked with.

namespace support {

enum class AngleKind { symbolic, numeric, mixed, generic };

/// One of few symbols, a sum of them, or any number, so that sums come up as well as generic
/// angles.
inline structures::Parameter mixed_angle(std::mt19937& rng) {
  const std::string texts[] = {"a", "b", "UMINUS a", "+ a b", "+ 0.250000 UMINUS b"};
  if (rng() % 3 == 0) return {texts[rng() % 5]};
  if (rng() % 2 == 0) return {static_cast<int>(rng() % 9 - 4) * 0.78539816339744828};
  return {std::uniform_real_distribution(-4.0, 4.0)(rng)};
}

/// Every name of the vocabulary comes up. Numeric angles are multiples of pi/4, so that many merge
/// into Clifford ones; symbolic ones are a0, a1, ...; mixed ones are those of mixed_angle; generic
/// ones are any numbers.
inline std::vector<structures::Gate> random_circuit(int n, int length, AngleKind kind,
                                                    std::mt19937& rng) {
  using structures::Gate;
  const auto any = [&rng](int bound) {
    return static_cast<int>(rng() % static_cast<unsigned>(bound));
  };
  const std::vector<std::string> cliffords{"H", "S", "D-S", "X", "Y", "Z", "I"};
  const std::vector<std::string> axes{"RX", "RY", "RZ", "PH"};
  std::vector<Gate> circuit;
  for (int k = 0; k < length; ++k) {
    const int a = any(n);
    const int b = n > 1 ? (a + 1 + any(n - 1)) % n : a;
    switch (n > 1 ? any(4) : any(2)) {
      case 0: {
        const structures::Parameter angle =
            kind == AngleKind::mixed      ? mixed_angle(rng)
            : kind == AngleKind::generic  ? std::uniform_real_distribution(-4.0, 4.0)(rng)
            : kind == AngleKind::symbolic ? structures::Parameter("a" + std::to_string(k))
                                          : (any(9) - 4) * 0.78539816339744828;
        const std::string& name = axes[static_cast<std::size_t>(any(4))];
        circuit.emplace_back(name, std::vector{a}, std::vector{angle}, name >= "RZ");
        break;
      }
      case 1:
        circuit.emplace_back(cliffords[static_cast<std::size_t>(any(7))], std::vector{a});
        break;
      case 2:
        circuit.push_back(Gate::CNOT(a, b));
        break;
      default:
        circuit.push_back(any(2) ? Gate::CZ(a, b) : Gate("CZ", {a, b}));
    }
  }
  return circuit;
}

/// Whether the circuit equals `routed` followed by the inverse of `frame`'s operator: the same
/// rotations with symbolic angles, those that do not commute in the same order, and the same
/// Clifford operator after them, signs included. Returns the first fault, or an empty text.
inline std::string fault(const std::vector<structures::Gate>& circuit,
                         std::vector<structures::Gate> routed,
                         const structures::OperatorTableau& frame) {
  const int n = frame.nbqbits;
  for (structures::Gate& gate : routed) {  // right updates take no angle beyond pi
    if (!gate.params.empty() && gate.params[0].value < -4) gate.params[0].add(6.283185307179586);
  }
  const Unfolded wanted = unfold(circuit, n);
  const Unfolded found = unfold(routed, n);
  if (found.rotations.size() != wanted.rotations.size()) return "not as many rotations";
  const auto positive = [](const std::pair<SignedString, structures::Parameter>& rotation) {
    const auto& [string, angle] = rotation;
    return std::pair{string.second, string.first ? angle.flip_sign() : angle};
  };
  std::vector<std::pair<std::string, structures::Parameter>> left;
  for (const auto& rotation : wanted.rotations) left.push_back(positive(rotation));
  for (const auto& rotation : found.rotations) {
    const auto next = std::find(left.begin(), left.end(), positive(rotation));
    if (next == left.end()) return "a rotation about " + rotation.first.second + " too many";
    for (auto before = left.begin(); before != next; ++before) {
      int differences = 0;
      for (std::size_t q = 0; q < before->first.size(); ++q) {
        differences +=
            before->first[q] != 'I' && next->first[q] != 'I' && before->first[q] != next->first[q];
      }
      if (differences % 2 != 0) return "rotations about " + before->first + " out of order";
    }
    left.erase(next);
  }
  // With U and V the Clifford operators of the circuit and of `routed`, the frame is V U-dagger:
  // it carries the image of a letter under U to its image under V.
  const auto of_circuit = wanted.pulled_back.inverse();
  const auto of_routed = found.pulled_back.inverse();
  for (int q = 0; q < n; ++q) {
    for (const char letter : {'X', 'Z'}) {
      std::string letters(static_cast<std::size_t>(n), 'I');
      letters[static_cast<std::size_t>(q)] = letter;
      structures::WeylOperator image(letters);
      image.conjugate_with(of_circuit);
      image.conjugate_with(frame);
      if (image.to_pauli() != carried(letters, of_routed)) return "wrong Clifford on " + letters;
    }
  }
  return "";
}

}  // namespace support
