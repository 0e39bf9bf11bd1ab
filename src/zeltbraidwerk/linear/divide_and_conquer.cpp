#include "zeltbraidwerk/linear/divide_and_conquer.h"

#include <numeric>
#include <vector>

#include "zeltbraidwerk/linear/internal/block_recursion.h"

using zelt::braidwerk::internal::BitMatrix;
using zelt::braidwerk::internal::BlockRecursion;
using zelt::braidwerk::internal::Control;

namespace {

void clear_block(BoolMatrix& quotient, int rows, int cols, BoolMatrix& m, int n, int first_row,
                 int first_col, structures::CnotCircuit& c, const int* perm) {
  BitMatrix q = BitMatrix::pack(quotient, rows, cols);
  BitMatrix work = BitMatrix::pack(m, n, n);
  const Control control;
  BlockRecursion(c.gates, control).clear_block(q, work, first_row, first_col, perm);
  q.unpack_into(quotient);
  work.unpack_into(m);
}

}  // namespace

structures::CnotCircuit divide_and_conquer_synthesis(int n, const BoolMatrix& m) {
  std::vector<int> perm(static_cast<std::size_t>(n > 0 ? n : 0));
  std::iota(perm.begin(), perm.end(), 0);
  auto circuit = divide_and_conquer_synthesis_with_permutation(n, m, perm.data());
  addPermutation(n, circuit, perm.data());
  return circuit;
}

structures::CnotCircuit divide_and_conquer_synthesis_with_permutation(int n, BoolMatrix m,
                                                                      int* perm) {
  structures::CnotCircuit circuit(n);
  const Control control;
  BlockRecursion(circuit.gates, control).reduce(BitMatrix::pack(m, n, n), perm);
  return circuit;
}

void setup(int n, BoolMatrix& m, int* perm) {
  BitMatrix work = BitMatrix::pack(m, n, n);
  make_leading_blocks_invertible(work, perm);
  work.unpack_into(m);
}

void addPermutation(int n, structures::CnotCircuit& c, const int* perm) {
  zelt::braidwerk::internal::add_permutation(n, perm, c.gates);
}

void SynthesizeWestSouthBlock(BoolMatrix& X, BoolMatrix& m, structures::CnotCircuit& c, int n,
                              int h, int r, int* perm) {
  clear_block(X, r, h, m, n, h, 0, c, perm);
}

void SynthesizeEastNorthBlock(BoolMatrix& Y, BoolMatrix& m, structures::CnotCircuit& c, int n,
                              int h, int r, int* perm) {
  clear_block(Y, h, r, m, n, 0, h, c, perm);
}
