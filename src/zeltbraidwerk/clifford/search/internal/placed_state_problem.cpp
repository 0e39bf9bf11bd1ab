#include "zeltbraidwerk/clifford/search/internal/placed_state_problem.h"

#include <array>

namespace zelt::braidwerk::internal {

/// A generator changes that anticommutes with the labels of just one end of the gate: it loses its
/// letter on a wire where it is the gate's label, and gets one where it has none.
void PlacedStateProblem::choose(const State& state, Rng& rng) {
  best_.clear();
  for (const auto& [a, b] : weights_.edges()) {
    std::array<double, 9> loss{};
    bool touched = false;
    for (int k = 0; k < state.generators(); ++k) {
      const WireString& string = state.element(k);
      const int of_a = string.label(a);
      const int of_b = string.label(b);
      if (of_a == 0 && of_b == 0) continue;
      if (state.weight(k) > 1) touched = true;
      const double now = placed_worth(state.weight(k));
      const Word others = string.support() & ~(Word{1} << a | Word{1} << b);
      // By the wires that have a letter afterwards: both, a alone, b alone.
      std::array<double, 4> then{};
      for (unsigned on = 1; on < 4; ++on) {
        const Word support = others | Word{on & 1} << a | Word{on >> 1} << b;
        then[on] = placed_worth(weights_(support));
      }
      for (int p = 1; p < 4; ++p) {
        for (int q = 1; q < 4; ++q) {
          const bool odd_a = of_a != 0 && of_a != p;
          const bool odd_b = of_b != 0 && of_b != q;
          if (odd_a == odd_b) continue;
          const unsigned on = (of_a != p ? 1U : 0U) | (of_b != q ? 2U : 0U);
          loss[static_cast<std::size_t>(3 * p + q - 4)] += now - then[on];
        }
      }
    }
    if (!touched) continue;
    for (int p = 1; p < 4; ++p) {
      for (int q = 1; q < 4; ++q) {
        const double ties = 1 + 0x1p-20 * static_cast<double>(rng.unit());
        best_.push_back(
            {loss[static_cast<std::size_t>(3 * p + q - 4)] * ties, {end_of(a, p), end_of(b, q)}});
      }
    }
  }
  const auto count = std::min(best_.size(), static_cast<std::size_t>(placed_state_tuning.looked_at));
  std::partial_sort(best_.begin(), best_.begin() + static_cast<std::ptrdiff_t>(count), best_.end(),
                    [](const Scored& s, const Scored& t) { return s.loss < t.loss; });
  best_.resize(count);
}

}  // namespace zelt::braidwerk::internal
