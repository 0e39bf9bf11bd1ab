#include "zeltbraidwerk/graph_state/syndrome.h"

#include "zeltbraidwerk/foundations/internal/engine_draw.h"
#include "zeltbraidwerk/graph_state/internal/decoder.h"

using namespace zelt::braidwerk::internal;

namespace {

BitMatrix pack_problem(const BoolMatrix& vectors, const BoolRow& syndrome, int n) {
  BitMatrix columns(static_cast<int>(vectors.size()) + 1, n);
  if (n < 1) return columns.transposed();
  pack_row(syndrome, 0, n, columns.row(0));
  for (std::size_t j = 0; j < vectors.size(); ++j) {
    pack_row(vectors[j], 0, n, columns.row(static_cast<int>(j) + 1));
  }
  return columns.transposed();
}

}  // namespace

int HammingXOR(const BoolRow& a, const BoolRow& b, int n) {
  int distance = 0;
  for (int k = 0; k < n; ++k) {
    distance += a[static_cast<std::size_t>(k)] != b[static_cast<std::size_t>(k)];
  }
  return distance;
}

std::vector<int> solve_decoding_greedy(const BoolMatrix& vectors, BoolRow syndrome, int n) {
  return decode_greedily(pack_problem(vectors, syndrome, n)).value_or(std::vector<int>{});
}

std::vector<int> solve_syndrome(const BoolMatrix& vectors, const BoolRow& syndrome, int n,
                                int tries) {
  return decode(pack_problem(vectors, syndrome, n), tries, device_draw<std::mt19937>(), Control{});
}
