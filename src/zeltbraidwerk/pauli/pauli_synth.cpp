#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/pauli/pauli_table.h"

// The conjugation tables, filled at load.

namespace {

using namespace zelt::braidwerk::internal;

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
