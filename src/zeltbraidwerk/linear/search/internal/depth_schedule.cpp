#include "zeltbraidwerk/linear/search/internal/depth_schedule.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {

Scheduler::Scheduler(int wires)
    : width_(static_cast<std::size_t>(wires / 2)),
      wires_(static_cast<std::size_t>(wires)),
      used_(static_cast<std::size_t>(wires)) {}

void Scheduler::start(Layers& layers) {
  std::fill(wires_.begin(), wires_.end(), Wire{0, 0, 0});
  std::fill(used_.begin(), used_.end(), Word{0});
  std::fill(layers.sizes.begin(), layers.sizes.end(), 0U);
  layers.depth = 0;
}

void Scheduler::make_room(unsigned layer, Layers& layers) {
  const std::size_t old = words_;
  while (layer >= words_ * word_bits) words_ *= 2;
  if (words_ > old) {
    std::vector<Word> wider(wires_.size() * words_);
    for (std::size_t k = 0; k < used_.size(); ++k) wider[k / old * words_ + k % old] = used_[k];
    used_ = std::move(wider);
  }
  layers.sizes.resize(words_ * word_bits);
  layers.gates.resize(layers.sizes.size() * width_);
}

inline unsigned Scheduler::place(Gate gate, Layers& layers) {
  const unsigned on_a = gate.a >> 2;
  const unsigned on_b = gate.b >> 2;
  Wire& a = wires_[on_a];
  Wire& b = wires_[on_b];
  a.open = a.label == (gate.a & 3U) ? a.open : a.end;
  b.open = b.label == (gate.b & 3U) ? b.open : b.end;
  a.label = gate.a & 3U;
  b.label = gate.b & 3U;
  unsigned layer = std::max(a.open, b.open);
  const Word* const used_a = used_.data() + on_a * words_;
  const Word* const used_b = used_.data() + on_b * words_;
  Word closed = (Word{1} << (layer % word_bits)) - 1;
  for (std::size_t w = layer / word_bits;; ++w, closed = 0) {
    layer = static_cast<unsigned>(w) * word_bits;
    if (w >= words_) break;
    const Word open = ~(used_a[w] | used_b[w] | closed);
    if (open == 0) continue;
    layer += static_cast<unsigned>(std::countr_zero(open));
    break;
  }
  if (layer >= layers.sizes.size()) [[unlikely]]
    make_room(layer, layers);
  const Word bit = Word{1} << (layer % word_bits);
  used_[on_a * words_ + layer / word_bits] |= bit;
  used_[on_b * words_ + layer / word_bits] |= bit;
  a.end = std::max(a.end, layer + 1);
  b.end = std::max(b.end, layer + 1);
  layers.depth = std::max(layers.depth, layer + 1);
  layers.gates[layer * width_ + layers.sizes[layer]++] = gate;
  return layer;
}

int Scheduler::tighten(std::vector<Gate>& gates) {
  start(forward_);
  for (const Gate& gate : gates) place(gate, forward_);
  spans_.assign(forward_.depth, 0);
  start(backward_);
  for (unsigned early = forward_.depth; early-- > 0;) {
    const Gate* const from = forward_.gates.data() + early * width_;
    for (unsigned k = 0; k < forward_.sizes[early]; ++k) {
      ++spans_[early + place(from[k], backward_)];
    }
  }
  bound_ = 0;
  for (unsigned span = backward_.depth; span <= forward_.depth; ++span) {
    if (span > 0) bound_ += spans_[span - 1];
  }
  auto out = gates.begin();
  for (unsigned late = backward_.depth; late-- > 0;) {
    const auto from = backward_.gates.begin() + static_cast<std::ptrdiff_t>(late * width_);
    out = std::copy_n(from, backward_.sizes[late], out);
  }
  return static_cast<int>(backward_.depth);
}

int Scheduler::settle(std::vector<Gate>& gates) {
  int depth = tighten(gates);
  for (int last = depth + 1; depth < last && !StopScope::is_over();) {
    last = depth;
    depth = tighten(gates);
  }
  return depth;
}

}  // namespace zelt::braidwerk::internal
