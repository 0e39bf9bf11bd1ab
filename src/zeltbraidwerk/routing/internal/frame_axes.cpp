#include "zeltbraidwerk/routing/internal/frame_axes.h"

#include <algorithm>

namespace zelt::braidwerk::internal {

void FrameAxes::read(const std::vector<int>& /*rows*/) {
  supports_ = frame_.supports();
}

void FrameAxes::apply(const std::vector<BasisChange>& changes) {
  supports_ = BitMatrix();
  for (const auto& [q, is_y] : changes) {
    frame_.apply(is_y ? OneQubitGate::rx_plus : OneQubitGate::h, q);
  }
}

void FrameAxes::apply(std::span<const Cnot> cnots) {
  supports_ = BitMatrix();
  for (const Cnot& cnot : cnots) frame_.cnot(cnot.control, cnot.target);
}

void FrameAxes::apply(const std::vector<structures::Gate>& gates) {
  supports_ = BitMatrix();
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
