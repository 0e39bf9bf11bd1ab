#include "zeltbraidwerk/routing/internal/rotation_rows.h"

#include <algorithm>
#include <bit>
#include <stdexcept>

#include "zeltbraidwerk/foundations/internal/linear_angle.h"

namespace zelt::braidwerk::internal {

RotationRows::RotationRows(int n) : qubits(std::max(n, 0)), half(words_for(qubits)) {}

RotationRows RotationRows::pack(const synthesis::RotationSequence& rotations, int qubits) {
  RotationRows rows(qubits);
  for (const auto& [letters, angle] : rotations) rows.append(letters, angle);
  return rows;
}

void RotationRows::append(const structures::Parameter& angle) {
  words.resize(words.size() + 2 * static_cast<std::size_t>(half));
  angles.push_back(angle);
}

void RotationRows::append(const std::string& letters, const structures::Parameter& angle) {
  if (letters.size() != static_cast<std::size_t>(qubits)) {
    throw std::out_of_range("Pauli strings of different length");
  }
  append(angle);
  for (int q = 0; q < qubits; ++q) {
    const char letter = letters[static_cast<std::size_t>(q)];
    set_letter(count() - 1, q, letter == 'X' || letter == 'Y', letter == 'Z' || letter == 'Y');
  }
}

void RotationRows::add_angle(int r, int s) {
  structures::Parameter& sum = angles[static_cast<std::size_t>(r)];
  const structures::Parameter& other = angles[static_cast<std::size_t>(s)];
  if (!linear_sums || !(sum.is_abstract || other.is_abstract)) {
    sum += other;
    return;
  }
  LinearAngle linear(sum);
  linear.add(LinearAngle(other), 1);
  sum = linear.parameter();
}

void RotationRows::keep(const std::vector<int>& rows) {
  int next = 0;
  for (const int r : rows) {
    if (r != next) {
      std::copy_n(row(r), 2 * half, row(next));
      angles[static_cast<std::size_t>(next)] = std::move(angles[static_cast<std::size_t>(r)]);
    }
    ++next;
  }
  words.resize(offset(next));
  angles.resize(static_cast<std::size_t>(next));
}

bool RotationRows::commute(int r, int s) const {
  const Word* a = row(r);
  const Word* b = row(s);
  Word differ = 0;
  for (int w = 0; w < half; ++w) differ ^= (a[w] & b[half + w]) ^ (a[half + w] & b[w]);
  return std::popcount(differ) % 2 == 0;
}

std::string RotationRows::letters(int r) const {
  std::string text(static_cast<std::size_t>(qubits), 'I');
  const auto bit = [&](int word, int q) {
    return ((row(r)[word + q / word_bits] >> (q % word_bits)) & 1) != 0;
  };
  for (int q = 0; q < qubits; ++q) {
    text[static_cast<std::size_t>(q)] = "IXYZ"[letter_of(bit(0, q), bit(half, q))];
  }
  return text;
}

PauliFrame RotationRows::frame() const {
  PauliFrame frame(qubits, count());
  for (int r = 0; r < count(); ++r) {
    const Word bit = Word{1} << (r % word_bits);
    for_each_bit(row(r), half, [&](int q) { frame.x(q)[r / word_bits] |= bit; });
    for_each_bit(row(r) + half, half, [&](int q) { frame.z(q)[r / word_bits] |= bit; });
  }
  return frame;
}

synthesis::RotationSequence RotationRows::unpack(int first, int last) const {
  synthesis::RotationSequence rotations;
  for (int r = first; r < last; ++r) {
    rotations.emplace_back(letters(r), angles[static_cast<std::size_t>(r)]);
  }
  return rotations;
}

}  // namespace zelt::braidwerk::internal
