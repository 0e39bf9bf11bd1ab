#pragma once

#include <vector>

#include "zeltbraidwerk/linear/internal/candidate.h"
#include "zeltbraidwerk/linear/internal/saving_table.h"

namespace zelt::braidwerk::internal {

/// A matrix under reduction whose cost is the number of its ones.
///
/// Without lookahead the score of an addition is the ones it leaves. With lookahead it is the ones
/// it leaves less the best single saving that is then available.
class OnesPosition {
 public:
  explicit OnesPosition(const BitMatrix& a);
  OnesPosition(const BitMatrix& a, Savings savings);

  const Lines& lines() const { return lines_; }
  const Savings& savings() const { return savings_; }

  void apply(LineAddition addition);
  LineAddition draw_best(bool only_gains, const Draw& draw) const {
    return savings_.draw_largest(only_gains, draw);
  }
  void score_children(std::vector<Candidate>& children) const;

 private:
  Lines lines_;
  Savings savings_;
};

}  // namespace zelt::braidwerk::internal
