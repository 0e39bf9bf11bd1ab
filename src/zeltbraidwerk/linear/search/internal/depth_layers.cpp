#include "zeltbraidwerk/linear/search/internal/depth_layers.h"

#include <algorithm>
#include <cmath>

namespace zelt::braidwerk::internal {

LayerReduction::LayerReduction(int n, const LayerCost& cost)
    : n_(n), cost_(cost), additions_(n, cost.addition) {
  for (int k = 0; k < 256; ++k) {
    noise_.push_back(-cost.noise * std::log((static_cast<float>(k) + 0.5F) / 256.0F));
  }
}

void LayerReduction::gather(int side, float noise, Rng& rng) {
  candidates_.clear();
  const float* gains = additions_.gains(side);
  std::uint64_t bits = 0;
  int bytes = 0;
  for (int to = 0; to < n_; ++to) {
    for (int from = 0; from < n_; ++from) {
      float gain = *gains++;
      if (gain >= 0 || from == to) continue;
      if (noise > 0) {
        if (bytes == 0) {
          bits = rng.next();
          bytes = 8;
        }
        gain *= 1 + noise_[bits & 255];
        bits >>= 8;
        --bytes;
      }
      candidates_.push_back(
          {gain, static_cast<std::uint16_t>(to), static_cast<std::uint16_t>(from)});
    }
  }
}

void LayerReduction::take(int side, const Candidate& candidate) {
  const SideAddition addition{static_cast<std::uint16_t>(side), candidate.to, candidate.from};
  additions_.make(child_, addition);
  pool_.push_back(addition);
  taken_[candidate.to] = taken_[candidate.from] = 1;
}

bool LayerReduction::compose(const State& state, int side, float noise, Rng& rng) {
  gather(side, noise, rng);
  child_ = state;
  const std::size_t first = pool_.size();
  taken_.assign(static_cast<std::size_t>(n_), 0);
  // In stretches, best first: each leaves fewer lines, and with them fewer candidates.
  const auto better = [](const Candidate& a, const Candidate& b) {
    if (a.gain != b.gain) return a.gain < b.gain;
    return a.to != b.to ? a.to < b.to : a.from < b.from;
  };
  while (!candidates_.empty()) {
    const auto stretch = std::min(candidates_.size(), static_cast<std::size_t>(n_));
    const auto end = candidates_.begin() + static_cast<std::ptrdiff_t>(stretch);
    if (end != candidates_.end()) {
      std::nth_element(candidates_.begin(), end, candidates_.end(), better);
    }
    std::sort(candidates_.begin(), end, better);
    const auto open = [&](const Candidate& c) { return !taken_[c.to] && !taken_[c.from]; };
    for (auto c = candidates_.begin(); c != end; ++c) {
      // What was taken has changed the weights of the lines that cross.
      if (open(*c) &&
          additions_.gain(child_, {static_cast<std::uint16_t>(side), c->to, c->from}) < 0) {
        take(side, *c);
      }
    }
    candidates_.erase(candidates_.begin(), end);
    std::erase_if(candidates_, [&](const Candidate& c) { return !open(c); });
  }
  if (pool_.size() == first) {
    // Nothing gets better: the addition that harms least.
    if (n_ < 2) return false;
    Candidate least{0, 0, 0};
    const float* gains = additions_.gains(side);
    for (int to = 0; to < n_; ++to) {
      for (int from = 0; from < n_; ++from, ++gains) {
        if (from == to || (least.to != least.from && *gains >= least.gain)) continue;
        least = {*gains, static_cast<std::uint16_t>(to), static_cast<std::uint16_t>(from)};
      }
    }
    take(side, least);
  }
  layers_.push_back({additions_.hash(child_), first, pool_.size()});
  return true;
}

void LayerReduction::make(State& state, const Move& move) {
  layers_[move.layer].made = any_made_ = true;
  for (const SideAddition& addition : layer(move)) additions_.make(state, addition);
}

void LayerReduction::forget() {
  if (!any_made_) return;
  std::size_t kept = settled_ == 0 ? 0 : layers_[settled_ - 1].last;
  for (; settled_ < layers_.size(); ++settled_) {
    Layer& layer = layers_[settled_];
    const auto from = pool_.begin() + static_cast<std::ptrdiff_t>(layer.first);
    const auto count = static_cast<std::ptrdiff_t>(layer.made ? layer.last - layer.first : 0);
    layer.first = kept;
    std::copy_n(from, count, pool_.begin() + static_cast<std::ptrdiff_t>(kept));
    layer.last = kept += static_cast<std::size_t>(count);
  }
  pool_.resize(kept);
  any_made_ = false;
}

std::span<const SideAddition> LayerReduction::layer(const Move& move) const {
  const Layer& layer = layers_[move.layer];
  return {pool_.data() + layer.first, layer.last - layer.first};
}

}  // namespace zelt::braidwerk::internal
