#include "zeltbraidwerk/linear/internal/log_position.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

namespace zelt::braidwerk::internal {
namespace {

constexpr double tolerance = 1e-5;

std::vector<double> logarithms(int n) {
  std::vector<double> logs{0.0};
  for (int k = 1; k <= n; ++k) logs.push_back(std::log(k));
  return logs;
}

}  // namespace

LineAddition draw_lowest(std::vector<LogCandidate>& candidates, const Draw& draw) {
  if (candidates.empty()) return no_addition;
  const auto order = [](const LogCandidate& c) {
    return std::tuple(c.cost, c.addition.from, c.addition.to, c.addition.row);
  };
  std::ranges::sort(candidates, {}, order);
  const auto ties = std::ranges::find_if(candidates, [&](const LogCandidate& c) {
    return !(std::abs(c.cost - candidates.front().cost) < tolerance);
  });
  const int last = std::max(static_cast<int>(ties - candidates.begin()) - 1, 0);
  return candidates[static_cast<std::size_t>(draw(0, last))].addition;
}

LogPosition::LogPosition(const BitMatrix& a)
    : lines_(a), logs_(logarithms(a.rows())), estimates_(logs_) {}

double LogPosition::potential() const {
  double sum = 0.0;
  for (int r = 0; r < lines_.size(); ++r) sum += logs_.data()[lines_.weights(true)[r]];
  return sum;
}

double LogPosition::saving(LineAddition addition, double potential) const {
  const auto [from, to, row] = addition;
  const BitMatrix& rows = lines_.side(true);
  double left = potential;
  for (int r = 0; r < lines_.size(); ++r) {
    int weight = lines_.weights(true)[r];
    if (row && r == to) {
      weight = weight_of_sum(rows.row(from), rows.row(to), rows.stride());
    } else if (!row && rows.get(r, from)) {
      weight += rows.get(r, to) ? -1 : 1;
    }
    left -= logs_.data()[weight];
  }
  return left;
}

LineAddition LogPosition::draw_best(bool, const Draw& draw) {
  if (lines_.size() < 2) return no_addition;
  estimates_.find(lines_);
  const double before = potential();
  std::vector<LogCandidate> candidates;
  for (const LineAddition& addition : estimates_.near_largest(tolerance)) {
    candidates.push_back({before - saving(addition, before), addition});
  }
  return draw_lowest(candidates, draw);
}

int LogPosition::whole_saving(double potential) {
  estimates_.find(lines_);
  const double about = estimates_.largest();
  const double error = estimates_.error();
  if (std::trunc(about - error) == std::trunc(about + error)) return static_cast<int>(about);
  double largest = std::numeric_limits<double>::lowest();
  for (const LineAddition& addition : estimates_.near_largest(0)) {
    largest = std::max(largest, saving(addition, potential));
  }
  return static_cast<int>(largest);
}

void LogPosition::score_children(std::vector<Candidate>& children) const {
  LogPosition child = *this;
  const int n = lines_.size();
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      if (i == j) continue;
      for (const bool row : {true, false}) {
        const LineAddition addition{i, j, row};
        child.apply(addition);
        const double left = child.potential();
        children.emplace_back(static_cast<int>(left - child.whole_saving(left)), addition);
        child.apply(addition);
      }
    }
  }
}

}  // namespace zelt::braidwerk::internal
