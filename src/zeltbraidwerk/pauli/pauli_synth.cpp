#include "zeltbraidwerk/pauli/pauli_synth.h"

#include <algorithm>

#include "zeltbraidwerk/pauli/internal/recursive.h"

// The conjugation tables, filled at load, and the recursive synthesis.

using namespace zelt::braidwerk::internal;
using structures::Gate;
using structures::Parameter;

namespace {

ConjugationTable one_qubit(OneQubitGate gate) {
  PauliFrame frame = PauliFrame::pack({{0}, {1}, {2}, {3}}, 1);
  frame.apply(gate, 0);
  ConjugationTable table;
  for (int r = 0; r < frame.rows(); ++r) {
    table[static_cast<unsigned char>(r)] = {frame.is_negative(r), frame.letter(r, 0)};
  }
  return table;
}

ConjugationTable two_qubits(TwoQubitGate gate) {
  PauliFrame frame(2, 16);
  for (int r = 0; r < frame.rows(); ++r) {
    frame.set_letter(r, 0, static_cast<unsigned char>(r / 4));
    frame.set_letter(r, 1, static_cast<unsigned char>(r % 4));
  }
  frame.apply(gate, 0, 1);
  ConjugationTable table;
  for (int r = 0; r < frame.rows(); ++r) {
    const int image = 4 * frame.letter(r, 0) + frame.letter(r, 1);
    table[static_cast<unsigned char>(r)] = {frame.is_negative(r),
                                            static_cast<unsigned char>(image)};
  }
  return table;
}

}  // namespace

const ConjugationTable H_CONJ = one_qubit(OneQubitGate::h);
const ConjugationTable RXP_CONJ = one_qubit(OneQubitGate::rx_plus);
const ConjugationTable RXM_CONJ = one_qubit(OneQubitGate::rx_minus);
const ConjugationTable S_CONJ = one_qubit(OneQubitGate::s);
const ConjugationTable SD_CONJ = one_qubit(OneQubitGate::s_dagger);
const ConjugationTable CNOT_CONJ = two_qubits(TwoQubitGate::cnot);
const ConjugationTable CZ_CONJ = two_qubits(TwoQubitGate::cz);

std::vector<Gate> pauli_synth(PauliRotationMap& rotations, structures::OperatorTableau& tableau) {
  std::vector<Gate> circuit;
  if (rotations.empty()) return circuit;
  auto [frame, params] = pack_rotations(rotations, tableau.nbqbits);
  std::vector<Word> done(static_cast<std::size_t>(frame.words()));
  RecursiveSynthesis{frame, params, circuit, done}.run();
  return circuit;
}

void __pauli_synth_rec(Part& part, int n, PauliTable& table, std::vector<Parameter>& params,
                       std::vector<Gate>& circuit, BoolRow& done) {
  const int rows = static_cast<int>(table.size());
  PauliFrame frame = PauliFrame::pack(table, n);
  BitMatrix group(1, rows);
  for (const int r : part.rows) group.set(0, r);
  RowSet members;
  for (int w = 0; w < group.stride(); ++w) {
    if (group.row(0)[w] != 0) members.push_back({w, group.row(0)[w]});
  }
  std::vector<Word> done_plane(static_cast<std::size_t>(group.stride()));
  pack_row(done, 0, rows, done_plane.data());
  RecursiveSynthesis{frame, params, circuit, done_plane}.serve(part.target, members, part.cols);
  unpack_row(done_plane.data(), 0, rows, done);
  unpack_table(frame, table, params);
}

bool synthesize_trivial(PauliTable& table, std::vector<Parameter>& params, unsigned int row,
                        std::vector<Gate>& circuit) {
  unsigned char letter = 0;
  int q = -1;
  if (weight(table[row], letter, q) != 1) return false;
  circuit.push_back(rotation_gate(letter, q, params[row], "RZ"));
  return true;
}

std::vector<int> get_counts(const PauliTable& table, const std::set<int>& rows, int col) {
  std::vector<int> counts(4);
  for (const int r : rows) {
    const unsigned char code = table[static_cast<std::size_t>(r)][static_cast<std::size_t>(col)];
    if (code < counts.size()) ++counts[code];
  }
  return counts;
}

void get_pauli_cols(std::set<int>& from, std::set<int>& to, int col, const PauliTable& table,
                    unsigned char letter) {
  for (const int r : from) {
    if (table[static_cast<std::size_t>(r)][static_cast<std::size_t>(col)] == letter) to.insert(r);
  }
  std::erase_if(from, [&](int r) { return to.count(r) != 0; });
}

void get_I_cols(std::set<int>& from, std::set<int>& to, int col, const PauliTable& table) {
  get_pauli_cols(from, to, col, table, 0);
}

int weight(std::vector<unsigned char>& row, unsigned char& letter, int& index) {
  int weight = 0;
  for (std::size_t q = 0; q < row.size(); ++q) {
    if (row[q] == 0) continue;
    ++weight;
    letter = row[q];
    index = static_cast<int>(q);
  }
  return weight;
}
