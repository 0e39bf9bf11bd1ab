#include "zeltbraidwerk/circuit/two_wire/internal/two_wire.h"

#include <array>
#include <cmath>
#include <numbers>
#include <utility>

#include "zeltbraidwerk/circuit/two_wire/internal/frame.h"
#include "zeltbraidwerk/circuit/two_wire/internal/one_wire.h"
#include "zeltbraidwerk/circuit/two_wire/internal/symmetry.h"

namespace zelt::braidwerk::internal {

namespace {

constexpr double quarter_turn = std::numbers::pi / 2;
constexpr int most_one_wire = 15;  // of a circuit in any frame
constexpr int x_axis = 0;
constexpr int y_axis = 1;
constexpr int z_axis = 2;

/// Puts gates together; one-wire operators wait until the next CNOT.
class Composer {
 public:
  void turn(int place, const Quaternion& by) {
    Quaternion& waiting = waiting_[static_cast<std::size_t>(place)];
    waiting = by * waiting;
  }
  void turn(int place, int axis, double angle) { turn(place, rotation_about(axis, angle)); }
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
      Quaternion& waiting = waiting_[static_cast<std::size_t>(place)];
      const OneWireForm form = one_wire_form(waiting.normalized(), place);
      gates_.insert(gates_.end(), form.begin(), form.end());
      waiting = Quaternion::Identity();
    }
  }

  std::array<Quaternion, 2> waiting_{Quaternion::Identity(), Quaternion::Identity()};
  std::vector<PlaceGate> gates_;
};

/// What stands between the ends of a core. Between two CNOTs XX is X on the control, and ZZ is Z on
/// the target.
void put_core(const std::array<double, 3>& c, CoreKind kind, Composer& out) {
  if (kind == CoreKind::none) return;
  out.cnot(0);
  switch (kind) {
    case CoreKind::two:
      out.turn(0, x_axis, -2 * c[0]);
      out.turn(1, z_axis, -2 * c[2]);
      out.cnot(0);
      break;
    case CoreKind::iswap:
      out.cnot(1);
      break;
    case CoreKind::three:
      out.turn(1, z_axis, quarter_turn - 2 * c[2]);
      out.turn(0, y_axis, quarter_turn - 2 * c[0]);
      out.cnot(1);
      out.turn(0, y_axis, 2 * c[1] - quarter_turn);
      out.cnot(0);
      break;
    default:
      break;
  }
}

std::vector<PlaceGate> compose(const WeylForm& form, CoreKind kind) {
  Composer out;
  const CoreEnds ends = core_ends(kind);
  for (const int place : {0, 1}) {
    const auto k = static_cast<std::size_t>(place);
    out.turn(place, ends.first[k] * form.before[k]);
  }
  put_core(form.c, kind, out);
  for (const int place : {0, 1}) {
    const auto k = static_cast<std::size_t>(place);
    out.turn(place, form.after[k] * ends.last[k]);
  }
  return out.finish();
}

std::vector<PlaceGate> compose(const FramedForm& framed, CoreKind kind) {
  std::vector<PlaceGate> gates = compose(framed.form, kind);
  if (framed.mirrored) {
    for (PlaceGate& gate : gates) gate.place ^= 1;
  }
  return gates;
}

/// Whether a form with fewer one-wire gates, the other counts being equal, may be better.
bool may_improve(const GateCounts& counts, const GateCounts& known) {
  const GateCounts least{counts.two_wire, counts.rotations, counts.rotations};
  return counts != least && least.better_than(known);
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

std::optional<TwoWireCircuit> two_wire_circuit(const Eigen::Matrix4cd& unitary,
                                               const GateCounts& known) {
  WeylForm form = weyl_form(unitary);
  form.c = exact_coefficients(form.c);
  if (cnots_needed(form.c) > known.two_wire) return std::nullopt;
  const CoreKind kind = core_kind(form.c);
  std::vector<PlaceGate> gates;
  if (kind == CoreKind::none) {
    gates = compose(form, kind);
  } else {
    form = shared_out(form);
    gates = compose(framed(form, kind, most_one_wire), kind);
    const GateCounts counts = counts_of(gates);
    if (may_improve(counts, known)) gates = compose(framed(form, kind, counts.rotations), kind);
  }
  if (!counts_of(gates).better_than(known)) return std::nullopt;
  const auto phase = relative_phase(matrix_of(gates), unitary, most_error);
  if (!phase) return std::nullopt;
  return TwoWireCircuit{std::move(gates), *phase};
}

}  // namespace zelt::braidwerk::internal
