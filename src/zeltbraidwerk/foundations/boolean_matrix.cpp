#include "zeltbraidwerk/foundations/boolean_matrix.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iostream>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"

using namespace zelt::braidwerk::internal;

namespace {

std::size_t at(int i) {
  return static_cast<std::size_t>(i);
}

template <typename T>
T max_of_block(int n, const std::vector<std::vector<T>>& m) {
  if (m.empty() || m[0].empty()) return T{};
  T largest = m[0][0];
  for (int r = 0; r < n; ++r) {
    for (int c = 0; c < n; ++c) largest = std::max(largest, m[at(r)][at(c)]);
  }
  return largest;
}

std::uint32_t power(std::uint32_t base, int exponent) {
  if (exponent <= 0) return 1;
  const std::uint32_t root = power(base, exponent / 2);
  return root * root * (exponent % 2 != 0 ? base : 1);
}

}  // namespace

void RowOperation(BoolMatrix& m, int i, int j, int n) {
  add_bits(m[at(i)], 0, m[at(j)], 0, n);
}

void ColumnOperation(BoolMatrix& m, int i, int j, int n) {
  for (int r = 0; r < n; ++r) {
    BoolRow& row = m[at(r)];
    row[at(j)] = row[at(j)] != row[at(i)];
  }
}

void RowOperation_upper(BoolMatrix& m, int i, int j, int n) {
  if (i < n) add_bits(m[at(i)], at(i), m[at(j)], at(i), n - i);
}

int SavingRowOperation(const BoolMatrix& m, int i, int j, int n) {
  int saving = 0;
  each_word(n, [&](std::size_t first, int count) {
    const Word target = read_bits(m[at(j)], first, count);
    saving += std::popcount(target) - std::popcount(target ^ read_bits(m[at(i)], first, count));
  });
  return saving;
}

int SavingColumnOperation(const BoolMatrix& m, int i, int j, int n) {
  int saving = 0;
  for (int r = 0; r < n; ++r) {
    if (m[at(r)][at(i)]) saving += m[at(r)][at(j)] ? 1 : -1;
  }
  return saving;
}

BoolMatrix boolean_matrix_product(int rows, int cols, int inner, const BoolMatrix& a,
                                  const BoolMatrix& b) {
  return product(BitMatrix::pack(a, rows, inner), BitMatrix::pack(b, inner, cols)).unpack();
}

BoolMatrix boolean_matrix_inverse(int n, BoolMatrix m) {
  return inverse(BitMatrix::pack(m, n, n)).unpack();
}

int boolean_matrix_det(BoolMatrix m, int n) {
  return is_invertible(BitMatrix::pack(m, n, n)) ? 1 : 0;
}

BoolMatrix LU(BoolMatrix m, int n, std::vector<int>& rows, std::vector<int>& cols) {
  BitMatrix packed = BitMatrix::pack(m, n, n);
  lu_factorise(packed, rows, cols);
  packed.unpack_into(m);
  return m;
}

int count_bits(int n, const BoolMatrix& m) {
  int total = 0;
  for (int r = 0; r < n; ++r) {
    each_word(n, [&](std::size_t first, int count) {
      total += std::popcount(read_bits(m[at(r)], first, count));
    });
  }
  return total;
}

int findmax(int n, const std::vector<std::vector<int>>& m) {
  return max_of_block(n, m);
}

int findmax_double(int n, const std::vector<std::vector<double>>& m) {
  return static_cast<int>(max_of_block(n, m));
}

int myPow(int base, int exponent) {
  return static_cast<int>(power(static_cast<std::uint32_t>(base), exponent));
}

void pretty_print(int n, const BoolMatrix& m) {
  for (int r = 0; r < n; ++r) {
    for (int c = 0; c < n; ++c) std::cout << (m[at(r)][at(c)] ? "1 " : "0 ");
    std::cout << std::endl;
  }
  std::cout << std::endl;
}
