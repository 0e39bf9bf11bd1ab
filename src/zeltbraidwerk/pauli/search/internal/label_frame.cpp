#include "zeltbraidwerk/pauli/search/internal/label_frame.h"

#include "zeltbraidwerk/pauli/search/internal/rotation_list.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {
namespace {

std::uint64_t wire_hash(std::uint64_t x, std::uint64_t z) {
  return Rng::mixed(Rng::mixed(x) + Rng::mixed(z) + Rng::mixed(x ^ z));
}

}  // namespace

LabelFrame::LabelFrame(int qubits) : words_(words_for(qubits)) {
  strings_.resize(2 * static_cast<std::size_t>(qubits) * width());
  for (int q = 0; q < qubits; ++q) {
    for (const bool is_z : {false, true}) {
      string(2 * q + (is_z ? 1 : 0))[q / word_bits + (is_z ? words_ : 0)] |= Word{1}
                                                                             << (q % word_bits);
      keys_.push_back(RotationList::key_of_letter(q, is_z));
    }
  }
}

/// The labels on the wire of `changed` that anticommute with it become products with `by`.
void LabelFrame::multiply(End changed, End by) {
  const std::uint64_t by_key = key(by);
  for (const int bit : {label_x, label_z}) {
    if (label_of(changed) == bit) continue;
    const int k = 2 * wire_of(changed) + (bit == label_z ? 1 : 0);
    keys_[static_cast<std::size_t>(k)] ^= by_key;
    for (std::size_t w = 0; w < width(); ++w) {
      if ((label_of(by) & label_x) != 0) string(k)[w] ^= of_x(wire_of(by))[w];
      if ((label_of(by) & label_z) != 0) string(k)[w] ^= of_z(wire_of(by))[w];
    }
  }
}

void LabelFrame::play(const Gate& gate) {
  multiply(gate.a, gate.b);
  multiply(gate.b, gate.a);
}

bool LabelFrame::stands_for(End end, const Word* string) const {
  const Word* x = of_x(wire_of(end));
  const Word* z = of_z(wire_of(end));
  const Word with_x = (label_of(end) & label_x) != 0 ? ~Word{0} : 0;
  const Word with_z = (label_of(end) & label_z) != 0 ? ~Word{0} : 0;
  for (std::size_t w = 0; w < width(); ++w) {
    if (((x[w] & with_x) ^ (z[w] & with_z)) != string[w]) return false;
  }
  return true;
}

std::uint64_t LabelFrame::hash() const {
  std::uint64_t sum = 0;
  for (std::size_t k = 0; k < keys_.size(); k += 2) sum += wire_hash(keys_[k], keys_[k + 1]);
  return sum;
}

std::uint64_t LabelFrame::hash_after(const Gate& gate) const {
  std::uint64_t sum = hash();
  const auto change = [&](End changed, End by) {
    const std::uint64_t x = key(end_of(wire_of(changed), label_x));
    const std::uint64_t z = key(end_of(wire_of(changed), label_z));
    const std::uint64_t added = key(by);
    sum -= wire_hash(x, z);
    sum += wire_hash(label_of(changed) == label_x ? x : x ^ added,
                     label_of(changed) == label_z ? z : z ^ added);
  };
  change(gate.a, gate.b);
  change(gate.b, gate.a);
  return sum;
}

PauliFrame LabelFrame::preimages() const {
  const int n = qubits();
  PauliFrame strings(n, 2 * n);
  const auto bit = [](const Word* plane, int q) {
    return ((plane[q / word_bits] >> (q % word_bits)) & 1) != 0;
  };
  for (int q = 0; q < n; ++q) {
    for (int p = 0; p < n; ++p) {
      strings.set_letter(q, p, letter_of(bit(of_x(q), p), bit(of_x(q) + words_, p)));
      strings.set_letter(n + q, p, letter_of(bit(of_z(q), p), bit(of_z(q) + words_, p)));
    }
  }
  return strings;
}

}  // namespace zelt::braidwerk::internal
