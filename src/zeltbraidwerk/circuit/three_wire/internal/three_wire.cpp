#include "zeltbraidwerk/circuit/three_wire/internal/three_wire.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <tuple>
#include <utility>

#include "zeltbraidwerk/circuit/three_wire/internal/diagonal.h"
#include "zeltbraidwerk/circuit/three_wire/internal/multiplexor.h"
#include "zeltbraidwerk/circuit/two_wire/internal/two_wire.h"
#include "zeltbraidwerk/circuit/two_wire/internal/two_wire_windows.h"

namespace zelt::braidwerk::internal {

namespace {

using Complex = std::complex<double>;
using Eigen::Matrix4cd;
using structures::Gate;
constexpr double zero_entry_of_block = 1e-12;

/// An operator of wires 1 and 2, after gates that commute with what is diagonal on these.
struct Stretch {
  std::vector<Gate> gates;
  Matrix4cd after;
};

/// Puts stretches together.
class Assembly {
 public:
  void add(const Matrix4cd& on_two) { stretches_.back().after = on_two * stretches_.back().after; }
  void add(const std::vector<Gate>& gates) {
    for (const Gate& gate : gates) add(gate);
  }
  void add(const Gate& gate) {
    if (!stretches_.back().after.isIdentity(0)) {
      stretches_.push_back({{}, Matrix4cd::Identity()});
    }
    stretches_.back().gates.push_back(gate);
  }

  std::optional<std::vector<Gate>> finish() {
    std::vector<Gate> gates;
    Eigen::Vector4cd left_over = Eigen::Vector4cd::Ones();
    for (Stretch& stretch : stretches_) {
      gates.insert(gates.end(), stretch.gates.begin(), stretch.gates.end());
      Matrix4cd on_two = stretch.after * left_over.asDiagonal();
      if (&stretch != &stretches_.back()) left_over = diagonal_split_off(on_two);
      const auto circuit = two_wire_circuit(on_two);
      if (!circuit) return std::nullopt;
      for (const PlaceGate& gate : circuit->gates) gates.push_back(named_gate(gate, 1, 2));
    }
    return gates;
  }

