#pragma once

#include <cstdint>
#include <vector>

#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

/// Which rotations a search has in mind.
enum class Emphasis {
  equal,            ///< all alike
  by_place,         ///< (1 + place / rate)^-2, the place among those left
  by_chain,         ///< rate^length, of the longest chain of earlier ones that anticommute
  by_predecessors,  ///< (1 + earlier ones that anticommute)^-1
};

/// How a search weighs the strings of the rotations that are left. One of weight w >= 2 costs
///   bonus + (1 - shape^(w-1)) / (1 - shape)            where geometric,
///   bonus + (1 - w^-shape) / (1 - 2^-shape)            otherwise,
/// nothing where w = 1, times its emphasis. Steep costs are needed where lists are long: of flat
/// ones the sum over heavy strings drowns the light ones.
struct NetworkSettings {
  bool geometric = true;
  double shape = 0.4;
  double bonus = 0;
  Emphasis emphasis = Emphasis::equal;
  double rate = 40;
  bool narrow = false;  ///< by place: fewer rotations are looked at
  double jitter = 0;    ///< emphasis is multiplied by 1 -+ up to this, drawn once per row
  double tail = 0;      ///< weight of the logarithms of the frame's own strings
};

/// How one run goes about its list.
struct NetworkPlan {
  NetworkSettings settings;
  bool sorted = false;  ///< the list by its letters, otherwise as it was given
};

/// The costs as whole numbers, so that sums do not depend on their order.
class NetworkCosts {
 public:
  static constexpr int unit_bits = 20;
  static constexpr int factor_bits = 16;

  NetworkCosts(const NetworkSettings& settings, int qubits);

  /// f(weight) - f(weight - 1) for weights from 1, and f itself.
  std::uint32_t rise(int weight) const { return rise_[static_cast<std::size_t>(weight)]; }
  std::int64_t of(int weight) const { return of_[static_cast<std::size_t>(weight)]; }
  /// The largest rise to this weight and to heavier ones. It never grows with the weight, as the
  /// rises do by rounding, so that what is too heavy to matter is so at every larger weight.
  std::uint32_t steepest(int weight) const { return steepest_[static_cast<std::size_t>(weight)]; }
  /// The same of the frame's own strings.
  std::uint32_t tail_rise(int weight) const {
    return static_cast<std::uint32_t>(tail(weight) - tail(weight - 1));
  }
  std::int64_t tail(int weight) const { return tail_[static_cast<std::size_t>(weight)]; }

  /// A number from 0 to 1 by which costs are multiplied.
  static std::uint32_t factor(double f);
  static std::uint32_t times(std::uint32_t factor, std::uint32_t value) {
    return static_cast<std::uint32_t>(std::uint64_t{factor} * value >> factor_bits);
  }

 private:
  std::vector<std::uint32_t> rise_;
  std::vector<std::uint32_t> steepest_;
  std::vector<std::int64_t> of_;
  std::vector<std::int64_t> tail_;
};

}  // namespace zelt::braidwerk::internal
