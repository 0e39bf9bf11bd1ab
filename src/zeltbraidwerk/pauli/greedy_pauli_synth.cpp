#include "zeltbraidwerk/pauli/greedy_pauli_synth.h"

#include <algorithm>

#include "zeltbraidwerk/pauli/internal/greedy.h"
#include "zeltbraidwerk/pauli/internal/moves.h"

using namespace zelt::braidwerk::internal;
using structures::Gate;
using structures::OperatorTableau;

namespace {

std::vector<Gate> synthesise(const PauliRotationMap& rotations, OperatorTableau& tableau,
                             std::vector<Gate> (*synthesis)(Rotations)) {
  if (rotations.empty()) return {};
  std::vector<Gate> circuit = synthesis(pack_rotations(rotations, tableau.nbqbits));
  for (const Gate& gate : circuit) tableau.apply_left(gate);
  return circuit;
}

/// The rows of a frame in their own order.
std::function<int()> in_order(const PauliFrame& frame) {
  return [&frame, row = 0]() mutable { return row < frame.rows() ? row++ : -1; };
}

}  // namespace

std::vector<Gate> greedy_pauli_synth(PauliRotationMap& rotations, OperatorTableau& tableau) {
  return synthesise(rotations, tableau, synthesise_greedily);
}

std::vector<Gate> greedy_pauli_synth_depth(PauliRotationMap& rotations, OperatorTableau& tableau) {
  return synthesise(rotations, tableau, synthesise_in_matchings);
}

int _get_score(unsigned int q1, unsigned int q2, unsigned char p1, unsigned char p2,
               PauliTable& table) {
  const PauliFrame frame = pack_table(table);
  const auto next = in_order(frame);
  return Head(frame, next).score({static_cast<int>(q1), static_cast<int>(q2), p1, p2});
}

void find_best_moves(PauliTable& table, int n, std::vector<Move>& moves) {
  const PauliFrame frame = PauliFrame::pack(table, n);
  const auto next = in_order(frame);
  Matcher matcher(n);
  moves = Head(frame, next).best_matching(matcher, false);
}
