#include "zeltbraidwerk/circuit/two_wire/internal/one_wire.h"

#include <cmath>
#include <complex>
#include <numbers>

namespace zelt::braidwerk::internal {

namespace {

constexpr int axes = 3;
constexpr double quarter_turn = std::numbers::pi / 2;

PlaceKind kind_about(int axis) {
  return static_cast<PlaceKind>(static_cast<int>(PlaceKind::rx) + axis);
}

/// For matrices that are signed permutations but for noise.
AxisImages axis_images(const Eigen::Matrix3d& matrix) {
  AxisImages images{};
  for (int axis = 0; axis < axes; ++axis) {
    int row = 0;
    matrix.col(axis).cwiseAbs().maxCoeff(&row);
    images[static_cast<std::size_t>(axis)] = 2 * row + (matrix(row, axis) < 0 ? 1 : 0);
  }
  return images;
}

class FormBuilder {
 public:
  explicit FormBuilder(int place) : place_(static_cast<std::uint8_t>(place)) {}

  void rotate(int axis, double angle) {
    const double wrapped = std::remainder(angle, 2 * std::numbers::pi);
    put({kind_about(axis), place_, wrapped});
    ++form_.rotations;
  }
  void add(const Clifford& clifford) {
    for (int k = 0; k < clifford.size; ++k) {
      PlaceGate gate = clifford.gates[static_cast<std::size_t>(k)];
      gate.place = place_;
      put(gate);
    }
  }
  const OneWireForm& form() const { return form_; }

 private:
  void put(const PlaceGate& gate) { form_.gates[static_cast<std::size_t>(form_.size++)] = gate; }

