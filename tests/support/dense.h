#pragma once

#include <cmath>
#include <complex>
#include <numbers>
#include <string>
#include <vector>

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

inline Dense unitary(const structures::Gate& gate, int n) {
  const auto on = [n](std::string letters, const std::vector<int>& qubits) {
    std::string all(static_cast<std::size_t>(n), 'I');
    for (std::size_t k = 0; k < letters.size(); ++k) {
      all[static_cast<std::size_t>(qubits[k])] = letters[k];
    }
    return all;
  };
  const auto& q = gate.qbits;
  const Dense one = Dense::identity(std::size_t{1} << n);
  if (gate.name == "CNOT" || gate.name == "CZ" || gate.name == "CSIGN") {
    const std::string x = gate.name == "CNOT" ? "X" : "Z";
    return (one + pauli(on("Z", q)) + pauli(on("I" + x, q)) + pauli(on("Z" + x, q)) * -1.0) * 0.5;
  }
  if (gate.name == "H") return (pauli(on("X", q)) + pauli(on("Z", q))) * std::sqrt(0.5);
  if (gate.name == "S") return rotation(on("Z", q), std::numbers::pi / 2);
  if (gate.name == "D-S") return rotation(on("Z", q), -std::numbers::pi / 2);
  if (gate.name == "PH") return rotation(on("Z", q), gate.params.at(0).value);
  if (gate.name == "X" || gate.name == "Y" || gate.name == "Z") return pauli(on(gate.name, q));
  if (gate.name == "XX") {
    Dense m = one;
    for (std::size_t a = 0; a < q.size(); ++a) {
      for (std::size_t b = a + 1; b < q.size(); ++b) {
        m = rotation(on("XX", {q[a], q[b]}), std::numbers::pi / 2) * m;
      }
    }
    return m;
  }
  if (gate.name.starts_with("R"))
    return rotation(on(gate.name.substr(1), q), gate.params.at(0).value);
  return one;
}

/// Of a circuit in time order.
inline Dense unitary(const std::vector<structures::Gate>& gates, int n) {
  Dense m = Dense::identity(std::size_t{1} << n);
  for (const structures::Gate& gate : gates) m = unitary(gate, n) * m;
  return m;
}

}  // namespace support
