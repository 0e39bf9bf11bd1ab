#pragma once

#include <array>
#include <cstddef>
#include <utility>
#include <vector>

#include "zeltbraidwerk/linear/internal/lines.h"

namespace zelt::braidwerk::internal {

/// log(0) to log(n), where log(0) counts as 0 so that rows without a one do no harm.
std::vector<double> logarithms(int n);

/// The sum of the logarithms of the row weights, row 0 first.
double potential(const Lines& lines, const std::vector<double>& logs);

/// By how much every addition lowers the potential. Each value is the potential less the logarithms
/// of the new rows, one at a time from row 0 on: the order decides the last bits, and with them
/// which candidates tie. So additions are computed side by side and never with other roundings.
class LogSavings {
 public:
  explicit LogSavings(int n);

  int size() const { return n_; }
  double base() const { return base_; }
  double at(LineAddition a) const { return *cell(a); }

  /// Computes everything anew.
  void find(const Lines& lines, const std::vector<double>& logs);
  /// Takes over values found elsewhere.
  void set_base(double base) { base_ = base; }
  void set(LineAddition a, double saving) { *cell(a) = saving; }

  /// The largest saving; for n below 2 the lowest double.
  double largest() const;
  /// All additions that save more than `least`, in any order.
  std::vector<LineAddition> above(double least) const;

 private:
  /// Row additions lie by target, column additions by source: what is computed side by side lies
  /// side by side. The places of no addition hold minus infinity.
  const double* cell(LineAddition a) const {
    const auto [from, to, row] = a;
    return table_[row].data() + static_cast<std::size_t>(row ? to : from) * stride_ +
           static_cast<std::size_t>(row ? from : to);
  }
  double* cell(LineAddition a) { return const_cast<double*>(std::as_const(*this).cell(a)); }

  int n_;
  std::size_t stride_;
  double base_ = 0;
  std::array<std::vector<double>, 2> table_;
  std::vector<double> terms_;  ///< room for find()
};

}  // namespace zelt::braidwerk::internal