  std::uint8_t place_;
  OneWireForm form_;
};

/// The zeros of a rotation matrix.
struct Zeros {
  explicit Zeros(const Eigen::Matrix3d& matrix) : at(matrix.array().abs() <= zero_entry) {}
  /// The row of the +-1 in a column, or -1.
  int unit_row(int axis) const {
    for (int row = 0; row < axes; ++row) {
      if (at((row + 1) % axes, axis) && at((row + 2) % axes, axis)) return row;
    }
    return -1;
  }
  Eigen::Array<bool, axes, axes> at;
};

/// The first of the Clifford operators that send `axis` to the given signed axis.
const Clifford& sending(int axis, int image) {
  for (const Clifford& clifford : cliffords()) {
    if (clifford.images[static_cast<std::size_t>(axis)] == image) return clifford;
  }
  return cliffords().front();
}

/// turn = C R_axis(angle), for a turn that sends the axis to the given signed axis.
OneWireForm one_rotation(const Quaternion& turn, int axis, int image, int place) {
  FormBuilder out(place);
  const Clifford& clifford = sending(axis, image);
  const Quaternion rest = clifford.turn.conjugate() * turn;
  out.rotate(axis, 2 * std::atan2(rest.vec()[axis], rest.w()));
  out.add(clifford);
  return out.form();
}

/// For turn = R_outer(last) R_inner(middle) R_outer(first), up to its sign:
struct EulerPair {
  std::complex<double> cosine;  ///< cos(middle / 2) exp(i (last + first) / 2)
  std::complex<double> sine;    ///< sin(middle / 2) exp(i (last - first) / 2)
};

EulerPair euler_pair(const Quaternion& turn, int outer, int inner) {
  const int third = axes - outer - inner;
  const double sign = (inner - outer + axes) % axes == 1 ? 1 : -1;
  return {{turn.w(), turn.vec()[outer]}, {turn.vec()[inner], sign * turn.vec()[third]}};
}

/// For a turn whose matrix has a 0 at (row, column): a rotation about the column's axis, then one
/// about the row's. Where these are the same axis, a Clifford gate comes in front.
OneWireForm two_rotations(const Quaternion& turn, int row, int column, int place) {
  FormBuilder out(place);
  Quaternion rest = turn;
  int inner = column;
  if (row == column) {
    inner = row == 0 ? 2 : 0;
    const Clifford& clifford = sending(row, 2 * inner);
    out.add(clifford);
    rest = turn * clifford.turn.conjugate();
  }
  // Both numbers of the pair lie on one line through 0. Its direction is that of the larger one, as
  // the direction of a small one is noise.
  const EulerPair pair = euler_pair(rest, row, inner);
  const bool small_sine = std::abs(pair.sine) < std::abs(pair.cosine);
  const double half_last = std::arg(small_sine ? pair.cosine : pair.sine);
  const std::complex<double> back = std::polar(1.0, -half_last);
  out.rotate(inner, 2 * std::atan2((pair.sine * back).real(), (pair.cosine * back).real()));
  out.rotate(row, 2 * half_last);
  return out.form();
}

}  // namespace

const std::vector<Clifford>& cliffords() {
  static const std::vector<Clifford> all = [] {
    // Of operators with as many gates those with named gates come first.
    const std::vector<PlaceGate> single{{PlaceKind::x},
                                        {PlaceKind::y},
                                        {PlaceKind::z},
                                        {PlaceKind::h},
                                        {PlaceKind::s},
                                        {PlaceKind::s_dagger},
                                        {PlaceKind::rx, 0, quarter_turn},
                                        {PlaceKind::rx, 0, -quarter_turn},
                                        {PlaceKind::ry, 0, quarter_turn},
                                        {PlaceKind::ry, 0, -quarter_turn}};
    std::vector<Clifford> found(1);
    found[0].images = axis_images(Eigen::Matrix3d::Identity());
    for (std::size_t k = 0; k < found.size(); ++k) {
      for (const PlaceGate& gate : single) {
        Clifford next = found[k];
        if (next.size == 2) break;
        next.gates[static_cast<std::size_t>(next.size++)] = gate;
        next.turn = quaternion_of(gate) * next.turn;
        next.images = axis_images(next.turn.toRotationMatrix());
        bool known = false;
        for (const Clifford& other : found) known = known || other.images == next.images;
        if (!known) found.push_back(next);
      }
    }
    return found;
  }();
  return all;
}

EulerAngles euler_angles(const Quaternion& turn, int outer, int inner) {
  const EulerPair pair = euler_pair(turn, outer, inner);
  const double sum = std::arg(pair.cosine);
  const double difference = std::arg(pair.sine);
  return {sum + difference, 2 * std::atan2(std::abs(pair.sine), std::abs(pair.cosine)),
          sum - difference};
}

OneWireForm one_wire_form(const Quaternion& turn, int place) {
  const Eigen::Matrix3d matrix = turn.toRotationMatrix();
  const Zeros zeros(matrix);
  const AxisImages images = axis_images(matrix);
  std::array<int, axes> unit_rows{};
  int units = 0;
  for (int axis = 0; axis < axes; ++axis) {
    unit_rows[static_cast<std::size_t>(axis)] = zeros.unit_row(axis);
    units += unit_rows[static_cast<std::size_t>(axis)] >= 0;
  }
  if (units == axes) {
    FormBuilder out(place);
    for (const Clifford& clifford : cliffords()) {
      if (clifford.images == images) out.add(clifford);
    }
    return out.form();
  }
  for (int axis = axes - 1; axis >= 0; --axis) {
    if (unit_rows[static_cast<std::size_t>(axis)] >= 0) {
      return one_rotation(turn, axis, images[static_cast<std::size_t>(axis)], place);
    }
  }
  for (const int apart : {1, 2, 0}) {
    for (int row = 0; row < axes; ++row) {
      const int column = (row + apart) % axes;
      if (zeros.at(row, column)) return two_rotations(turn, row, column, place);
    }
  }
  FormBuilder out(place);
  const EulerAngles angles = euler_angles(turn, 2, 1);
  out.rotate(2, angles.first);
  out.rotate(1, angles.middle);
  out.rotate(2, angles.last);
  return out.form();
}

}  // namespace zelt::braidwerk::internal
