#include "zeltbraidwerk/pauli/internal/greedy.h"

#include <numeric>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/pauli/internal/moves.h"
#include "zeltbraidwerk/pauli/internal/sorted_rows.h"
#include "zeltbraidwerk/pauli/internal/tree_diagonaliser.h"

using structures::Gate;

namespace zelt::braidwerk::internal {
namespace {

/// No gate makes a letter where there is none in the row.
PauliFrame without_identities(Rotations& rotations) {
  std::vector<int> kept;
  std::vector<structures::Parameter> params;
  for (int r = 0; r < rotations.frame.rows(); ++r) {
    if (rotations.frame.weight(r) == 0) continue;
    kept.push_back(r);
    params.push_back(std::move(rotations.params[static_cast<std::size_t>(r)]));
  }
  rotations.params = std::move(params);
  return rotations.frame.select(kept);
}

/// Emits the lightest rotations while they have a single letter; returns the row of the next one,
/// -1 when none is left.
int peel(SortedRows& rows, const std::vector<structures::Parameter>& params,
         std::vector<Gate>& circuit) {
  rows.sort();
  for (int row = rows.next(); row >= 0; row = rows.next()) {
    const int q = lone_qubit(rows.frame(), row);
    if (q < 0) return row;
    const auto& angle = params[static_cast<std::size_t>(rows.number(row))];
    circuit.push_back(rotation_gate(rows.frame(), row, q, angle, "RZ"));
    rows.erase(row);
  }
  return -1;
}

/// `choose(head, row)` picks the moves of a pass; `row` is the lightest one.
template <class Choose>
std::vector<Gate> synthesise(Rotations rotations, Choose choose) {
  std::vector<Gate> circuit;
  SortedRows rows(without_identities(rotations));
  const std::function<int()> next = [&] { return rows.next(); };
  Head head(rows.frame(), next);
  for (int row = peel(rows, rotations.params, circuit); row >= 0;
       row = peel(rows, rotations.params, circuit)) {
    stop_point();
    head.clear();
    head.push_back(row);
    rows.play(choose(head, row), circuit);
  }
  return circuit;
}

}  // namespace

std::vector<Gate> synthesise_greedily(Rotations rotations) {
  std::vector<int> all(static_cast<std::size_t>(rotations.frame.qubits()));
  std::iota(all.begin(), all.end(), 0);
  return synthesise(std::move(rotations), [&](Head& head, int row) {
    return std::vector{head.best_move(support_on(head.frame(), row, all))};
  });
}

std::vector<Gate> synthesise_in_matchings(Rotations rotations) {
  Matcher matcher(rotations.frame.qubits());
  return synthesise(std::move(rotations),
                    [&](Head& head, int) { return head.best_matching(matcher, true); });
}

}  // namespace zelt::braidwerk::internal
