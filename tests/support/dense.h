#pragma once

#include <cmath>
#include <complex>
#include <string>
#include <vector>

#include "support/state_vector.h"
#include "zeltbraidwerk/foundations/gate.h"

/// \file
/// Unitaries of a few qubits, written out: the last word on directions and signs.

namespace support {

/// A square complex matrix.
struct Dense {
  using Entry = std::complex<double>;

  std::size_t size;
  std::vector<Entry> entries;  // row-major

  explicit Dense(std::size_t n) : size(n), entries(n * n) {}
  Dense(std::size_t n, std::vector<Entry> values) : size(n), entries(std::move(values)) {}

  static Dense identity(std::size_t n) {
    Dense m(n);
    for (std::size_t k = 0; k < n; ++k) m(k, k) = 1;
    return m;
  }
  Entry& operator()(std::size_t r, std::size_t c) { return entries[r * size + c]; }
  const Entry& operator()(std::size_t r, std::size_t c) const { return entries[r * size + c]; }

  Dense operator*(const Dense& other) const {
    Dense m(size);
    for (std::size_t r = 0; r < size; ++r) {
      for (std::size_t k = 0; k < size; ++k) {
        for (std::size_t c = 0; c < size; ++c) m(r, c) += (*this)(r, k) * other(k, c);
      }
    }
    return m;
  }
  Dense operator*(Entry factor) const {
    Dense m = *this;
    for (Entry& entry : m.entries) entry *= factor;
    return m;
  }
  Dense operator+(const Dense& other) const {
    Dense m = *this;
    for (std::size_t k = 0; k < entries.size(); ++k) m.entries[k] += other.entries[k];
    return m;
  }
  Dense dagger() const {
    Dense m(size);
    for (std::size_t r = 0; r < size; ++r) {
      for (std::size_t c = 0; c < size; ++c) m(c, r) = std::conj((*this)(r, c));
    }
    return m;
  }
  Dense kron(const Dense& other) const {
    Dense m(size * other.size);
    for (std::size_t r = 0; r < m.size; ++r) {
      for (std::size_t c = 0; c < m.size; ++c) {
        m(r, c) = (*this)(r / other.size, c / other.size) * other(r % other.size, c % other.size);
      }
    }
    return m;
  }
  /// By a number.
  bool is_multiple_of(const Dense& other) const {
    const Dense product = other.dagger() * *this;
    return product.near(identity(size) * product(0, 0));
  }
  bool near(const Dense& other) const {
    for (std::size_t k = 0; k < entries.size(); ++k) {
      if (std::abs(entries[k] - other.entries[k]) > 1e-9) return false;
    }
    return size == other.size;
  }
};

/// The Pauli operator of a string, the letter at place q for qubit q.
inline Dense pauli(const std::string& letters) {
  constexpr Dense::Entry i{0, 1};
  Dense m = Dense::identity(1);
  for (const char letter : letters) {
    m = m.kron(letter == 'X'   ? Dense(2, {0, 1, 1, 0})
               : letter == 'Y' ? Dense(2, {0, -i, i, 0})
               : letter == 'Z' ? Dense(2, {1, 0, 0, -1})
                               : Dense::identity(2));
  }
  return m;
}

inline Dense rotation(const std::string& letters, double theta) {
  const Dense p = pauli(letters);
  return Dense::identity(p.size) * std::cos(theta / 2) + p * Dense::Entry(0, -std::sin(theta / 2));
}

/// A gate on one qubit by an angle.
inline structures::Gate turn(const std::string& name, int q, const structures::Parameter& angle) {
  return {name, {q}, {angle}, false};
}

/// Of a circuit in time order: column k is what becomes of basis state k.
inline Dense unitary(const std::vector<structures::Gate>& gates, int n) {
  Dense m(std::size_t{1} << n);
  for (std::size_t k = 0; k < m.size; ++k) {
    State state(m.size);
    state[k] = 1;
    state = after(gates, n, std::move(state));
    for (std::size_t r = 0; r < m.size; ++r) m(r, k) = state[r];
  }
  return m;
}

inline Dense unitary(const structures::Gate& gate, int n) {
  return unitary(std::vector{gate}, n);
}

}  // namespace support
