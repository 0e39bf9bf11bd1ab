#pragma once

#include <compare>
#include <cstdint>

#include "zeltbraidwerk/linear/internal/lines.h"

namespace zelt::braidwerk::internal {

/// A scored addition in one word, ordered by score, `from`, `to`, columns before rows. Lines are
/// numbered below 2^15.
class Candidate {
 public:
  Candidate(int score, LineAddition a)
      : key_((static_cast<std::uint64_t>(score) + bias) << 32 |
             static_cast<std::uint64_t>(a.from << 16 | a.to << 1 | static_cast<int>(a.row))) {}

  int score() const { return static_cast<int>(static_cast<std::int64_t>(key_ >> 32) - bias); }
  LineAddition addition() const {
    const auto low = static_cast<int>(key_ & 0x7fffffff);
    return {low >> 16, low >> 1 & 0x7fff, (low & 1) != 0};
  }

  auto operator<=>(const Candidate&) const = default;

 private:
  static constexpr std::int64_t bias = std::int64_t{1} << 31;

  std::uint64_t key_;
};

}  // namespace zelt::braidwerk::internal
