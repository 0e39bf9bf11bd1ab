#include "zeltbraidwerk/linear/internal/facing.h"

#include <numeric>
#include <utility>

namespace zelt::braidwerk::internal {
namespace {

bool is_transposed(Facing facing) {
  return facing == Facing::transpose || facing == Facing::inverse_transpose;
}

std::vector<int> inverse_of(const std::vector<int>& perm) {
  std::vector<int> inverse(perm.size());
  for (std::size_t r = 0; r < perm.size(); ++r) {
    inverse[static_cast<std::size_t>(perm[r])] = static_cast<int>(r);
  }
  return inverse;
}

}  // namespace

BitMatrix face(const BitMatrix& m, Facing facing) {
  BitMatrix result = is_transposed(facing) ? m.transposed() : m;
  const bool inverted = facing == Facing::inverse || facing == Facing::inverse_transpose;
  return inverted ? inverse(std::move(result)) : result;
}

BitMatrix Renaming::operator()(const BitMatrix& m) const {
  BitMatrix result(m.rows(), m.cols());
  for (int r = 0; r < m.rows(); ++r) {
    for (int c = 0; c < m.cols(); ++c) {
      if (m.get(rows[static_cast<std::size_t>(r)], cols[static_cast<std::size_t>(c)])) {
        result.set(r, c);
      }
    }
  }
  return result;
}

FreeCircuit::FreeCircuit(int n) : circuit(n), perm(static_cast<std::size_t>(n)) {
  std::iota(perm.begin(), perm.end(), 0);
}

void FreeCircuit::outputs_from_inputs() {
  perm = inverse_of(perm);
  move_gates(perm);
}

void FreeCircuit::face_back(Facing facing) {
  if (is_transposed(facing)) {
    for (auto& [control, target] : circuit.gates) std::swap(control, target);
  }
  if (facing == Facing::inverse || facing == Facing::transpose) {
    circuit.reverse();
    outputs_from_inputs();
  }
}

void FreeCircuit::rename_back(const Renaming& renaming) {
  move_gates(renaming.cols);
  std::vector<int> renamed(perm.size());
  for (std::size_t r = 0; r < perm.size(); ++r) {
    renamed[static_cast<std::size_t>(renaming.rows[r])] =
        renaming.cols[static_cast<std::size_t>(perm[r])];
  }
  perm = std::move(renamed);
}

void FreeCircuit::move_gates(const std::vector<int>& to) {
  for (auto& [control, target] : circuit.gates) {
    control = to[static_cast<std::size_t>(control)];
    target = to[static_cast<std::size_t>(target)];
  }
}

}  // namespace zelt::braidwerk::internal
