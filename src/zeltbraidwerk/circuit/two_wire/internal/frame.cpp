#include "zeltbraidwerk/circuit/two_wire/internal/frame.h"

#include <cmath>
#include <limits>
#include <numbers>
#include <utility>
#include <vector>

#include "zeltbraidwerk/circuit/two_wire/internal/one_wire.h"

namespace zelt::braidwerk::internal {

namespace {

constexpr double pi = std::numbers::pi;
constexpr std::size_t shifts = 4;  // none, or by pi/2 of one axis, which XX, YY or ZZ makes up for
constexpr std::size_t paulis = 4;

Quaternion pauli(int index) {
  return index == 0 ? Quaternion::Identity() : rotation_about(index - 1, pi);
}

/// A Clifford operator V on one place and V Q, Q a Pauli operator, on the other send each of XX,
/// YY, ZZ to one of them, with a sign.
struct Frame {
  const Clifford* clifford = nullptr;
  int pauli = 0;
  int shift = 0;
};

const std::vector<Frame>& all_frames() {
  static const std::vector<Frame> all = [] {
    std::vector<Frame> frames;
    for (const Clifford& clifford : cliffords()) {
      for (int shift = 0; shift < static_cast<int>(shifts); ++shift) {
        for (int by = 0; by < static_cast<int>(paulis); ++by)
          frames.push_back({&clifford, by, shift});
      }
    }
    return frames;
  }();
  return all;
}

std::array<double, 3> coefficients(const std::array<double, 3>& c, const Frame& frame) {
  std::array<double, 3> sent{};
  for (int axis = 0; axis < 3; ++axis) {
    const bool negative = frame.pauli != 0 && frame.pauli - 1 != axis;
    const auto k = static_cast<std::size_t>(axis);
    sent[static_cast<std::size_t>(frame.clifford->images[k] / 2)] = negative ? -c[k] : c[k];
  }
  if (frame.shift > 0) {
    double& shifted = sent[static_cast<std::size_t>(frame.shift - 1)];
    shifted += shifted > 0 ? -pi / 2 : pi / 2;
  }
  return sent;
}

bool fits(const std::array<double, 3>& c, CoreKind kind) {
  const auto quarter = [](double coefficient) {
    return std::abs(coefficient - pi / 4) < zero_coefficient;
  };
  switch (kind) {
    case CoreKind::one:
      return quarter(c[0]) && c[1] == 0 && c[2] == 0;
    case CoreKind::two:
      return c[1] == 0;
    case CoreKind::iswap:
      return quarter(c[0]) && c[1] == 0 && quarter(c[2]);
    default:
      return true;
  }
}

/// The gates between the CNOTs.
int middle_gates(const std::array<double, 3>& c, CoreKind kind) {
  const auto turns = [](double angle) {
    return std::abs(std::remainder(angle, 2 * pi)) > zero_coefficient ? 1 : 0;
  };
  if (kind == CoreKind::two) return turns(2 * c[0]) + turns(2 * c[2]);
  if (kind != CoreKind::three) return 0;
  return turns(2 * c[0] - pi / 2) + turns(2 * c[1] - pi / 2) + turns(2 * c[2] - pi / 2);
}

WeylForm applied(const WeylForm& form, const Frame& frame) {
  WeylForm result;
  result.c = coefficients(form.c, frame);
  for (const std::size_t place : {0U, 1U}) {
    const Quaternion turn =
        place == 0 ? frame.clifford->turn : frame.clifford->turn * pauli(frame.pauli);
    result.before[place] = turn * form.before[place];
    result.after[place] = form.after[place] * turn.conjugate() * pauli(frame.shift);
  }
  return result;
}

/// The sizes of the outer gates on one place, by Clifford operator, Pauli operator and shift.
class PlaceSizes {
 public:
  PlaceSizes(const WeylForm& form, const CoreEnds& ends, std::size_t place)
      : form_(form),
        ends_(ends),
        place_(place),
        sizes_(cliffords().size() * paulis * shifts, unknown) {}

  int operator()(const Frame& frame) {
    const auto clifford = static_cast<std::size_t>(frame.clifford - cliffords().data());
    const int used_pauli = place_ == 0 ? 0 : frame.pauli;
    int& size = sizes_[(clifford * paulis + static_cast<std::size_t>(used_pauli)) * shifts +
                       static_cast<std::size_t>(frame.shift)];
    if (size == unknown) {
      const Quaternion turn = frame.clifford->turn * pauli(used_pauli);
      const Quaternion first = ends_.first[place_] * turn * form_.before[place_];
      const Quaternion last =
          form_.after[place_] * turn.conjugate() * pauli(frame.shift) * ends_.last[place_];
      size = one_wire_form(first, 0).size + one_wire_form(last, 0).size;
    }
    return size;
  }

 private:
  static constexpr int unknown = -1;
  const WeylForm& form_;
  const CoreEnds& ends_;
  std::size_t place_;
  std::vector<int> sizes_;
};

WeylForm mirror_image(WeylForm form) {
  std::swap(form.before[0], form.before[1]);
  std::swap(form.after[0], form.after[1]);
  return form;
}

}  // namespace

CoreKind core_kind(const std::array<double, 3>& c) {
  switch (cnots_needed(c)) {
    case 0:
      return CoreKind::none;
    case 1:
      return CoreKind::one;
    case 2:
      return c[1] == pi / 4 ? CoreKind::iswap : CoreKind::two;
    default:
      return CoreKind::three;
  }
}

CoreEnds core_ends(CoreKind kind) {
  constexpr int x = 0;
  constexpr int z = 2;
  const Quaternion h(0, std::sqrt(0.5), 0, std::sqrt(0.5));
  CoreEnds ends;
  if (kind == CoreKind::one) {
    ends.first[0] = h;
    ends.last = {h * rotation_about(z, -pi / 2), rotation_about(x, -pi / 2)};
  } else if (kind == CoreKind::iswap) {
    ends.first = {rotation_about(z, pi / 2), rotation_about(x, pi / 2)};
    ends.last = {rotation_about(z, pi / 2) * h, rotation_about(x, pi / 2) * h};
  } else if (kind == CoreKind::three) {
    ends.first[0] = rotation_about(z, pi / 2);
    ends.last[1] = rotation_about(z, -pi / 2);
  }
  return ends;
}

FramedForm framed(const WeylForm& form, CoreKind kind, int enough) {
  const CoreEnds ends = core_ends(kind);
  FramedForm best;
  int least = std::numeric_limits<int>::max();
  for (const bool mirrored : {false, true}) {
    const WeylForm seen = mirrored ? mirror_image(form) : form;
    std::array<PlaceSizes, 2> sizes{PlaceSizes(seen, ends, 0), PlaceSizes(seen, ends, 1)};
    for (const Frame& frame : all_frames()) {
      const auto c = coefficients(seen.c, frame);
      if (!fits(c, kind)) continue;
      const int size = middle_gates(c, kind) + sizes[0](frame) + sizes[1](frame);
      if (size >= least) continue;
      least = size;
      best = {applied(seen, frame), mirrored};
      if (size <= enough) return best;
    }
  }
  return best;
}

}  // namespace zelt::braidwerk::internal
