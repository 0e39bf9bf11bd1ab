#pragma once

#include <random>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/cnot_circuit.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"

/// \file
/// Matrices to test on and what the answers are checked with: a bit at a time, sharing nothing with
/// the library but its types.

namespace support {

using Rng = std::mt19937;

inline std::size_t at(int i) {
  return static_cast<std::size_t>(i);
}

/// matrix({"011", "100"}): one row per string.
inline BoolMatrix matrix(const std::vector<std::string_view>& rows) {
  BoolMatrix m;
  for (const std::string_view row : rows) {
    BoolRow& bits = m.emplace_back();
    for (const char digit : row) bits.push_back(digit == '1');
  }
  return m;
}

/// The way back, rows with a blank between them: "011 100".
inline std::string show(const BoolMatrix& m) {
  std::string text;
  for (const BoolRow& row : m) {
    if (&row != &m.front()) text += ' ';
    for (const bool bit : row) text += bit ? '1' : '0';
  }
  return text;
}

inline std::string show(const std::vector<std::tuple<int, int>>& gates) {
  std::string text;
  for (const auto& [control, target] : gates) {
    text += '(' + std::to_string(control) + ',' + std::to_string(target) + ')';
  }
  return text;
}

inline BoolMatrix identity(int n) {
  BoolMatrix m(at(n), BoolRow(at(n)));
  for (int r = 0; r < n; ++r) m[at(r)][at(r)] = true;
  return m;
}

inline void add_row(BoolMatrix& m, int from, int to) {
  for (std::size_t c = 0; c < m[at(to)].size(); ++c) {
    m[at(to)][c] = m[at(to)][c] != m[at(from)][c];
  }
}

inline BoolMatrix random_matrix(int rows, int cols, Rng& rng) {
  BoolMatrix m(at(rows), BoolRow(at(cols)));
  for (BoolRow& row : m) {
    for (std::size_t c = 0; c < row.size(); ++c) row[c] = rng() & 1;
  }
  return m;
}

inline BoolMatrix random_symmetric(int n, Rng& rng) {
  BoolMatrix m = random_matrix(n, n, rng);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < i; ++j) m[at(i)][at(j)] = m[at(j)][at(i)];
  }
  return m;
}

inline structures::CnotCircuit random_cnots(int n, int count, Rng& rng) {
  structures::CnotCircuit circuit(n);
  while (n > 1 && static_cast<int>(circuit.gates.size()) < count) {
    const int a = static_cast<int>(rng() % at(n));
    circuit.addGate(a, (a + 1 + static_cast<int>(rng() % at(n - 1))) % n);
  }
  return circuit;
}

/// A permutation between random triangles: every invertible matrix can come out.
inline BoolMatrix random_invertible(int n, Rng& rng) {
  BoolMatrix m = identity(n);
  for (int r = n - 1; r > 0; --r) std::swap(m[at(r)], m[rng() % at(r + 1)]);
  for (int r = 0; r < n; ++r) {
    for (int s = r + 1; s < n; ++s) {
      if (rng() & 1) add_row(m, s, r);
    }
  }
  for (int r = n - 1; r > 0; --r) {
    for (int s = 0; s < r; ++s) {
      if (rng() & 1) add_row(m, s, r);
    }
  }
  return m;
}

/// A square matrix in words.
inline zelt::braidwerk::internal::BitMatrix packed(const BoolMatrix& m) {
  const auto n = static_cast<int>(m.size());
  return zelt::braidwerk::internal::BitMatrix::pack(m, n, n);
}

inline BoolMatrix multiply(const BoolMatrix& a, const BoolMatrix& b) {
  const std::size_t cols = b.empty() ? 0 : b[0].size();
  BoolMatrix result(a.size(), BoolRow(cols));
  for (std::size_t r = 0; r < a.size(); ++r) {
    for (std::size_t c = 0; c < cols; ++c) {
      bool sum = false;
      for (std::size_t k = 0; k < b.size(); ++k) sum ^= a[r][k] && b[k][c];
      result[r][c] = sum;
    }
  }
  return result;
}

/// What stands on the wires when m stood there before the circuit: Simulate() times m.
inline BoolMatrix replayed(const structures::CnotCircuit& circuit, BoolMatrix m) {
  for (const auto& [control, target] : circuit.gates) add_row(m, control, target);
  return m;
}

/// The operator of the circuit.
inline BoolMatrix operator_of(const structures::CnotCircuit& circuit) {
  return replayed(circuit, identity(circuit.nbqbits));
}

/// Whether the circuit, applied to m, gives the identity: it implements the inverse of m.
inline bool reduces(const structures::CnotCircuit& circuit, const BoolMatrix& m) {
  return circuit.nbqbits == static_cast<int>(m.size()) &&
         replayed(circuit, m) == identity(circuit.nbqbits);
}

/// Whether row perm[r] of the circuit's operator is row r of m, and perm a permutation.
inline bool implements_up_to(const structures::CnotCircuit& circuit, const std::vector<int>& perm,
                             const BoolMatrix& m) {
  if (perm.size() != m.size() || circuit.nbqbits != static_cast<int>(m.size())) return false;
  const BoolMatrix result = operator_of(circuit);
  std::vector<bool> seen(m.size());
  for (std::size_t r = 0; r < m.size(); ++r) {
    if (perm[r] < 0 || at(perm[r]) >= m.size() || seen[at(perm[r])]) return false;
    seen[at(perm[r])] = true;
    if (result[at(perm[r])] != m[r]) return false;
  }
  return true;
}

/// Whether m times the circuit's operator is the permutation with its ones at (r, perm[r]).
inline bool inverts_up_to(const structures::CnotCircuit& circuit, const std::vector<int>& perm,
                          const BoolMatrix& m) {
  BoolMatrix expected(m.size(), BoolRow(m.size()));
  for (std::size_t r = 0; r < m.size(); ++r) expected[r][at(perm[r])] = true;
  return circuit.nbqbits == static_cast<int>(m.size()) &&
         multiply(m, operator_of(circuit)) == expected;
}

}  // namespace support
