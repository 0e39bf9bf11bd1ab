#include <stdexcept>
#include <string_view>

#include "zeltbraidwerk/foundations/internal/turns.h"
#include "zeltbraidwerk/foundations/operator_tableau.h"

// Gates by name, on either side of a tableau.

namespace structures {
namespace {

using OneQubit = void (OperatorTableau::*)(int);
using TwoQubits = void (OperatorTableau::*)(int, int);
using T = OperatorTableau;
using namespace zelt::braidwerk::internal;

enum Side { left, right };

struct Pair {
  std::string_view name;
  TwoQubits update[2];
};
constexpr Pair pairs[] = {{"CNOT", {&T::cnot_left, &T::cnot_right}},
                          {"CSIGN", {&T::cz_left, &T::cz_right}},
                          {"CZ", {&T::cz_left, &T::cz_right}}};
constexpr TwoQubits xx[2] = {&T::xx_left, &T::xx_right};

struct Single {
  std::string_view name;
  OneQubit update[2];
};
constexpr Single singles[] = {
    {"H", {&T::h_left, &T::h_right}}, {"S", {&T::rz_plus_left, &T::rz_plus_right}},
    {"X", {&T::x_left, &T::x_right}}, {"Y", {&T::y_left, &T::y_right}},
    {"Z", {&T::z_left, &T::z_right}}, {"D-S", {&T::rz_minus_left, &T::rz_minus_right}},
};

struct Rotation {
  std::string_view name;
  OneQubit minus[2], plus[2], half[2];
};
constexpr Rotation rotations[] = {
    {"RX",
     {&T::rx_minus_left, &T::rx_minus_right},
     {&T::rx_plus_left, &T::rx_plus_right},
     {&T::x_left, &T::x_right}},
    {"RY",
     {&T::ry_minus_left, &T::ry_minus_right},
     {&T::ry_plus_left, &T::ry_plus_right},
     {&T::y_left, &T::y_right}},
    {"RZ",
     {&T::rz_minus_left, &T::rz_minus_right},
     {&T::rz_plus_left, &T::rz_plus_right},
     {&T::z_left, &T::z_right}},
    {"PH",
     {&T::rz_minus_left, &T::rz_minus_right},
     {&T::rz_plus_left, &T::rz_plus_right},
     {&T::z_left, &T::z_right}},
};

/// Apart from the choice of the update: g++ 12 under UBSan loses the index when both are one
/// expression.
template <class... Qubits>
void run(T& t, void (T::*update)(Qubits...), Qubits... qubits) {
  (t.*update)(qubits...);
}

/// From the right, the plain angles alone.
Turn plain_turn_of(const Parameter& angle) {
  if (angle.is_abstract) return Turn::none;
  const double theta = angle.value;
  if (!is_near(theta, -quarter_turn) && !is_near(theta, -half_turn) && !is_near(theta, 0) &&
      !is_near(theta, quarter_turn) && !is_near(theta, half_turn)) {
    throw std::logic_error("Non-clifford rotation angle");
  }
  return turn_of(angle);
}

void rotate(T& t, const Rotation& rotation, const Gate& g, Side side) {
  const int q = g.qbits[0];
  switch (side == left ? turn_of(g.params[0]) : plain_turn_of(g.params[0])) {
    case Turn::none:
      return;
    case Turn::quarter_back:
      return run(t, rotation.minus[side], q);
    case Turn::quarter:
      return run(t, rotation.plus[side], q);
    case Turn::half:
      return run(t, rotation.half[side], q);
  }
}

void apply(T& t, const Gate& g, Side side) {
  for (const Pair& pair : pairs) {
    if (g.name == pair.name) return run(t, pair.update[side], g.qbits[0], g.qbits[1]);
  }
  for (const Single& single : singles) {
    if (g.name == single.name) return run(t, single.update[side], g.qbits[0]);
  }
  for (const Rotation& rotation : rotations) {
    if (g.name == rotation.name) return rotate(t, rotation, g, side);
  }
  if (g.name == "XX") {
    for (auto a = g.qbits.begin(); a != g.qbits.end(); ++a) {
      for (auto b = a + 1; b != g.qbits.end(); ++b) run(t, xx[side], *a, *b);
    }
    return;
  }
  if (side == right && (g.name == "I" || g.name == "S*")) return;
  throw std::logic_error("Attempt to apply non-Clifford gate");
}

}  // namespace

void OperatorTableau::apply_left(const Gate& g) {
  apply(*this, g, left);
}

void OperatorTableau::apply_right(const Gate& g) {
  apply(*this, g, right);
}

}  // namespace structures
