#include "zeltbraidwerk/linear/internal/greedy.h"

#include <bit>
#include <iostream>
#include <utility>

#include "zeltbraidwerk/linear/internal/inverse_position.h"
#include "zeltbraidwerk/linear/internal/log_position.h"
#include "zeltbraidwerk/linear/internal/ones_position.h"

namespace zelt::braidwerk::internal {
namespace {

using structures::CnotCircuit;

constexpr int deepest_level = 20;

/// perm[r] is the last column with a one in row r.
void read_permutation(const BitMatrix& m, std::vector<int>& perm) {
  for (int r = 0; r < m.rows(); ++r) {
    for (int w = m.stride() - 1; w >= 0; --w) {
      if (m.row(r)[w] == 0) continue;
      perm[static_cast<std::size_t>(r)] = (w + 1) * word_bits - 1 - std::countl_zero(m.row(r)[w]);
      break;
    }
  }
}

/// Replays a circuit of the inverse: the product is a permutation.
void escape(BitMatrix& m, CnotCircuit& rows, std::vector<int>& perm, GreedyOptions options,
            const Draw& draw, const Control& control) {
  ++options.level;
  if (options.announce_escapes) {
    std::cout << "On rentre au niveau " << options.level << std::endl;
  }
  for (const auto& [from, to] :
       greedy_synthesis(inverse(m), perm, options, draw, control).circuit.gates) {
    rows.addGate(from, to);
    m.add_row(from, to);
  }
}

template <typename Position>
GreedyResult search(Position position, std::vector<int>& perm, const GreedyOptions& options,
                    const Draw& draw, const Control& control) {
  const int n = position.lines().size();
  const bool escapes = options.cost == GreedyCost::OnesWithEscape;
  CnotCircuit rows(n);
  CnotCircuit columns(n);
  bool stuck = false;
  for (int count = 0; count < control.max_operations && !position.lines().reduced(); ++count) {
    if (control.stop_requested()) break;
    const LineAddition a = next_addition(position, options.beam, escapes, draw, control);
    stuck = a == no_addition;
    if (stuck) break;
    position.apply(a);
    if (a.row) {
      rows.addGate(a.from, a.to);
    } else {
      columns.addGate(a.to, a.from);
    }
  }

  BitMatrix left = position.lines().side(true);
  if (stuck && escapes && options.level < deepest_level && !control.stop_requested()) {
    escape(left, rows, perm, options, draw, control);
  }
  read_permutation(left, perm);
  return {join(std::move(rows), std::move(columns), perm), Lines(left).reduced()};
}

}  // namespace

CnotCircuit join(CnotCircuit rows, CnotCircuit columns, const std::vector<int>& perm) {
  rows.reverse();
  for (const auto& [control, target] : rows.gates) {
    columns.addGate(perm[static_cast<std::size_t>(control)],
                    perm[static_cast<std::size_t>(target)]);
  }
  return columns;
}

GreedyResult greedy_synthesis(const BitMatrix& a, std::vector<int>& perm,
                              const GreedyOptions& options, const Draw& draw,
                              const Control& control) {
  switch (options.cost) {
    case GreedyCost::OnesWithInverse:
      return search(InversePosition(a), perm, options, draw, control);
    case GreedyCost::Log:
      return search(LogPosition(a), perm, options, draw, control);
    default:
      return search(OnesPosition(a), perm, options, draw, control);
  }
}

}  // namespace zelt::braidwerk::internal
