#include "zeltbraidwerk/phase/search/internal/parity_growing.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "zeltbraidwerk/phase/search/internal/parity_start.h"
#include "zeltbraidwerk/phase/search/internal/tuning.h"

namespace zelt::braidwerk::internal {

namespace {

/// The lighter the parities are, the more the light ones among them count. The first costs are the
/// best for random sets of 8 n to 10 n parities.
std::vector<GrowthCost> costs_to_try(const BitMatrix& parities, bool on_device) {
  constexpr const GrowthTuning& tuning = growth_tuning;
  if (on_device) return {tuning.costs_on_device.begin(), tuning.costs_on_device.end()};
  const int n = parities.rows();
  const double terms = std::max(parities.cols(), 1);
  double ones = 0;
  for (int q = 0; q < n; ++q) ones += weight(parities.row(q), parities.stride());
  const double halvings = std::log2(tuning.usual_terms * std::max(n, 1) / terms);
  const double rise = tuning.decay_rise;
  const double decay =
      std::clamp(tuning.top_decay - tuning.decay_weight * terms / std::max(ones, 1.0) +
                     rise * std::min(halvings, tuning.most_halvings),
                 tuning.least_decay, tuning.most_decay);
  const double share = n < tuning.few_wires ? tuning.share_on_few : tuning.share;
  const double exponent = n < tuning.few_wires      ? tuning.exponent_on_few
                          : n < tuning.medium_wires ? tuning.exponent_on_medium
                                                    : tuning.exponent;
  return {{decay, rise, share, exponent},
          {decay, rise, 0, exponent},
          {decay + tuning.flatter, rise, share, exponent},
          {decay - tuning.steeper, rise, share, exponent}};
}

}  // namespace

ParityGrowing::ParityGrowing(const BitMatrix& parities, const Task& task,
                             const ParityRewriter& rewriter, Rng& rng)
    : parities_(parities),
      n_(parities.rows()),
      task_(task),
      rewriter_(rewriter),
      rng_(rng),
      costs_(costs_to_try(parities, task.device != nullptr)) {}

GateList ParityGrowing::quick(Meter& meter) {
  // The beam weighs all CNOTs at each step, the plain methods only some.
  constexpr const ParityTuning& tuning = parity_tuning;
  const bool slow = task_.device != nullptr && n_ > tuning.quick_wires_on_device;
  const bool small = !slow && beam_microseconds() < tuning.quick_microseconds;
  ParityNetwork network;
  if (small) {
    const bool few = task_.device == nullptr && n_ < growth_tuning.few_wires;
    const double rise = few ? growth_tuning.quick_rise_on_few : costs_[0].decay_rise;
    const GrowthCost cost{costs_[0].decay, rise, 0, -1};
    const BeamOptions options{.width = tuning.quick_width, .noise = growth_tuning.tie_noise};
    const auto networks = grow_networks(parities_, task_.device, cost, options, rng_, meter);
    if (!networks.empty()) network = networks[0];
  }
  if (network.empty()) network = plain_network(parities_, task_.device, rng_);
  if (!task_.closes()) return {n_, network};
  if (small) {
    const int width = n_ <= tuning.quick_closing_wires ? tuning.quick_closing_width : 1;
    if (auto list = closed(network, n_, task_.device, width, rng_, meter)) return *list;
  }
  return closed_plainly(network, n_, task_.device, rng_);
}

double ParityGrowing::beam_microseconds() const {
  constexpr const ParityTuning& tuning = parity_tuning;
  const double terms = parities_.cols();
  return tuning.least_microseconds + tuning.microseconds_of_beam * terms * terms * n_ * n_ * n_ *
                                         (task_.device == nullptr ? 1 : tuning.beam_on_device);
}

int ParityGrowing::widest_beam() const {
  const double bytes = 16.0 * (parities_.cols() + 2 * n_) * words_for(n_);
  return static_cast<int>(std::clamp<double>(parity_tuning.most_beam_bytes / bytes,
                                             parity_tuning.least_beam_width,
                                             parity_tuning.most_beam_width));
}

std::optional<GateList> ParityGrowing::grow_at_all_costs(int width, Meter& meter) {
  std::vector<std::pair<double, GrowthCost>> ranked;
  std::optional<GateList> best;
  for (const GrowthCost& cost : costs_) {
    const std::optional<GateList> list = grow(width, cost, meter);
    const int length = list ? rewriter_.length(*list) : std::numeric_limits<int>::max();
    const bool first = ranked.empty() || task_.device != nullptr;
    ranked.emplace_back(length * (first ? 1 : growth_tuning.handicap), cost);
    if (list && (!best || length < rewriter_.length(*best))) best = list;
  }
  std::ranges::stable_sort(ranked, {}, [](const auto& entry) { return entry.first; });
  std::ranges::transform(ranked, costs_.begin(), [](const auto& entry) { return entry.second; });
  return best;
}

std::optional<GateList> ParityGrowing::grow(int width, Meter& meter) {
  for (const GrowthCost& cost : costs_) {
    if (auto list = grow(width, cost, meter)) return list;
  }
  return std::nullopt;
}

std::optional<GateList> ParityGrowing::grow(int width, const GrowthCost& cost, Meter& meter) {
  if (n_ > SteinerWeights::most_vertices) return std::nullopt;
  const BeamOptions options{.width = width,
                            .finishers = growth_tuning.finishers,
                            .overtime = growth_tuning.overtime,
                            .noise = growth_tuning.tie_noise};
  const int closing_width =
      std::clamp(width / parity_tuning.closing_part, 1, parity_tuning.most_closing_width);
  std::optional<GateList> best;
  for (const ParityNetwork& network :
       grow_networks(parities_, task_.device, cost, options, rng_, meter)) {
    std::optional<GateList> list;
    if (task_.closes()) {
      list = closed(network, n_, task_.device, closing_width, rng_, meter);
    } else {
      list.emplace(n_, network);
    }
    if (list && (!best || rewriter_.length(*list) < rewriter_.length(*best))) best = list;
  }
  return best;
}

}  // namespace zelt::braidwerk::internal
