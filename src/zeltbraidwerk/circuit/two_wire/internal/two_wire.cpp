#include "zeltbraidwerk/circuit/two_wire/internal/two_wire.h"

#include <array>
#include <cmath>
#include <numbers>
#include <utility>

#include "zeltbraidwerk/circuit/two_wire/internal/one_wire.h"
#include "zeltbraidwerk/circuit/two_wire/internal/symmetry.h"

namespace zelt::braidwerk::internal {

namespace {

constexpr double quarter_turn = std::numbers::pi / 2;
constexpr int x_axis = 0;
constexpr int y_axis = 1;
constexpr int z_axis = 2;

/// Puts gates together; one-wire operators wait until the next CNOT.
class Composer {
 public:
  void turn(int place, const Turn& by) {
    Turn& waiting = waiting_[static_cast<std::size_t>(place)];
    waiting = by * waiting;
  }
  void turn(int place, int axis, double angle) { turn(place, turn_about(axis, angle)); }
  void cnot(int control) {
    flush();
    gates_.push_back({PlaceKind::cnot, static_cast<std::uint8_t>(control)});
  }
  std::vector<PlaceGate> finish() {
    flush();
    return std::move(gates_);
  }

 private:
  void flush() {
    for (int place = 0; place < 2; ++place) {
      Turn& waiting = waiting_[static_cast<std::size_t>(place)];
      const OneWireForm form = one_wire_form(waiting.normalized(), place);
      gates_.insert(gates_.end(), form.begin(), form.end());
      waiting = Turn::Identity();
    }
  }

  std::array<Turn, 2> waiting_{Turn::Identity(), Turn::Identity()};
  std::vector<PlaceGate> gates_;
};

/// exp(i pi/4 XX).
void one_cnot(Composer& out) {
  const Turn h(0, std::sqrt(0.5), 0, std::sqrt(0.5));
  out.turn(0, h);
  out.cnot(0);
  out.turn(0, z_axis, -quarter_turn);
  out.turn(0, h);
  out.turn(1, x_axis, -quarter_turn);
}

/// exp(i (c[0] XX + c[1] YY)). Between the CNOTs XX is X on the control, and ZZ is Z on the target;
/// a quarter turn about X makes YY of ZZ.
void two_cnots(const std::array<double, 3>& c, Composer& out) {
  for (const int place : {0, 1}) out.turn(place, x_axis, quarter_turn);
  out.cnot(0);
  out.turn(0, x_axis, -2 * c[0]);
  out.turn(1, z_axis, -2 * c[1]);
  out.cnot(0);
  for (const int place : {0, 1}) out.turn(place, x_axis, -quarter_turn);
}

/// exp(i (c[0] XX + c[1] YY + c[2] ZZ)).
void three_cnots(const std::array<double, 3>& c, Composer& out) {
  out.turn(0, z_axis, quarter_turn);
  out.cnot(0);
  out.turn(1, z_axis, quarter_turn - 2 * c[2]);
  out.turn(0, y_axis, quarter_turn - 2 * c[0]);
  out.cnot(1);
  out.turn(0, y_axis, 2 * c[1] - quarter_turn);
  out.cnot(0);
  out.turn(1, z_axis, -quarter_turn);
}

std::vector<PlaceGate> compose(const WeylForm& form, int cnots) {
  Composer out;
  for (const int place : {0, 1}) out.turn(place, form.before[static_cast<std::size_t>(place)]);
  if (cnots == 1) one_cnot(out);
  if (cnots == 2) two_cnots(form.c, out);
  if (cnots == 3) three_cnots(form.c, out);
  for (const int place : {0, 1}) out.turn(place, form.after[static_cast<std::size_t>(place)]);
  return out.finish();
}

}  // namespace

int cnots_needed(const Eigen::Matrix4cd& unitary) {
  return cnots_needed(weyl_form(unitary).c);
}

std::optional<double> relative_phase(const Eigen::Matrix4cd& from, const Eigen::Matrix4cd& to,
                                     double error) {
  const double phase = std::arg((from.adjoint() * to).trace());
  if (!((from * std::polar(1.0, phase) - to).norm() <= error)) return std::nullopt;
  return phase;
}

std::optional<TwoWireCircuit> two_wire_circuit(const Eigen::Matrix4cd& unitary) {
  WeylForm form = weyl_form(unitary);
  form.c = exact_coefficients(form.c);
  const int cnots = cnots_needed(form.c);
  if (cnots > 0) form = shared_out(form);
  std::vector<PlaceGate> gates = compose(form, cnots);
  const auto phase = relative_phase(matrix_of(gates), unitary, most_error);
  if (!phase) return std::nullopt;
  return TwoWireCircuit{std::move(gates), *phase};
}

}  // namespace zelt::braidwerk::internal
