#include "zeltbraidwerk/pauli/graph_state_codiag.h"

#include <random>

#include "zeltbraidwerk/foundations/internal/echelon.h"
#include "zeltbraidwerk/foundations/internal/engine_draw.h"
#include "zeltbraidwerk/pauli/internal/graph_form.h"
#include "zeltbraidwerk/pauli/internal/table_frame.h"

using namespace zelt::braidwerk::internal;
using structures::Gate;
using structures::Parameter;

namespace {

BitMatrix pack_whole(const BoolMatrix& m) {
  const int rows = static_cast<int>(m.size());
  return BitMatrix::pack(m, rows, rows == 0 ? 0 : static_cast<int>(m[0].size()));
}

}  // namespace

std::vector<Gate> generate_basis_change(PauliTable& table, std::vector<Parameter>& params,
                                        int method, int& failures) {
  PauliFrame frame = pack_table(table);
  std::vector<Gate> circuit = change_basis(frame, method, failures, device_draw<std::mt19937>());
  unpack_table(frame, table, params);
  return circuit;
}

std::vector<Gate> graph_state_codiag(PauliTable& table, std::vector<Parameter>& params,
                                     int method) {
  PauliFrame frame = pack_table(table);
  std::vector<Gate> circuit =
      diagonalise_by_graph_state(frame, method, device_draw<std::mt19937>());
  unpack_table(frame, table, params);
  return circuit;
}

std::tuple<BoolMatrix, std::vector<Gate>> construct_adjacency_matrix(PauliTable& table) {
  GraphForm form = graph_form_of(pack_table(table));
  return {form.graph.unpack(), std::move(form.gates)};
}

std::tuple<BoolMatrix, BoolMatrix> build_tables(PauliTable& table) {
  BoolMatrix z;
  BoolMatrix x;
  for (const std::vector<unsigned char>& row : table) {
    BoolRow& z_row = z.emplace_back();
    BoolRow& x_row = x.emplace_back();
    for (const unsigned char letter : row) {
      z_row.push_back(letter == 2 || letter == 3);
      x_row.push_back(letter == 1 || letter == 2);
    }
  }
  return {std::move(z), std::move(x)};
}

BoolMatrix transpose(BoolMatrix& matrix) {
  return pack_whole(matrix).transposed().unpack();
}

int get_table_rank(BoolMatrix matrix) {
  return rank(pack_whole(matrix));
}

std::vector<int> diagonalize(BoolMatrix& a, BoolMatrix& b) {
  BitMatrix packed_a = pack_whole(a);
  BitMatrix packed_b = pack_whole(b);
  std::vector<int> pivots = reduce_to_echelon(packed_a, packed_b);
  packed_a.unpack_into(a);
  packed_b.unpack_into(b);
  return pivots;
}
