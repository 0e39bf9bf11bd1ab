#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zelt::braidwerk::internal {

/// The cost of reductions from one side: a sum of f(w) = -q^w over the weights of rows, by which
/// moves are priced in the eight lightest rows that are not finished, each at the slope of f.
class LightRows {
 public:
  using Weights = std::vector<std::uint16_t>;

  /// f for weights up to most_weight + 1, and q. A row of `finished` ones or fewer is done.
  LightRows(int most_weight, double ratio, int finished)
      : value_(static_cast<std::size_t>(most_weight) + 2), finished_(finished) {
    double value = -1;
    for (double& of_weight : value_) {
      of_weight = value;
      value *= ratio;
    }
  }

  double value(std::size_t weight) const { return value_[weight]; }

  struct Sum {
    double cost = 0;
    int unfinished = 0;  ///< rows
  };
  Sum sum(const Weights& weights, int rows) const {
    Sum result;
    for (int r = 0; r < rows; ++r) {
      const std::uint16_t weight = weights[static_cast<std::size_t>(r)];
      result.cost += value_[weight];
      if (weight > finished_) ++result.unfinished;
    }
    return result;
  }

  /// Chooses the rows, the lightest first and of equals the first.
  void choose(const Weights& weights, int rows) {
    lightest_.clear();
    for (int r = 0; r < rows; ++r) {
      if (weights[static_cast<std::size_t>(r)] > finished_) {
        lightest_.push_back(static_cast<std::uint16_t>(r));
      }
    }
    const std::size_t count = std::min<std::size_t>(lightest_.size(), most_chosen);
    std::partial_sort(lightest_.begin(), lightest_.begin() + static_cast<std::ptrdiff_t>(count),
                      lightest_.end(), [&](std::uint16_t i, std::uint16_t j) {
                        return weights[i] != weights[j] ? weights[i] < weights[j] : i < j;
                      });
    lightest_.resize(count);
    for (std::size_t t = 0; t < count; ++t) {
      const std::uint16_t w = weights[lightest_[t]];
      const double price = (value_[w + 1U] - value_[w - 1U]) / 2;
      const std::size_t bit = std::size_t{1} << t;
      for (std::size_t low = 0; low < bit; ++low) prices_[bit | low] = prices_[low] + price;
    }
  }

  const std::vector<std::uint16_t>& chosen() const { return lightest_; }
  /// Of ones in the chosen rows, one bit per row.
  double price(std::size_t ones) const { return prices_[ones]; }

 private:
  static constexpr std::size_t most_chosen = 8;

  std::vector<double> value_;  // by weight
  int finished_;
  std::vector<std::uint16_t> lightest_;
  std::array<double, std::size_t{1} << most_chosen> prices_{};
};

}  // namespace zelt::braidwerk::internal
