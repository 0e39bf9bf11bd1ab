#include "zeltbraidwerk/circuit/two_wire/internal/symmetry.h"

#include <cmath>
#include <numbers>
#include <tuple>
#include <utility>
#include <vector>

#include "zeltbraidwerk/circuit/two_wire/internal/one_wire.h"

namespace zelt::braidwerk::internal {

namespace {

constexpr int z_axis = 2;

bool equal(double a, double b) {
  return std::abs(a - b) <= zero_coefficient;
}

/// exp(i interaction) (before[0] x before[1]) = (after[0] x after[1]) exp(i interaction), for
/// rotations by `before[k]` and `after[k]` times one angle about one axis.
struct Passing {
  int axis;
  std::array<int, 2> before;
  std::array<int, 2> after;
};

std::vector<Passing> passings(const std::array<double, 3>& c) {
  constexpr double wall = std::numbers::pi / 4;
  std::vector<Passing> found;
  // PP + QQ commutes with R x 1 + 1 x R, and PP - QQ with R x 1 - 1 x R, R the third operator.
  for (const auto& [axis, p, q] : {std::tuple(2, 0U, 1U), {0, 1U, 2U}, {1, 0U, 2U}}) {
    const bool sum = equal(c[p], c[q]);
    const bool difference = equal(c[p], -c[q]);
    if (sum && difference) {
      found.push_back({axis, {1, 0}, {1, 0}});
      found.push_back({axis, {0, 1}, {0, 1}});
    } else if (equal(c[p], wall) && (equal(c[q], wall) || equal(c[q], -wall))) {
      // As an iSWAP it hands rotations over to the other wire.
      const int sign = c[q] > 0 ? 1 : -1;
      found.push_back({axis, {1, 0}, {0, sign}});
      found.push_back({axis, {0, 1}, {sign, 0}});
    } else if (sum || difference) {
      const int sign = sum ? 1 : -1;
      found.push_back({axis, {1, sign}, {1, sign}});
    }
  }
  return found;
}

/// Takes rotations by an angle away before the interaction, and adds them after it.
WeylForm passed(WeylForm form, const Passing& way, double angle) {
  for (const std::size_t k : {0U, 1U}) {
    form.before[k] = rotation_about(way.axis, -angle * way.before[k]) * form.before[k];
    form.after[k] = form.after[k] * rotation_about(way.axis, angle * way.after[k]);
  }
  return form;
}

class Cheapest {
 public:
  explicit Cheapest(const WeylForm& form) : best_(form), cost_(outer_cost(form)) {}
  void offer(const WeylForm& form) {
    const auto cost = outer_cost(form);
    if (cost >= cost_) return;
    best_ = form;
    cost_ = cost;
  }
  const WeylForm& best() const { return best_; }

 private:
  WeylForm best_;
  std::pair<int, int> cost_;
};

/// The angles that leave one of the four operators with a rotation less.
void offer_passed(const Passing& way, Cheapest& cheapest) {
  const WeylForm form = cheapest.best();
  for (const std::size_t k : {0U, 1U}) {
    for (const int apart : {1, 2}) {
      const int inner = (way.axis + apart) % 3;
      if (way.before[k] != 0) {
        const double last = euler_angles(form.before[k], way.axis, inner).last;
        cheapest.offer(passed(form, way, last * way.before[k]));
      }
      if (way.after[k] != 0) {
        const double first = euler_angles(form.after[k], way.axis, inner).first;
        cheapest.offer(passed(form, way, -first * way.after[k]));
      }
    }
  }
}

/// Interactions x (XX + YY +- ZZ), which commute with one operator on both wires, up to a Z around
/// it on one of them. With x = pi/4 they are a SWAP and hand over all operators.
void offer_isotropic(Cheapest& cheapest) {
  const WeylForm form = cheapest.best();
  if (!equal(form.c[0], form.c[1]) || !equal(form.c[1], std::abs(form.c[2]))) return;
  const auto flipped = [negative = form.c[2] < 0](const Quaternion& turn) {
    const Quaternion z = rotation_about(z_axis, std::numbers::pi);
    return negative ? z * turn * z.conjugate() : turn;
  };
  const auto offer = [&](const Quaternion& common) {  // on place 1
    WeylForm other = form;
    other.before = {flipped(common.conjugate()) * form.before[0],
                    common.conjugate() * form.before[1]};
    other.after = {form.after[0] * flipped(common), form.after[1] * common};
    cheapest.offer(other);
  };
  offer(flipped(form.before[0]));
  offer(form.before[1]);
  offer(flipped(form.after[0].conjugate()));
  offer(form.after[1].conjugate());
  if (!equal(form.c[0], std::numbers::pi / 4)) return;
  WeylForm swapped = form;
  swapped.before = {Quaternion::Identity(), Quaternion::Identity()};
  swapped.after = {form.after[0] * flipped(form.before[1]),
                   form.after[1] * flipped(form.before[0])};
  cheapest.offer(swapped);
}

}  // namespace

std::pair<int, int> outer_cost(const WeylForm& form) {
  std::pair<int, int> cost{0, 0};
  for (const auto& pair : {form.before, form.after}) {
    for (const Quaternion& turn : pair) {
      const OneWireForm shortest = one_wire_form(turn, 0);
      cost.first += shortest.rotations;
      cost.second += shortest.size;
    }
  }
  return cost;
}

WeylForm shared_out(const WeylForm& form) {
  const std::vector<Passing> ways = passings(form.c);
  if (ways.empty()) return form;
  Cheapest cheapest(form);
  offer_isotropic(cheapest);
  for (const Passing& way : ways) offer_passed(way, cheapest);
  return cheapest.best();
}

}  // namespace zelt::braidwerk::internal
