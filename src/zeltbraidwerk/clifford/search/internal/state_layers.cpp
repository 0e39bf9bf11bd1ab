#include "zeltbraidwerk/clifford/search/internal/state_layers.h"

#include "zeltbraidwerk/clifford/search/internal/tuning.h"

namespace zelt::braidwerk::internal {

std::span<const Gate> StateLayers::gates(const Move& move) const {
  const Layer& layer = layers_[move.layer];
  return {pool_.data() + layer.first, layer.last - layer.first};
}

void StateLayers::make(State& state, Gate gate) {
  state.apply(gate);
  state.lighten(state_tuning.sets, rng_);
}

double StateLayers::compose(const State& state, bool noisy) {
  child_ = state;
  taken_.assign(static_cast<std::size_t>(state.qubits()), 0);
  const std::size_t first = pool_.size();
  std::uint64_t hash = 0;
  while (!meter_.ended() && add_gate(noisy, hash)) meter_.charge(1);
  layers_.push_back({hash, first, pool_.size()});
  int letters = 0;
  for (int k = 0; k < child_.generators(); ++k) letters += child_.weight(k);
  return letters + state_tuning.tie_noise * rng_.unit();
}

bool StateLayers::add_gate(bool noisy, std::uint64_t& hash) {
  const double worth = child_.worth();
  double most = 0;
  Gate best{};
  for (const auto& [loss, gate] : scored_.best(child_, state_tuning.looked_at, rng_, taken_)) {
    const StateGroup::Outlook outlook = child_.outlook_after(gate);
    double gain = outlook.worth - worth;
    if (noisy) gain *= 1 + state_tuning.layer_noise * rng_.unit();
    if (gain <= most) continue;
    most = gain;
    best = gate;
    hash = outlook.hash;
  }
  if (most == 0) return false;
  for (const End end : {best.a, best.b}) taken_[static_cast<std::size_t>(wire_of(end))] = 1;
  pool_.push_back(best);
  make(child_, best);
  return true;
}

}  // namespace zelt::braidwerk::internal
