#pragma once

#include <cstdint>
#include <span>

namespace zelt::braidwerk::internal {

/// One round of a search: rounds grow, so that a search may end after any of them.
struct Round {
  int number;           ///< from 0
  std::uint64_t steps;  ///< about what its parts are measured by
};

/// How the rounds of a search grow: steps of the first one, each the same times longer than the one
/// before.
struct Schedule {
  double first_steps;
  double growth = 2;
  int most_growths = 50;  ///< later rounds are all as long
};

/// Goes through the rounds of a schedule.
class Rounds {
 public:
  explicit Rounds(const Schedule& schedule) : schedule_(schedule), steps_(schedule.first_steps) {}

  Round now() const { return {number_, static_cast<std::uint64_t>(steps_)}; }
  void next() {
    if (number_++ < schedule_.most_growths) steps_ *= schedule_.growth;
  }

 private:
  Schedule schedule_;
  double steps_;
  int number_ = 0;
};

/// The widest beam, of ascending widths, that takes no more than `steps` steps at this price for
/// each state of a level; 0 where none does.
inline int widest_within(std::span<const int> widths, double price, double steps) {
  int widest = 0;
  for (const int width : widths) {
    if (width * price <= steps) widest = width;
  }
  return widest;
}

}  // namespace zelt::braidwerk::internal
