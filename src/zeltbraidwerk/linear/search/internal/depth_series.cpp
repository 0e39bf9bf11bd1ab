#include "zeltbraidwerk/linear/search/internal/depth_series.h"

#include <cstddef>

#include "zeltbraidwerk/linear/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/beam.h"

namespace zelt::braidwerk::internal {

struct LayerSeries::Run {
  double exponent = 0;
  int width = 1;
  float noise = 0;
  std::size_t kept = 0;  // layers
};

LayerSeries::Run LayerSeries::next_run(Rng& rng) const {
  Run run{layer_exponent(n_)};
  if (first_) return run;
  const double part = static_cast<double>(rng.unit());
  run.exponent += layer_exponent_spread(n_, run.exponent) * (1 - 2 * part);
  run.width = layer_widths(n_)[static_cast<std::size_t>(rng.below(3))];
  if (run.width > 1) run.noise = layer_tuning.least_noise + layer_tuning.more_noise * rng.unit();
  if (!best_.empty() && rng.coin())
    run.kept = static_cast<std::size_t>(rng.below(static_cast<int>(best_.size())));
  return run;
}

bool LayerSeries::run(Rng& rng, Meter& meter) {
  const Run next = next_run(rng);
  first_ = false;
  LayerReduction problem(
      n_, {{next.exponent, true, 0}, next.noise > 0 ? layer_tuning.variants : 1, next.noise});
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
