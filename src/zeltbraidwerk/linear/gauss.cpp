#include "zeltbraidwerk/linear/gauss.h"

#include "zeltbraidwerk/linear/internal/elimination.h"

namespace synthesis {

structures::CnotCircuit GaussianElimination(int n, BoolMatrix m) {
  using namespace zelt::braidwerk::internal;
  if (n < 1) return structures::CnotCircuit(n);
  return eliminate_gauss(BitMatrix::pack(m, n, n));
}

}  // namespace synthesis
