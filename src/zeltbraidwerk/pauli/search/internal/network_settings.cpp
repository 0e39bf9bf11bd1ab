#include "zeltbraidwerk/pauli/search/internal/network_settings.h"

#include <algorithm>
#include <cmath>

#include "zeltbraidwerk/pauli/search/internal/tuning.h"

namespace zelt::braidwerk::internal {
namespace {

double cost(const NetworkSettings& settings, int weight) {
  if (weight < 2) return 0;
  const double s = settings.shape;
  const double curve = settings.geometric ? (1 - std::pow(s, weight - 1)) / (1 - s)
                                          : (1 - std::pow(weight, -s)) / (1 - std::pow(2.0, -s));
  return settings.bonus + curve + network_window_tuning.letter_cost * (weight - 1);
}

std::int64_t in_units(double value) {
  return std::llround(std::ldexp(value, NetworkCosts::unit_bits));
}

}  // namespace

NetworkCosts::NetworkCosts(const NetworkSettings& settings, int qubits) {
  of_.push_back(0);
  rise_.push_back(0);
  tail_.push_back(0);
  for (int weight = 1; weight <= qubits + 1; ++weight) {
    of_.push_back(in_units(cost(settings, weight)));
    rise_.push_back(static_cast<std::uint32_t>(of_.back() - of_[of_.size() - 2]));
    tail_.push_back(in_units(settings.tail * std::log2(weight)));
  }
  steepest_ = rise_;
  for (std::size_t weight = steepest_.size() - 1; weight > 0; --weight) {
    steepest_[weight - 1] = std::max(steepest_[weight - 1], steepest_[weight]);
  }
}

std::uint32_t NetworkCosts::factor(double f) {
  return static_cast<std::uint32_t>(
      std::lround(std::ldexp(std::clamp(f, 0.0, 1.0), NetworkCosts::factor_bits)));
}

}  // namespace zelt::braidwerk::internal
