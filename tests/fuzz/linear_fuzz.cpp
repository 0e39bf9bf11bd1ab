// Linear syntheses on arbitrary bits: no crash, an end on singular matrices too, and the right
// circuit on invertible ones.
#include <cstdint>
#include <cstdlib>
#include <span>

#include "support/oracles.h"
#include "zeltbraidwerk/foundations/boolean_matrix.h"
#include "zeltbraidwerk/linear/synthesis.h"

namespace {

// Two bytes for size and section, then the rows bit by bit; what the input lacks is zero.
struct Input {
  int n = 0;
  int section = 1;
  BoolMatrix m;

  explicit Input(std::span<const std::uint8_t> bytes) {
    if (bytes.size() > 0) n = bytes[0] % 71;
    if (bytes.size() > 1) section = bytes[1] % 12;
    const std::size_t size = support::at(n);
    m.assign(size, BoolRow(size));
    for (std::size_t k = 0; k < size * size && k / 8 + 2 < bytes.size(); ++k) {
      m[k / size][k % size] = bytes[k / 8 + 2] >> (k % 8) & 1;
    }
  }
};

void check(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Input input({data, size});
  const auto gauss = synthesis::GaussianElimination(input.n, input.m);
  const auto pmh = synthesis::PMH_Algorithm(input.n, input.m, input.section);
  const auto best = synthesis::optimized_PMH_Algorithm(input.n, input.m);

  const bool invertible = boolean_matrix_det(input.m, input.n) == 1;
  check(support::reduces(gauss, input.m) == invertible);
  check(support::reduces(pmh, input.m) == invertible);
  if (input.n > 1) check(support::reduces(best, input.m) == invertible);
  return 0;
}
