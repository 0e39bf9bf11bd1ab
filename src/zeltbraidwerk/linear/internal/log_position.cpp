#include "zeltbraidwerk/linear/internal/log_position.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace zelt::braidwerk::internal {

LogPosition::LogPosition(const BitMatrix& a)
    : lines_(a), logs_(logarithms(a.rows())), savings_(a.rows()) {}

LogPosition::LogPosition(const BitMatrix& a, LogSavings savings)
    : lines_(a), logs_(logarithms(a.rows())), savings_(std::move(savings)), known_(true) {
  savings_.set_base(potential(lines_, logs_));
}

void LogPosition::apply(LineAddition addition) {
  lines_.add(addition);
  known_ = false;
}

LineAddition LogPosition::draw_best(bool, const Draw& draw) {
  if (lines_.size() < 2) return no_addition;
  if (!std::exchange(known_, true)) savings_.find(lines_, logs_);
  constexpr double tolerance = 1e-5;
  const double base = savings_.base();
  const double most = savings_.largest();
  const double best = base - most;

  using Scored = std::tuple<double, int, int, bool>;
  std::vector<Scored> ties;
  for (const LineAddition& a : savings_.above(most - 2 * tolerance)) {
    const double cost = base - savings_.at(a);
    if (std::abs(cost - best) < tolerance) ties.emplace_back(cost, a.from, a.to, a.row);
  }
  if (ties.empty()) return no_addition;
  std::sort(ties.begin(), ties.end());
  const auto [cost, from, to, row] =
      ties[static_cast<std::size_t>(draw(0, static_cast<int>(ties.size()) - 1))];
  return {from, to, row};
}

void LogPosition::score_children(std::vector<Candidate>& children) const {
  const int n = lines_.size();
  Lines lines = lines_;
  LogSavings savings(n);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      if (i == j) continue;
      for (const bool row : {true, false}) {
        const LineAddition addition{i, j, row};
        lines.add(addition);
        savings.find(lines, logs_);
        const double best = std::trunc(savings.largest());
        children.emplace_back(static_cast<int>(savings.base() - best), addition);
        lines.add(addition);
      }
    }
  }
}

}  // namespace zelt::braidwerk::internal
