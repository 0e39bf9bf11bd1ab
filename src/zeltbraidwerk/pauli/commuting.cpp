#include "zeltbraidwerk/pauli/commuting.h"

#include "zeltbraidwerk/pauli/internal/colouring.h"
#include "zeltbraidwerk/pauli/internal/table_frame.h"

using namespace zelt::braidwerk::internal;
using structures::Parameter;

std::vector<std::vector<int>> coloration_lf(BoolRow& graph, unsigned long n) {
  const int size = static_cast<int>(n);
  return colour_by_degree(
      size, [&](int u, Word* row) { pack_row(graph, static_cast<std::size_t>(u) * n, size, row); });
}

std::vector<std::vector<int>> coloration_sl(BoolRow& graph, unsigned long n) {
  const int size = static_cast<int>(n);
  BitMatrix packed(size, size);
  for (int u = 0; u < size; ++u) {
    pack_row(graph, static_cast<std::size_t>(u) * n, size, packed.row(u));
  }
  return colour_by_degree_left(packed);
}

bool cmp_degrees(const std::pair<int, int>& a, const std::pair<int, int>& b) {
  return a.second > b.second;
}

std::vector<std::pair<PauliTable, std::vector<Parameter>>> split_commuting(
    PauliTable& table, std::vector<Parameter>& params) {
  std::vector<std::pair<PauliTable, std::vector<Parameter>>> groups;
  for (const std::vector<int>& rows : commuting_groups(pack_table(table))) {
    auto& [group, angles] = groups.emplace_back();
    for (const int r : rows) {
      group.push_back(table[static_cast<std::size_t>(r)]);
      angles.push_back(params[static_cast<std::size_t>(r)]);
    }
  }
  return groups;
}