 private:
  std::vector<Stretch> stretches_{{{}, Matrix4cd::Identity()}};
};

void add_multiplexor(const Matrix4cd& zero, const Matrix4cd& one, Assembly& out) {
  const Demultiplexed form = demultiplexed(zero, one);
  out.add(form.right);
  out.add(multiplexed_rotation(form.angles).gates);
  out.add(form.left);
}

/// Z on wire 1 or 2.
Matrix4cd z_on(int wire) {
  return wire == 1 ? Eigen::Vector4cd(1, 1, -1, -1).asDiagonal()
                   : Eigen::Vector4cd(1, -1, 1, -1).asDiagonal();
}

/// A rotation without its outer CNOT, which a Hadamard gate on wire 0 makes a CZ; and that CZ,
/// where wire 0 is 1.
struct OpenRotation {
  explicit OpenRotation(const Eigen::Vector4d& angles) {
    MultiplexedRotation rotation = multiplexed_rotation(angles);
    gates = std::move(rotation.gates);
    if (rotation.last_control < 0) return;
    gates.pop_back();
    taken = z_on(rotation.last_control);
  }
  std::vector<Gate> gates;
  Matrix4cd taken = Matrix4cd::Identity();
};

/// Of blocks that are not 0.
void add_general(const Matrix8cd& unitary, Assembly& out) {
  // diag(a0, a1) H diag(1, b) H diag(1, c), with H on wire 0.
  const CosineSine form = cosine_sine(unitary);
  const auto& [left, angles, right] = form;
  const Eigen::Vector4cd turns = (angles.cast<Complex>() * Complex(0, -1)).array().exp();
  const Matrix4cd turned = turns.asDiagonal() * right[0];
  const Matrix4cd a0 = left[0] * turned;
  const Matrix4cd a1 = Complex(0, 1) * left[1] * turned;
  const Matrix4cd b = turned.adjoint() * turns.conjugate().asDiagonal() * right[0];
  const Matrix4cd c = Complex(0, -1) * right[0].adjoint() * right[1];
  const Demultiplexed first = demultiplexed(Matrix4cd::Identity(), c);
  const Demultiplexed last = demultiplexed(a0, a1);
  const OpenRotation begins(first.angles);
  const OpenRotation ends(last.angles);
  out.add(first.right);
  out.add(begins.gates);
  out.add(Gate("H", {0}));
  add_multiplexor(last.right * first.left, ends.taken * last.right * b * first.left * begins.taken,
                  out);
  out.add(Gate("H", {0}));
  out.add(std::vector<Gate>(ends.gates.rbegin(), ends.gates.rend()));
  out.add(last.left);
}

/// With wire 0 selecting.
std::optional<std::vector<Gate>> taken_apart(const Matrix8cd& unitary) {
  Assembly out;
  const Matrix4cd top = unitary.topLeftCorner<4, 4>();
  const Matrix4cd bottom = unitary.bottomLeftCorner<4, 4>();
  if (bottom.isZero(zero_entry_of_block)) {
    add_multiplexor(top, unitary.bottomRightCorner<4, 4>(), out);
  } else if (top.isZero(zero_entry_of_block)) {
    add_multiplexor(bottom, unitary.topRightCorner<4, 4>(), out);
    out.add(Gate("X", {0}));
  } else {
    add_general(unitary, out);
  }
  return out.finish();
}

/// The matrix with the wires in another order: wire order[w] is wire w afterwards.
Matrix8cd reordered(const Matrix8cd& unitary, const std::array<int, 3>& order) {
  std::array<Eigen::Index, 8> from{};
  for (std::size_t state = 0; state < from.size(); ++state) {
    for (std::size_t w = 0; w < order.size(); ++w) {
      if ((state >> (2 - w)) % 2 == 1) from[state] += 4 >> order[w];
    }
  }
  return unitary(from, from);
}

bool fewer(const GateCounts& one, const GateCounts& other) {
  return std::tie(one.two_wire, one.rotations, one.one_wire) <
         std::tie(other.two_wire, other.rotations, other.one_wire);
}

GateCounts counts_of(const std::vector<Gate>& gates) {
  GateCounts counts;
  for (const Gate& gate : gates) counts.add(place_gate(gate).value_or(PlaceGate{}));
  return counts;
}

std::optional<double> phase_to(const Matrix8cd& from, const Matrix8cd& to) {
  const double phase = std::arg((from.adjoint() * to).trace());
  if (!((from * std::polar(1.0, phase) - to).norm() <= most_error)) return std::nullopt;
  return phase;
}

}  // namespace

Matrix8cd operator_of(const std::vector<Gate>& gates) {
  Matrix8cd product = Matrix8cd::Identity();
  for (const Gate& gate : gates) {
    const int second = gate.qbits.size() > 1 ? gate.qbits[1] : 0;
    apply(place_gate(gate).value_or(PlaceGate{}), {4 >> gate.qbits[0], 4 >> second}, product);
  }
  return product;
}

std::optional<ThreeWireCircuit> three_wire_circuit(const Matrix8cd& unitary,
                                                   const GateCounts& known, bool keep_rotations) {
  constexpr std::array<std::array<int, 3>, 3> orders{{{0, 1, 2}, {1, 0, 2}, {2, 0, 1}}};
  std::optional<ThreeWireCircuit> best;
  GateCounts least;
  for (const std::array<int, 3>& order : orders) {
    auto gates = taken_apart(reordered(unitary, order));
    if (!gates) continue;
    for (Gate& gate : *gates) {
      for (int& wire : gate.qbits) wire = order[static_cast<std::size_t>(wire)];
    }
    ThreeWireCircuit made{two_wire_windows(*gates, {}).circuit};
    const GateCounts counts = counts_of(made.gates);
    if (counts.two_wire >= known.two_wire || (best && !fewer(counts, least)) ||
        (keep_rotations && counts.rotations > known.rotations)) {
      continue;
    }
    const auto phase = phase_to(operator_of(made.gates), unitary);
    if (!phase) continue;
    made.phase = *phase;
    least = counts;
    best = std::move(made);
  }
  return best;
}

}  // namespace zelt::braidwerk::internal
