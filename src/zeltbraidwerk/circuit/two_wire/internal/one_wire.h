#pragma once

#include <array>
#include <vector>

#include "zeltbraidwerk/circuit/two_wire/internal/place_gate.h"

namespace zelt::braidwerk::internal {

/// Gates on one wire in time order.
struct OneWireForm {
  std::array<PlaceGate, 3> gates;
  int size = 0;
  int rotations = 0;

  const PlaceGate* begin() const { return gates.data(); }
  const PlaceGate* end() const { return gates.data() + size; }
};

/// Where a Clifford operator sends the axes X, Y and Z: of each, 2 * the axis of the image, and 1
/// where that is negative.
using AxisImages = std::array<int, 3>;

struct Clifford {
  std::array<PlaceGate, 2> gates;
  int size = 0;
  Quaternion turn = Quaternion::Identity();
  AxisImages images{};
};

/// The 24 one-wire Clifford operators by growing number of gates, which is at most 2.
const std::vector<Clifford>& cliffords();

/// How far an entry of a rotation matrix may be from 0 to count as 0. Taking it for 0 changes the
/// operator by about half of that, so that eight of these forms in a circuit stay right to 1e-10.
inline constexpr double zero_entry = 1e-11;

/// The operator up to its phase, by the fewest rotations that are no Clifford gates and then by few
/// gates: two at most for a Clifford operator or one rotation, three at most otherwise.
///
/// The number of rotations shows in the 3x3 matrix by which the operator turns X, Y and Z: a signed
/// permutation needs none, one entry of +-1 one, an entry of 0 two. These entries are looked for by
/// the zeros beside them, which are off by as much as an angle is; the +-1 itself is off by its
/// square.
OneWireForm one_wire_form(const Quaternion& turn, int place);

struct EulerAngles {
  double last;    ///< about the outer axis, the leftmost factor
  double middle;  ///< about the inner axis
  double first;   ///< about the outer axis
};

/// turn = +- R_outer(last) R_inner(middle) R_outer(first), for two different axes.
EulerAngles euler_angles(const Quaternion& turn, int outer, int inner);

}  // namespace zelt::braidwerk::internal
