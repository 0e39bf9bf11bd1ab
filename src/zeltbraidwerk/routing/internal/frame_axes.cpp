#include "zeltbraidwerk/routing/internal/frame_axes.h"

#include <algorithm>
#include <numeric>

namespace zelt::braidwerk::internal {

std::vector<int> FrameAxes::read(const std::vector<int>& rows) {
  std::vector<int> all(static_cast<std::size_t>(qubits()));
  std::iota(all.begin(), all.end(), 0);
  const BitMatrix digits = frame_.weight_planes(all);
  std::vector<int> weights;
  weights.reserve(rows.size());
  for (const int row : rows) {
    int weight = 0;
    for (int k = 0; k < digits.rows(); ++k) weight |= int{digits.get(k, row - base_)} << k;
    weights.push_back(weight);
  }
  return weights;
}

std::vector<int> FrameAxes::support(int row) const {
  std::vector<int> support;
  const int word = (row - base_) / word_bits;
  const Word bit = Word{1} << (row % word_bits);
  for (int q = 0; q < qubits(); ++q) {
    if (((frame_.x(q)[word] | frame_.z(q)[word]) & bit) != 0) support.push_back(q);
  }
  return support;
}

void FrameAxes::apply(const std::vector<BasisChange>& changes) {
  for (const auto& [q, is_y] : changes) {
    frame_.apply(is_y ? OneQubitGate::rx_plus : OneQubitGate::h, q);
  }
}

void FrameAxes::apply(std::span<const Cnot> cnots) {
  for (const Cnot& cnot : cnots) frame_.cnot(cnot.control, cnot.target);
}

void FrameAxes::apply(const std::vector<structures::Gate>& gates) {
  for (const structures::Gate& gate : gates) frame_.apply(gate);
}

FrameAxes FrameAxes::window(int first, int last) const {
  const int from = (first - base_) / word_bits;
  const int end = std::min(words_for(last - base_) * word_bits, frame_.rows());
  FrameAxes result(PauliFrame(qubits(), end - from * word_bits));
  result.base_ = base_ + from * word_bits;
  const auto copy = [&](const Word* source, Word* target) {
    std::copy_n(source + from, result.frame_.words(), target);
  };
  for (int q = 0; q < qubits(); ++q) {
    copy(frame_.x(q), result.frame_.x(q));
    copy(frame_.z(q), result.frame_.z(q));
  }
  copy(frame_.signs(), result.frame_.signs());
  return result;
}

}  // namespace zelt::braidwerk::internal
