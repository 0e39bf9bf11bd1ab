#include "zeltbraidwerk/linear/search/internal/block_search.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "zeltbraidwerk/linear/internal/block_recursion.h"
#include "zeltbraidwerk/linear/search/internal/block_layers.h"
#include "zeltbraidwerk/linear/search/internal/map_circuits.h"
#include "zeltbraidwerk/search/internal/beam.h"
#include "zeltbraidwerk/search/internal/orders.h"

namespace zelt::braidwerk::internal {
namespace {

/// Reduces matrices to permutations. Row r of the matrix in work stands on wire labels[r].
class BlockSearch {
 public:
  BlockSearch(int width, const HalfSearch& half, Rng& rng, Meter& meter)
      : width_(width), half_(half), rng_(rng), meter_(meter) {}

  bool reduce(BitMatrix m, int* labels) {
    const int n = m.rows();
    make_leading_blocks_invertible(m, labels);
    const int h = n / 2;
    const int r = n - h;
    return clear(product(m.block(h, 0, r, h), inverse(m.block(0, 0, h, h))), m, h, 0, labels) &&
           clear(product(m.block(0, h, h, r), inverse(m.block(h, h, r, r))), m, 0, h, labels) &&
           reduce_half(m.block(0, 0, h, h), labels) && reduce_half(m.block(h, h, r, r), labels + h);
  }

  BlockRecursion::Gates gates;

 private:
  /// Row a of the quotient is row first_row + a of m; column b, with the opposite direction, row
  /// first_col + b.
  bool clear(const BitMatrix& quotient, BitMatrix& m, int first_row, int first_col,
             const int* labels) {
    BlockReduction problem(quotient.rows(), quotient.cols());
    const auto found = BeamSearch<BlockReduction>(problem, {.width = width_}, rng_, meter_)
                           .run(problem.start(quotient));
    if (found.empty()) return false;
    for (const BlockReduction::Move& number : found[0].moves) {
      for (const BlockMove& move : problem.layer(number)) {
        int control = (move.kind == BlockMove::rows ? first_row : first_col) + move.from;
        int target = (move.kind == BlockMove::columns ? first_col : first_row) + move.to;
        if (move.kind == BlockMove::columns) std::swap(control, target);
        m.add_row(control, target);
        gates.emplace_back(labels[control], labels[target]);
      }
    }
    return true;
  }

  /// The circuit of a half makes it, so that it clears it backwards.
  bool reduce_half(const BitMatrix& m, int* labels) {
    const GateList list = half_(m);
    if (meter_.ended()) return false;
    std::vector<int> on(static_cast<std::size_t>(m.rows()));
    for (int w = 0; w < m.rows(); ++w)
      on[static_cast<std::size_t>(w)] = labels[list.frame.output_on(w)];
    for (auto gate = list.gates.rbegin(); gate != list.gates.rend(); ++gate) {
      gates.emplace_back(on[static_cast<std::size_t>(wire_of(gate->a))],
                         on[static_cast<std::size_t>(wire_of(gate->b))]);
    }
    std::copy(on.begin(), on.end(), labels);
    return true;
  }

  int width_;
  const HalfSearch& half_;
  Rng& rng_;
  Meter& meter_;
};

}  // namespace

std::optional<GateList> search_by_blocks(const BitMatrix& m, int width, const HalfSearch& half,
                                         Rng& rng, Meter& meter) {
  const int n = m.rows();
  const auto draw = [&](int, int last) { return rng.below(last + 1); };
  std::vector<int> labels = shuffled(n, draw);
  const std::vector<int> inputs = shuffled(n, draw);
  BitMatrix mixed(n, n);
  for (int r = 0; r < n; ++r) {
    for (int c = 0; c < n; ++c) {
      const int row = labels[static_cast<std::size_t>(r)];
      if (m.get(row, inputs[static_cast<std::size_t>(c)])) mixed.set(r, c);
    }
  }
  BlockSearch search(width, half, rng, meter);
  if (!search.reduce(mixed, labels.data())) return std::nullopt;
  FreeCircuit found(n);
  found.circuit.gates = std::move(search.gates);
  for (int k = 0; k < n; ++k) {
    found.perm[static_cast<std::size_t>(inputs[static_cast<std::size_t>(k)])] =
        labels[static_cast<std::size_t>(k)];
  }
  found.circuit.reverse();
  found.outputs_from_inputs();
  return gate_list(found);
}

}  // namespace zelt::braidwerk::internal
