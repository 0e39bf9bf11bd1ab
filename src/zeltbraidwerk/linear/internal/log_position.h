#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/linear/internal/candidate.h"
#include "zeltbraidwerk/linear/internal/log_estimates.h"

namespace zelt::braidwerk::internal {

/// An addition and the potential that it leaves.
struct LogCandidate {
  double cost;
  LineAddition addition;
};

/// One draw among the candidates that cost less than 1e-5 more than the best one, in the order of
/// cost, `from`, `to`, columns before rows. no_addition, without a draw, when there is none.
LineAddition draw_lowest(std::vector<LogCandidate>& candidates, const Draw& draw);

/// A matrix under reduction whose cost is its potential: the sum of the logarithms of the row
/// weights, 0 when every row holds a single one.
///
/// Without lookahead the score of an addition is the potential it leaves. With lookahead it is the
/// potential less the best saving that is then available, each cut toward zero to a whole number.
///
/// The last bits of a saving decide ties, and they come from the order in which it is computed. So
/// estimates only choose the few savings to compute, and those are computed in that order.
class LogPosition {
 public:
  explicit LogPosition(const BitMatrix& a);

  const Lines& lines() const { return lines_; }
  /// The logarithms of the row weights, added up from row 0 on.
  double potential() const;
  /// The potential, which is passed in, less the logarithms of the new row weights, taken off one
  /// by one from row 0 on.
  double saving(LineAddition addition, double potential) const;

  void apply(LineAddition addition) { lines_.add(addition); }
  LineAddition draw_best(bool only_gains, const Draw& draw);
  void score_children(std::vector<Candidate>& children) const;

 private:
  /// The largest saving, cut toward zero.
  int whole_saving(double potential);

  Lines lines_;
  std::vector<double>
      logs_;  ///< of 0 to n; log(0) counts as 0, so that a row without ones is harmless
  LogEstimates estimates_;  ///< room; found anew for every choice
};

}  // namespace zelt::braidwerk::internal
