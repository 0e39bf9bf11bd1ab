// Linear syntheses on arbitrary bits: no crash, an end on singular matrices too, and the right
// circuit on invertible ones.
#include <cstdint>
#include <cstdlib>
#include <span>

#include "support/oracles.h"
#include "support/scripted_uniform.h"
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

void eliminations(const Input& in, bool invertible) {
  BoolMatrix work = in.m;
  check(support::reduces(synthesis::GaussianElimination(in.n, in.m), in.m) == invertible);
  check(support::reduces(synthesis::PMH_Algorithm(in.n, in.m, in.section), in.m) == invertible);
  check(support::reduces(synthesis::GreedyGaussianElimination_faster(in.n, work), in.m) ==
        invertible);
  if (in.n < 2) return;  // the default circuit
  check(support::reduces(synthesis::optimized_PMH_Algorithm(in.n, in.m), in.m) == invertible);
}

// Within their cap of operations the searches may not finish, and singular matrices they leave.
void searches(const Input& in, bool invertible) {
  constexpr std::size_t cap = 1000;
  const int width = 1 + in.section % 3;
  const int depth = 1 + in.section / 6;
  std::vector<int> perm(support::at(in.n));
  const auto expect = [&](const structures::CnotCircuit& circuit) {
    check(!invertible || circuit.gates.size() >= cap ||
          support::implements_up_to(circuit, perm, in.m));
  };
  expect(synthesis::greedy_synthesis_ones(in.n, in.m, perm, width, depth));
  expect(synthesis::greedy_synthesis_ones_with_inv(in.n, in.m, perm, width, depth));
  expect(synthesis::greedy_synthesis_ones_with_escape(in.n, in.m, perm, width, depth, 0));
  expect(synthesis::greedy_synthesis_log(in.n, in.m, perm, width, depth));
}

void blocks_and_parities(const Input& in, bool invertible) {
  check(support::reduces(divide_and_conquer_synthesis(in.n, in.m), in.m) == invertible);

  std::vector<int> perm(support::at(in.n));
  const auto circuit = synthesis::SyndromeSynthesis(in.n, in.m, perm, 1 + in.section % 2, 1);
  check(!invertible || support::inverts_up_to(circuit, perm, in.m));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Input input({data, size});
  const bool invertible = boolean_matrix_det(input.m, input.n) == 1;
  eliminations(input, invertible);
  if (input.n <= 16) blocks_and_parities(input, invertible);
  if (input.n <= 6) searches(input, invertible);
  return 0;
}
