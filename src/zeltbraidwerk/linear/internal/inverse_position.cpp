#include "zeltbraidwerk/linear/internal/inverse_position.h"

#include <utility>

namespace zelt::braidwerk::internal {

using Direction = SavingTable::Direction;

InversePosition::InversePosition(const BitMatrix& a, const BitMatrix& inverse, int discount)
    : lines_(a), inverse_(inverse), savings_(a.rows()), discount_(discount) {
  savings_.add(lines_, Direction::Forward);
  savings_.add(inverse_, Direction::Backward);
}

InversePosition::InversePosition(const BitMatrix& a, const BitMatrix& inverse, Savings savings)
    : lines_(a), inverse_(inverse), savings_(std::move(savings)) {}

void InversePosition::apply(LineAddition addition) {
  savings_.apply(lines_, addition, Direction::Forward);
  savings_.apply(inverse_, paired(addition), Direction::Backward);
}

void InversePosition::score_children(std::vector<Candidate>& children) const {
  const int total = lines_.ones() + inverse_.ones() - discount_;
  for (int i = 0; i < lines_.size(); ++i) {
    for (int j = 0; j < lines_.size(); ++j) {
      if (i == j) continue;
      for (const bool row : {true, false}) {
        children.emplace_back(total - savings_.side[row].at(i, j), LineAddition{i, j, row});
      }
    }
  }
}

}  // namespace zelt::braidwerk::internal
