#include "zeltbraidwerk/foundations/internal/preimages.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace zelt::braidwerk::internal {
namespace {

/// The ones of a & b, modulo 2.
unsigned odd_overlap(const Word* a, const Word* b, int words) {
  Word sum = 0;
  for (int w = 0; w < words; ++w) sum ^= a[w] & b[w];
  return static_cast<unsigned>(std::popcount(sum)) & 1;
}

unsigned overlap(const Word* a, const Word* b, int words) {
  int sum = 0;
  for (int w = 0; w < words; ++w) sum += std::popcount(a[w] & b[w]);
  return static_cast<unsigned>(sum);
}

}  // namespace

Preimages::Preimages(int qubits) : words_(words_for(qubits)), scratch_(width()) {
  strings_.resize(2 * static_cast<std::size_t>(qubits) * width());
  powers_.resize(2 * static_cast<std::size_t>(qubits));
  for (int q = 0; q < qubits; ++q) {
    row(2 * q)[q / word_bits] |= Word{1} << (q % word_bits);
    row(2 * q + 1)[words_ + q / word_bits] |= Word{1} << (q % word_bits);
  }
}

void Preimages::multiply(int k, const Word* by, unsigned by_power) {
  Word* own = row(k);
  // Z^z passes the X^x of the other one.
  power(k) = (power(k) + by_power + 2 * odd_overlap(own + words_, by, words_)) & 3;
  for (std::size_t w = 0; w < width(); ++w) own[w] ^= by[w];
}

void Preimages::cnot(int control, int target) {
  multiply(2 * control, row(2 * target), power(2 * target));
  multiply(2 * target + 1, row(2 * control + 1), power(2 * control + 1));
}

void Preimages::cz(int a, int b) {
  multiply(2 * a, row(2 * b + 1), power(2 * b + 1));
  multiply(2 * b, row(2 * a + 1), power(2 * a + 1));
}

void Preimages::h(int q) {
  std::swap_ranges(row(2 * q), row(2 * q) + width(), row(2 * q + 1));
  std::swap(power(2 * q), power(2 * q + 1));
}

void Preimages::turn(int letter, int q, int quarters) {
  // P that anticommutes with A becomes -i P A by each quarter.
  for (int k = 0; k < (quarters & 3); ++k) {
    switch (letter) {
      case 1:
        multiply(2 * q + 1, row(2 * q), power(2 * q) + 3);
        break;
      case 3:
        multiply(2 * q, row(2 * q + 1), power(2 * q + 1) + 3);
        break;
      case 2:  // X becomes Z, and Z becomes -X
        h(q);
        power(2 * q + 1) = (power(2 * q + 1) + 2) & 3;
        break;
      default:
        break;
    }
  }
}

bool Preimages::read(int letter, int q, Word* string) const {
  std::fill(string, string + width(), 0);
  unsigned sum = 0;
  if (letter != 3) {
    std::copy_n(row(2 * q), width(), string);
    sum = power(2 * q);
  }
  if (letter != 1) {
    const Word* z = row(2 * q + 1);
    sum += power(2 * q + 1) + 2 * odd_overlap(string + words_, z, words_);
    for (std::size_t w = 0; w < width(); ++w) string[w] ^= z[w];
  }
  if (letter == 2) ++sum;  // Y = i X Z
  return ((sum - overlap(string, string + words_, words_)) & 3) == 2;
}

bool Preimages::is_negative(int letter, int q) const {
  return read(letter, q, scratch_.data());
}

}  // namespace zelt::braidwerk::internal
