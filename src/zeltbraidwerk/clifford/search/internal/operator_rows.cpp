#include "zeltbraidwerk/clifford/search/internal/operator_rows.h"

#include <algorithm>
#include <bit>

#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {
namespace {

/// Of the three rows of a wire.
ZELTBRAIDWERK_CLONES
int count_letters(const Word* row, int words) {
  int letters = 0;
  for (int label = 1; label < 4; ++label, row += 2 * words) {
    for (int w = 0; w < words; ++w) letters += std::popcount(row[w] | row[words + w]);
  }
  return letters;
}

}  // namespace

OperatorRows::OperatorRows(const PauliFrame& images)
    : wires_(images.qubits()),
      words_(words_for(wires_)),
      rows_(12 * static_cast<std::size_t>(wires_) * static_cast<std::size_t>(words_)),
      weights_(2 * static_cast<std::size_t>(wires_)) {
  const BitMatrix x = images.x_planes().transposed();
  const BitMatrix z = images.z_planes().transposed();
  for (int q = 0; q < wires_; ++q) {
    for (const int label : {label_x, label_z}) {
      const int image = label == label_x ? q : wires_ + q;
      std::copy_n(x.row(image), words_, row(1, q, label));
      std::copy_n(z.row(image), words_, row(1, q, label) + words_);
    }
    sum_up(1, q);
    weigh(1, q);
  }
  mirror(1);
}

int OperatorRows::label_at(int side, int wire, int label, int at) const {
  const Word* r = row(side, wire, label) + at / word_bits;
  const auto bit = [&](Word word) { return static_cast<int>(word >> (at % word_bits) & 1); };
  return bit(r[0]) * label_x | bit(r[words_]) * label_z;
}

void OperatorRows::flip(int side, int wire, int label, int at, int by) {
  Word* r = row(side, wire, label) + at / word_bits;
  r[0] ^= static_cast<Word>(by & label_x ? 1 : 0) << (at % word_bits);
  r[words_] ^= static_cast<Word>(by & label_z ? 1 : 0) << (at % word_bits);
}

void OperatorRows::sum_up(int side, int wire) {
  for (int w = 0; w < 2 * words_; ++w) {
    row(side, wire, 3)[w] = row(side, wire, 1)[w] ^ row(side, wire, 2)[w];
  }
}

/// Label c on wire i of the other side has on wire q what anticommutes with the labels whose rows
/// on this side anticommute with it: the inverse without a solver.
void OperatorRows::mirror(int side) {
  // By the part of the rows of this side, and their label.
  for (const int part : {label_x, label_z}) {
    for (const int label : {label_x, label_z}) {
      BitMatrix rows(wires_, wires_);
      for (int q = 0; q < wires_; ++q) {
        std::copy_n(row(side, q, label) + (part == label_x ? 0 : words_), words_, rows.row(q));
      }
      const BitMatrix columns = rows.transposed();
      for (int i = 0; i < wires_; ++i) {
        std::copy_n(columns.row(i), words_,
                    row(1 - side, i, part ^ 3) + (label == label_x ? words_ : 0));
      }
    }
  }
  for (int i = 0; i < wires_; ++i) {
    sum_up(1 - side, i);
    weigh(1 - side, i);
  }
}

void OperatorRows::weigh(int side, int wire) {
  const int letters = count_letters(row(side, wire, 1), words_);
  std::int16_t& weight = weights_[static_cast<std::size_t>(side * wires_ + wire)];
  if (side == 0) total_ += letters - weight;
  weight = static_cast<std::int16_t>(letters);
}

void OperatorRows::multiply(int side, const Gate& gate) {
  const int i = wire_of(gate.a), j = wire_of(gate.b);
  const int a = label_of(gate.a), b = label_of(gate.b);
  // On the other side, what anticommutes with the gate is multiplied by it.
  for (int w = 0; w < words_; ++w) {
    const Word x = row(side, i, a)[w] ^ row(side, j, b)[w];
    const Word z = row(side, i, a)[words_ + w] ^ row(side, j, b)[words_ + w];
    for (Word rest = x | z; rest != 0; rest &= rest - 1) {
      const int bit = std::countr_zero(rest);
      const int q = w * word_bits + bit;
      const Word turned[4] = {0, z >> bit & 1, x >> bit & 1, (x ^ z) >> bit & 1};
      for (int label = 1; label < 4; ++label) {
        if (turned[label] == 0) continue;
        flip(1 - side, q, label, i, a);
        flip(1 - side, q, label, j, b);
      }
      weigh(1 - side, q);
    }
  }
  multiply_own(side, gate);
  weigh(side, i);
  weigh(side, j);
}

void OperatorRows::multiply(int side, std::span<const Gate> gates) {
  for (const Gate& gate : gates) multiply_own(side, gate);
  for (int i = 0; i < wires_; ++i) weigh(side, i);
  mirror(side);
}

void OperatorRows::multiply_own(int side, const Gate& gate) {
  const int i = wire_of(gate.a), j = wire_of(gate.b);
  const int a = label_of(gate.a), b = label_of(gate.b);
  for (int w = 0; w < 2 * words_; ++w) {
    const Word sum = row(side, i, a)[w] ^ row(side, j, b)[w];
    for (const int label : other_labels[a]) row(side, i, label)[w] ^= sum;
    for (const int label : other_labels[b]) row(side, j, label)[w] ^= sum;
  }
}

std::uint64_t OperatorRows::hash() const {
  std::uint64_t sum = 0;
  for (int i = 0; i < wires_; ++i) {
    std::uint64_t of_wire = 0;
    for (int label = 1; label < 4; ++label) {
      std::uint64_t of_row = 0;
      for (int w = 0; w < 2 * words_; ++w) {
        of_row = Rng::mixed(of_row + row(0, i, label)[w] + 0x9e3779b97f4a7c15U);
      }
      of_wire += of_row;
    }
    sum += Rng::mixed(of_wire);
  }
  return sum;
}

}  // namespace zelt::braidwerk::internal
