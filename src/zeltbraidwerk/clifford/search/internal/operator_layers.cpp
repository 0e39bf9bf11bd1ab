#include "zeltbraidwerk/clifford/search/internal/operator_layers.h"

#include <utility>

#include "zeltbraidwerk/clifford/search/internal/tuning.h"

namespace zelt::braidwerk::internal {

OperatorLayers::OperatorLayers(int wires, int variants, Rng& rng, Meter& meter)
    : problem_(wires, layer_cost(wires)), variants_(variants), rng_(rng), meter_(meter) {}

void OperatorLayers::make(State& state, const Move& move) const {
  for (const OperatorReduction::Move& gate : layers_[move.layer].gates) problem_.make(state, gate);
}

std::vector<OperatorReduction::Move> OperatorLayers::gates_of(
    const std::vector<Move>& moves) const {
  std::vector<OperatorReduction::Move> gates;
  for (const Move& move : moves) {
    const auto& layer = layers_[move.layer].gates;
    gates.insert(gates.end(), layer.begin(), layer.end());
  }
  return gates;
}

double OperatorLayers::compose(const State& state, int side, bool noisy) {
  child_ = state;
  const int wires = state.rows.wires();
  taken_.assign(static_cast<std::size_t>(wires), 0);
  const auto price = static_cast<std::uint64_t>(wires * wires / 40 + 1);
  Layer layer;
  while (!meter_.ended() && add_gate(side, noisy, layer)) meter_.charge(price);
  layer.hash = child_.rows.hash();
  layers_.push_back(std::move(layer));
  return child_.cost;
}

bool OperatorLayers::add_gate(int side, bool noisy, Layer& layer) {
  double least = 0;
  Gate best{};
  problem_.children_on(side, child_, taken_, [&](double cost, const OperatorReduction::Move& move) {
    double change = cost - child_.cost;
    if (change >= 0) return;
    if (noisy) change *= 1 + static_cast<double>(clifford_tuning.layer_noise * rng_.unit());
    if (change >= least) return;
    least = change;
    best = move.gate;
  });
  if (least == 0) return false;
  layer.gates.push_back({side, best});
  problem_.make(child_, layer.gates.back());
  for (const End end : {best.a, best.b}) taken_[static_cast<std::size_t>(wire_of(end))] = 1;
  return true;
}

}  // namespace zelt::braidwerk::internal
