#pragma once

#include <cmath>
#include <stdexcept>

#include "zeltbraidwerk/foundations/parameter.h"

/// \file
/// Rotation angles that make a rotation a Clifford gate.

namespace zelt::braidwerk::internal {

enum class Turn { none, quarter_back, quarter, half };

inline constexpr double quarter_turn = 1.5707963267948966;
inline constexpr double half_turn = 3.141592653589793;
inline constexpr double three_quarter_turn = 4.71238898038469;
inline constexpr double full_turn = 6.283185307179586;

inline bool is_near(double a, double b) {
  return std::abs(a - b) < 1e-5;
}

/// The turn of a multiple of pi/2, whatever its size and sign; none for a symbolic angle. Throws
/// std::logic_error "Non-clifford rotation angle" on any other angle.
inline Turn turn_of(const structures::Parameter& angle) {
  if (angle.is_abstract) return Turn::none;
  double theta = std::fmod(angle.value, full_turn);
  if (theta < 0) theta += full_turn;
  if (is_near(theta, 0) || is_near(theta, full_turn)) return Turn::none;
  if (is_near(theta, three_quarter_turn)) return Turn::quarter_back;
  if (is_near(theta, quarter_turn)) return Turn::quarter;
  if (is_near(theta, half_turn)) return Turn::half;
  throw std::logic_error("Non-clifford rotation angle");
}

}  // namespace zelt::braidwerk::internal
