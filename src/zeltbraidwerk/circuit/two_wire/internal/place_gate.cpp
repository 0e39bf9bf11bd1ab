#include "zeltbraidwerk/circuit/two_wire/internal/place_gate.h"

#include <array>
#include <cmath>
#include <complex>
#include <numbers>
#include <string_view>
#include <utility>

namespace zelt::braidwerk::internal {

namespace {

using Complex = std::complex<double>;
constexpr double quarter_turn = std::numbers::pi / 2;
constexpr Complex i_unit{0, 1};

// The names of one-wire gates by kind; the phase of each is that of its turn times `phase`.
struct OneWireName {
  std::string_view name;
  Complex phase;
};
constexpr std::array<OneWireName, 9> one_wire_names{{{"X", i_unit},
                                                     {"Y", i_unit},
                                                     {"Z", i_unit},
                                                     {"H", i_unit},
                                                     {"S", 1},
                                                     {"D-S", 1},
                                                     {"RX", 1},
                                                     {"RY", 1},
                                                     {"RZ", 1}}};

constexpr std::size_t index_of(PlaceKind kind) {
  return static_cast<std::size_t>(kind);
}

constexpr bool has_angle(PlaceKind kind) {
  return kind >= PlaceKind::rx && kind <= PlaceKind::rz;
}

/// Of rows in which the bit `stride` is 0, and their partners.
template <typename Matrix>
void turn_rows(const Eigen::Matrix2cd& u, int stride, Matrix& m) {
  for (int low = 0; low < Matrix::RowsAtCompileTime; ++low) {
    if ((low & stride) != 0) continue;
    const auto top = m.row(low).eval();
    const auto bottom = m.row(low + stride).eval();
    m.row(low) = u(0, 0) * top + u(0, 1) * bottom;
    m.row(low + stride) = u(1, 0) * top + u(1, 1) * bottom;
  }
}

}  // namespace

bool PlaceGate::is_rotation() const {
  constexpr double tolerance = 1e-9;
  return has_angle(kind) && std::abs(std::remainder(angle, quarter_turn)) > tolerance;
}

void GateCounts::add(const PlaceGate& gate) {
  two_wire += gate.two_wire() ? 1 : 0;
  one_wire += gate.two_wire() ? 0 : 1;
  rotations += gate.is_rotation() ? 1 : 0;
}

bool GateCounts::better_than(const GateCounts& other) const {
  if (two_wire != other.two_wire) return two_wire < other.two_wire;
  return rotations <= other.rotations && one_wire <= other.one_wire && *this != other;
}

GateCounts counts_of(const std::vector<PlaceGate>& gates) {
  GateCounts counts;
  for (const PlaceGate& gate : gates) counts.add(gate);
  return counts;
}

Quaternion rotation_about(int axis, double angle) {
  Quaternion turn(std::cos(angle / 2), 0, 0, 0);
  turn.vec()[axis] = std::sin(angle / 2);
  return turn;
}

Quaternion quaternion_of(const PlaceGate& gate) {
  constexpr double half = std::numbers::sqrt2 / 2;
  switch (gate.kind) {
    case PlaceKind::x:
      return {0, 1, 0, 0};
    case PlaceKind::y:
      return {0, 0, 1, 0};
    case PlaceKind::z:
      return {0, 0, 0, 1};
    case PlaceKind::h:
      return {0, half, 0, half};
    case PlaceKind::s:
      return {half, 0, 0, half};
    case PlaceKind::s_dagger:
      return {half, 0, 0, -half};
    case PlaceKind::rx:
    case PlaceKind::ry:
    case PlaceKind::rz:
      return rotation_about(static_cast<int>(gate.kind) - static_cast<int>(PlaceKind::rx),
                            gate.angle);
    default:
      return Quaternion::Identity();
  }
}

Eigen::Matrix2cd matrix_of(const Quaternion& turn) {
  Eigen::Matrix2cd m;
  m << Complex(turn.w(), -turn.z()), Complex(-turn.y(), -turn.x()),  //
      Complex(turn.y(), -turn.x()), Complex(turn.w(), turn.z());
  return m;
}

template <typename Matrix>
void apply(const PlaceGate& gate, const std::array<int, 2>& strides, Matrix& m) {
  const int own = strides[gate.place];
  const int other = strides[1U - gate.place];
  if (!gate.two_wire()) {
    turn_rows(matrix_of(quaternion_of(gate)) * one_wire_names[index_of(gate.kind)].phase, own, m);
    return;
  }
  for (int row = 0; row < Matrix::RowsAtCompileTime; ++row) {
    if ((row & own) == 0 || (row & other) == 0) continue;
    if (gate.kind == PlaceKind::cz) {
      m.row(row) *= -1;
    } else {
      m.row(row).swap(m.row(row - other));
    }
  }
}

template void apply(const PlaceGate&, const std::array<int, 2>&, Eigen::Matrix4cd&);
template void apply(const PlaceGate&, const std::array<int, 2>&, Eigen::Matrix<Complex, 8, 8>&);

Eigen::Matrix4cd matrix_of(const std::vector<PlaceGate>& gates) {
  Eigen::Matrix4cd m = Eigen::Matrix4cd::Identity();
  for (const PlaceGate& gate : gates) apply(gate, {2, 1}, m);
  return m;
}

std::optional<PlaceGate> place_gate(const structures::Gate& gate) {
  if (gate.qbits.size() == 2 && gate.params.empty() && gate.qbits[0] != gate.qbits[1]) {
    if (gate.name == "CNOT") return PlaceGate{PlaceKind::cnot};
    if (gate.name == "CZ" || gate.name == "CSIGN") return PlaceGate{PlaceKind::cz};
  }
  if (gate.qbits.size() != 1) return std::nullopt;
  if (gate.name == "I") return PlaceGate{PlaceKind::rz};
  const std::string_view name = gate.name == "PH" ? std::string_view("RZ") : gate.name;
  for (std::size_t k = 0; k < one_wire_names.size(); ++k) {
    if (name != one_wire_names[k].name) continue;
    const auto kind = static_cast<PlaceKind>(k);
    if (!has_angle(kind)) return PlaceGate{kind};
    if (gate.params.size() != 1 || gate.params[0].is_abstract) return std::nullopt;
    const double angle = gate.params[0].value;
    return std::isfinite(angle) ? std::optional(PlaceGate{kind, 0, angle}) : std::nullopt;
  }
  return std::nullopt;
}

unsigned commuting_axes(const PlaceGate& gate, int place) {
  constexpr unsigned x = 1;
  constexpr unsigned y = 2;
  constexpr unsigned z = 4;
  switch (gate.kind) {
    case PlaceKind::x:
    case PlaceKind::rx:
      return x;
    case PlaceKind::y:
    case PlaceKind::ry:
      return y;
    case PlaceKind::h:
      return 0;
    case PlaceKind::cnot:
      return place == gate.place ? z : x;
    default:
      return z;
  }
}

structures::Gate named_gate(const PlaceGate& gate, int first, int second) {
  const int wire = gate.place == 0 ? first : second;
  const int other = gate.place == 0 ? second : first;
  if (gate.kind == PlaceKind::cnot) return structures::Gate::CNOT(wire, other);
  if (gate.kind == PlaceKind::cz) return structures::Gate::CZ(wire, other);
  const std::string name(one_wire_names[index_of(gate.kind)].name);
  if (!has_angle(gate.kind)) return structures::Gate(name, {wire});
  return structures::Gate(name, {wire}, {structures::Parameter(gate.angle)},
                          gate.kind == PlaceKind::rz);
}

}  // namespace zelt::braidwerk::internal
