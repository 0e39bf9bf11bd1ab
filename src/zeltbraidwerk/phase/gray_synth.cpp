#include "zeltbraidwerk/phase/gray_synth.h"

#include <algorithm>

#include "zeltbraidwerk/foundations/internal/packed_table.h"
#include "zeltbraidwerk/phase/internal/gray_synth.h"
#include "zeltbraidwerk/phase/internal/phase_circuit.h"

namespace internal = zelt::braidwerk::internal;

using structures::Gate;

namespace {

bool entry(const BoolMatrix& table, int row, int col) {
  return table[static_cast<std::size_t>(row)][static_cast<std::size_t>(col)];
}

}  // namespace

std::vector<Gate> gray_synth(const PhasePolynomial& poly, structures::Table& table) {
  std::vector<Gate> circuit;
  if (poly.empty()) return circuit;
  const int n = static_cast<int>(poly.begin()->first.size());
  const auto steps = internal::gray_synth(internal::pack_parities(poly, n));
  table = internal::unpack_table(internal::linear_map(steps, n));
  internal::append_gates(steps, internal::angles(poly), circuit);
  return circuit;
}

void phase_poly_to_table(const PhasePolynomial& poly, BoolMatrix& table,
                         std::vector<structures::Parameter>& params, int n) {
  table.resize(static_cast<std::size_t>(std::max(n, 0)));
  for (const auto& [key, angle] : poly) {
    const std::size_t bits = std::min(key.size(), table.size());
    for (std::size_t i = 0; i < bits; ++i) table[i].push_back(key[i]);
    params.push_back(angle);
  }
}

void place_cnot(int control, int target, std::vector<Gate>& circuit, BoolMatrix& table) {
  circuit.push_back(Gate::CNOT(control, target));
  RowOperation(table, target, control, static_cast<int>(table[0].size()));
}

int count_bits_restricted(const BoolMatrix& table, int row, const std::set<int>& cols, bool value) {
  return static_cast<int>(std::count_if(cols.begin(), cols.end(),
                                        [&](int col) { return entry(table, row, col) == value; }));
}

void split_cols_on_row(std::set<int>& cols0, std::set<int>& cols1, const BoolMatrix& table,
                       int row) {
  std::erase_if(cols0, [&](int col) {
    if (!entry(table, row, col)) return false;
    cols1.insert(col);
    return true;
  });
}

std::pair<std::vector<int>, std::vector<int>> do_split(int row, const std::vector<int>& cols,
                                                       const BoolMatrix& table) {
  std::pair<std::vector<int>, std::vector<int>> split;
  for (const int col : cols) {
    (entry(table, row, col) ? split.second : split.first).push_back(col);
  }
  return split;
}

int find_best_split(const std::vector<int>& cols, const std::set<int>& rows,
                    const BoolMatrix& table) {
  internal::BestSplit best{static_cast<int>(cols.size())};
  for (const int row : rows) {
    best.consider(row, static_cast<int>(do_split(row, cols, table).second.size()));
  }
  return best.row;
}
