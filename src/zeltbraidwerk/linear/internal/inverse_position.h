#pragma once

#include <vector>

#include "zeltbraidwerk/linear/internal/candidate.h"
#include "zeltbraidwerk/linear/internal/saving_table.h"

namespace zelt::braidwerk::internal {

/// The addition that keeps the inverse the inverse: where line i is added to line j, line j of the
/// other kind is added to line i.
inline LineAddition paired(LineAddition a) {
  return {a.to, a.from, !a.row};
}

/// A matrix under reduction whose cost is the number of ones in it and in its inverse. The score of
/// an addition is the ones it leaves, with lookahead less a constant.
class InversePosition {
 public:
  explicit InversePosition(const BitMatrix& a) : InversePosition(a, internal::inverse(a)) {}
  InversePosition(const BitMatrix& a, const BitMatrix& inverse, int discount = 0);
  InversePosition(const BitMatrix& a, const BitMatrix& inverse, Savings savings);

  const Lines& lines() const { return lines_; }

  void apply(LineAddition addition);
  LineAddition draw_best(bool only_gains, const Draw& draw) const {
    return savings_.draw_largest(only_gains, draw);
  }
  void score_children(std::vector<Candidate>& children) const;

 private:
  Lines lines_;
  Lines inverse_;
  Savings savings_;
  int discount_ = 0;
};

}  // namespace zelt::braidwerk::internal
