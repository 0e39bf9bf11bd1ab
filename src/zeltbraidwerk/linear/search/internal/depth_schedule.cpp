#include "zeltbraidwerk/linear/search/internal/depth_schedule.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace zelt::braidwerk::internal {

Scheduler::Scheduler(int wires)
    : room_(wires / 2),
      states_(static_cast<std::size_t>(wires)),
      used_(static_cast<std::size_t>(wires)) {}

void Scheduler::start(Layers& layers) {
  std::fill(states_.begin(), states_.end(), WireState{});
  std::fill(used_.begin(), used_.end(), Word{0});
  layers.sizes.clear();
}

void Scheduler::widen() {
  std::vector<Word> wider(used_.size() * 2);
  const auto old = static_cast<std::size_t>(words_);
  for (std::size_t k = 0; k < used_.size(); ++k) wider[k / old * 2 * old + k % old] = used_[k];
  used_ = std::move(wider);
  words_ *= 2;
}

inline int Scheduler::first_open(const Word* a, const Word* b, int layer) {
  int w = layer / word_bits;
  Word closed = low_bits(layer % word_bits);
  for (; w < words_; ++w, closed = 0) {
    const Word open = ~(a[w] | b[w] | closed);
    if (open != 0) return w * word_bits + std::countr_zero(open);
  }
  return std::max(layer, w * word_bits);
}

inline int Scheduler::place(const Gate& gate, Layers& layers) {
  WireState& a = states_[static_cast<std::size_t>(wire_of(gate.a))];
  WireState& b = states_[static_cast<std::size_t>(wire_of(gate.b))];
  a.open = a.label == label_of(gate.a) ? a.open : a.end;
  b.open = b.label == label_of(gate.b) ? b.open : b.end;
  a.label = label_of(gate.a);
  b.label = label_of(gate.b);
  const auto row = [this](End end) { return used_.data() + wire_of(end) * words_; };
  const int layer = first_open(row(gate.a), row(gate.b), std::max(a.open, b.open));
  while (layer >= words_ * word_bits) widen();
  const Word bit = Word{1} << (layer % word_bits);
  row(gate.a)[layer / word_bits] |= bit;
  row(gate.b)[layer / word_bits] |= bit;
  a.end = std::max(a.end, layer + 1);
  b.end = std::max(b.end, layer + 1);
  if (layer >= layers.depth()) {
    layers.sizes.resize(static_cast<std::size_t>(layer) + 1);
    const auto needed = layers.sizes.size() * static_cast<std::size_t>(room_);
    if (layers.gates.size() < needed) layers.gates.resize(2 * needed);
  }
  layers.gates[static_cast<std::size_t>(layer * room_ +
                                        layers.sizes[static_cast<std::size_t>(layer)]++)] = gate;
  return layer;
}

int Scheduler::tighten(std::vector<Gate>& gates) {
  start(forward_);
  for (const Gate& gate : gates) place(gate, forward_);
  const int before = forward_.depth();
  spans_.assign(static_cast<std::size_t>(before) + 1, 0);
  start(backward_);
  for (int early = before; early-- > 0;) {
    const Gate* from = forward_.gates.data() + early * room_;
    for (int k = 0; k < forward_.sizes[static_cast<std::size_t>(early)]; ++k) {
      ++spans_[static_cast<std::size_t>(early + place(from[k], backward_))];
    }
  }
  const int depth = backward_.depth();
  bound_ = 0;
  for (int span = std::max(depth - 1, 0); span < before; ++span) {
    bound_ += spans_[static_cast<std::size_t>(span)];
  }
  auto out = gates.begin();
  for (int late = depth; late-- > 0;) {
    out = std::copy_n(backward_.gates.begin() + late * room_,
                      backward_.sizes[static_cast<std::size_t>(late)], out);
  }
  return depth;
}

int Scheduler::settle(std::vector<Gate>& gates) {
  int depth = tighten(gates);
  for (int last = depth + 1; depth < last;) {
    last = depth;
    depth = tighten(gates);
  }
  return depth;
}

}  // namespace zelt::braidwerk::internal
