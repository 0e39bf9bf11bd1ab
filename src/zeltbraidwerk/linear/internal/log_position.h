#pragma once

#include <optional>
#include <vector>

#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/linear/internal/candidate.h"
#include "zeltbraidwerk/linear/internal/log_savings.h"

namespace zelt::braidwerk::internal {

/// A matrix under reduction whose cost is its potential, which is 0 when every row holds a single
/// one.
///
/// Without lookahead the score of an addition is the potential it leaves, and scores less than 1e-5
/// above the best one tie. With lookahead it is the potential less the best saving that is then
/// available, each cut toward zero to an int.
class LogPosition {
 public:
  explicit LogPosition(const BitMatrix& a);
  /// With savings found elsewhere, to be used until the first apply(); their base is set here.
  LogPosition(const BitMatrix& a, LogSavings savings);

  const Lines& lines() const { return lines_; }

  void apply(LineAddition addition);
  LineAddition draw_best(bool only_gains, const Draw& draw);
  void score_children(std::vector<Candidate>& children) const;

 private:
  Lines lines_;
  std::vector<double> logs_;
  LogSavings savings_;
  bool known_ = false;  ///< savings_ belong to lines_
};

}  // namespace zelt::braidwerk::internal
