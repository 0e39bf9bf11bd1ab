#include "zeltbraidwerk/linear/search/internal/depth_series.h"

#include <cmath>

#include "zeltbraidwerk/search/internal/beam.h"

namespace zelt::braidwerk::internal {

struct LayerSeries::Run {
  double exponent = 0;
  int width = 1;
  float noise = 0;
  std::size_t kept = 0;  // layers
};

LayerSeries::Run LayerSeries::next_run(Rng& rng) const {
  // The light lines are to count the more the larger the matrix is.
  Run run{n_ < 24 ? 0.75 - n_ / 24.0 : n_ < 48 ? -n_ / 24.0 : -4 * std::pow(n_ / 64.0, 0.75)};
  if (first_) return run;
  const double part = static_cast<double>(rng.unit());
  run.exponent += (n_ < 24 ? 0.5 : -0.5 * run.exponent) * (1 - 2 * part);
  // Wide beams pay on small matrices; on large ones as many greedy runs do better.
  const int widths[] = {n_ < 48 ? 8 : 1, n_ < 48 ? 32 : 1, n_ < 48 ? 128 : n_ < 96 ? 16 : 4};
  run.width = widths[rng.below(3)];
  if (run.width > 1) run.noise = 0.1F + 0.2F * rng.unit();
  if (!best_.empty() && rng.coin())
    run.kept = static_cast<std::size_t>(rng.below(static_cast<int>(best_.size())));
  return run;
}

bool LayerSeries::run(Rng& rng, Meter& meter) {
  const Run next = next_run(rng);
  first_ = false;
  LayerReduction problem(n_, {{next.exponent, true, 0}, next.noise > 0 ? 3 : 1, next.noise});
  ReductionState state = problem.start(m_);
  std::vector<SideAddition> all;
  for (std::size_t k = 0; k < next.kept; ++k) {
    for (const SideAddition& addition : best_[k]) {
      problem.additions().make(state, addition);
      all.push_back(addition);
    }
  }
  const auto found =
      BeamSearch<LayerReduction>(problem, {.width = next.width}, rng, meter).run(state);
  if (found.empty()) return false;
  const std::vector<LayerReduction::Move>& moves = found[0].moves;
  const bool better = best_.empty() || next.kept + moves.size() <= best_.size();
  if (better) best_.resize(next.kept);
  for (const LayerReduction::Move& move : moves) {
    const auto layer = problem.layer(move);
    all.insert(all.end(), layer.begin(), layer.end());
    if (better) best_.emplace_back(layer.begin(), layer.end());
  }
  if (better) circuit_ = problem.additions().circuit(found[0].state, all);
  return better;
}

}  // namespace zelt::braidwerk::internal
