#include "zeltbraidwerk/linear/pmh.h"

#include "zeltbraidwerk/linear/internal/elimination.h"

namespace synthesis {

using namespace zelt::braidwerk::internal;

structures::CnotCircuit PMH_Algorithm(int n, BoolMatrix m, int section) {
  if (n < 1) return structures::CnotCircuit(n);
  return pmh(BitMatrix::pack(m, n, n), section);
}

structures::CnotCircuit optimized_PMH_Algorithm(int n, const BoolMatrix& m) {
  return optimized_pmh(BitMatrix::pack(m, n, n));
}

}  // namespace synthesis
