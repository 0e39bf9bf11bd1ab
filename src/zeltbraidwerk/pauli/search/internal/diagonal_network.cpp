#include "zeltbraidwerk/pauli/search/internal/diagonal_network.h"

#include <map>
#include <utility>
#include <vector>

#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/foundations/cnot_circuit.h"
#include "zeltbraidwerk/phase/search/internal/parity_search.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr unsigned char letter_z = 3;

/// The qubit's letter other than I in any row, or I.
unsigned char letter_on(const PauliFrame& frame, int qubit) {
  for (int r = 0; r < frame.rows(); ++r) {
    if (const unsigned char letter = frame.letter(r, qubit); letter != 0) return letter;
  }
  return 0;
}

/// The rows of each parity; those of none are left out.
std::vector<std::vector<int>> terms_of(const PauliFrame& frame) {
  std::map<std::vector<unsigned char>, std::vector<int>> terms;
  for (int r = 0; r < frame.rows(); ++r) terms[frame.letters(r)].push_back(r);
  terms.erase(std::vector<unsigned char>(static_cast<std::size_t>(frame.qubits())));
  std::vector<std::vector<int>> rows;
  for (auto& term : terms) rows.push_back(std::move(term.second));
  return rows;
}

BitMatrix parities_of(const PauliFrame& frame, const std::vector<std::vector<int>>& terms) {
  BitMatrix parities(frame.qubits(), static_cast<int>(terms.size()));
  for (int column = 0; column < parities.cols(); ++column) {
    const int row = terms[static_cast<std::size_t>(column)][0];
    for (int q = 0; q < frame.qubits(); ++q) parities.set(q, column, frame.letter(row, q) != 0);
  }
  return parities;
}

}  // namespace

bool is_locally_diagonal(const PauliFrame& frame) {
  for (int q = 0; q < frame.qubits(); ++q) {
    const unsigned char letter = letter_on(frame, q);
    for (int r = 0; r < frame.rows(); ++r) {
      if (frame.letter(r, q) != 0 && frame.letter(r, q) != letter) return false;
    }
  }
  return true;
}

NetworkResult search_diagonal_network(const Rotations& rotations, const NetworkOptions& options,
                                      const Effort& effort) {
  const int n = rotations.frame.qubits();
  PauliFrame frame = rotations.frame;
  std::vector<structures::Gate> turns;
  for (int q = 0; q < n; ++q) {
    const unsigned char letter = letter_on(frame, q);
    if (letter == 0 || letter == letter_z) continue;
    turns.push_back(letter == 1 ? structures::Gate::H(q) : structures::Gate::RXP(q));
    frame.apply(turns.back());
  }

  const std::vector<std::vector<int>> terms = terms_of(frame);
  ParitySearchOptions parity_options;
  parity_options.leftover = options.end == NetworkEnd::open     ? Leftover::returned
                            : options.end == NetworkEnd::closed ? Leftover::closed
                                                                : Leftover::closed_freely;
  parity_options.graph = options.graph;
  parity_options.by_depth = options.by_depth;
  parity_options.seed = options.seed;
  parity_options.stream = options.stream;
  const ParitySearchResult found =
      search_parities(parities_of(frame, terms), parity_options, effort);

  NetworkResult result{turns, found.permutation, 0, 0};
  structures::CnotCircuit cnots(n);
  for (const PhaseStep& step : found.steps) {
    if (step.is_cnot()) {
      result.gates.push_back(structures::Gate::CNOT(step.control, step.target));
      cnots.addGate(step.control, step.target);
      continue;
    }
    for (const int row : terms[static_cast<std::size_t>(step.term)]) {
      const structures::Parameter& angle = rotations.params[static_cast<std::size_t>(row)];
      result.gates.push_back(rotation_gate(
          letter_z, step.target, frame.is_negative(row) ? angle.flip_sign() : angle, "RZ"));
    }
  }
  result.count = static_cast<int>(cnots.gates.size());
  result.depth = cnots.depth();
  if (options.end != NetworkEnd::open) {
    for (structures::Gate& gate : inverted(turns)) {
      gate.qbits[0] = result.wires[static_cast<std::size_t>(gate.qbits[0])];
      result.gates.push_back(std::move(gate));
    }
  }
  return result;
}

}  // namespace zelt::braidwerk::internal
