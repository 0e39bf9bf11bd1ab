#include "zeltbraidwerk/linear/syndrome_synthesis.h"

#include <algorithm>

#include "zeltbraidwerk/linear/internal/factor_decoding.h"

namespace synthesis {

structures::CnotCircuit SyndromeSynthesis(int n, BoolMatrix const& A, std::vector<int>& perm,
                                          int width, int depth) {
  using namespace zelt::braidwerk::internal;
  structures::CnotCircuit circuit(n);
  circuit.gates =
      decode_factors(BitMatrix::pack(A, n, n), perm, std::max(width, 1), depth, Control{}).gates;
  return circuit;
}

}  // namespace synthesis
