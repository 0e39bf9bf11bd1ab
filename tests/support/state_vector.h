#pragma once

#include <cmath>
#include <complex>
#include <cstddef>
#include <random>
#include <stdexcept>
#include <vector>

#include "zeltbraidwerk/foundations/gate.h"

/// \file
/// State vectors: what a circuit with numeric angles does. Qubit 0 is the highest bit of an index.

namespace support {

using State = std::vector<std::complex<double>>;

inline std::size_t bit_of(int qubit, int n) {
  return std::size_t{1} << (n - 1 - qubit);
}

inline void apply(const structures::Gate& gate, int n, State& state) {
  using Complex = std::complex<double>;
  const Complex i(0, 1);
  const std::size_t first = bit_of(gate.qbits.at(0), n);
  const std::string& name = gate.name;
  if (name == "XX") {  // a quarter turn of each pair
    for (std::size_t a = 0; a < gate.qbits.size(); ++a) {
      for (std::size_t b = a + 1; b < gate.qbits.size(); ++b) {
        const std::size_t flips = bit_of(gate.qbits[a], n) | bit_of(gate.qbits[b], n);
        const State before = state;
        for (std::size_t k = 0; k < state.size(); ++k) {
          state[k] = (before[k] - i * before[k ^ flips]) * std::sqrt(0.5);
        }
      }
    }
    return;
  }
  if (gate.qbits.size() == 2) {
    const std::size_t second = bit_of(gate.qbits[1], n);
    for (std::size_t k = 0; k < state.size(); ++k) {
      if ((k & first) == 0) continue;
      if (name == "CNOT" && (k & second) != 0) std::swap(state[k], state[k ^ second]);
      if (name != "CNOT" && (k & second) != 0) state[k] = -state[k];
    }
    return;
  }
  const double angle = name == "S" ? std::acos(0.0) : name == "D-S" ? -std::acos(0.0) : 0;
  const double half = (gate.params.empty() ? angle : gate.params[0].get_numeric_value()) / 2;
  const double c = std::cos(half);
  const double s = std::sin(half);
  const double r = std::sqrt(0.5);
  Complex m[2][2] = {{1, 0}, {0, 1}};
  const auto set = [&m](Complex a, Complex b, Complex d, Complex e) {
    m[0][0] = a, m[0][1] = b, m[1][0] = d, m[1][1] = e;
  };
  if (name == "X") {
    set(0, 1, 1, 0);
  } else if (name == "Y") {
    set(0, -i, i, 0);
  } else if (name == "Z") {
    set(1, 0, 0, -1);
  } else if (name == "H") {
    set(r, r, r, -r);
  } else if (name == "RX") {
    set(c, -i * s, -i * s, c);
  } else if (name == "RY") {
    set(c, -s, s, c);
  } else if (name == "RZ" || name == "PH" || name == "S" || name == "D-S") {
    set(c - i * s, 0, 0, c + i * s);
  } else if (name != "I") {
    throw std::invalid_argument("no matrix for " + name);
  }
  for (std::size_t k = 0; k < state.size(); ++k) {
    if ((k & first) != 0) continue;
    const Complex low = state[k];
    const Complex high = state[k | first];
    state[k] = m[0][0] * low + m[0][1] * high;
    state[k | first] = m[1][0] * low + m[1][1] * high;
  }
}

inline State after(const std::vector<structures::Gate>& circuit, int n, State state) {
  for (const structures::Gate& gate : circuit) apply(gate, n, state);
  return state;
}

/// Normal entries, not of length 1.
inline State random_state(int n, std::mt19937& rng) {
  std::normal_distribution<double> normal;
  State state(std::size_t{1} << n);
  for (auto& entry : state) entry = {normal(rng), normal(rng)};
  return state;
}

/// Qubit q goes to wire wires[q].
inline State moved(const State& state, int n, const std::vector<int>& wires) {
  State result(state.size());
  for (std::size_t k = 0; k < state.size(); ++k) {
    std::size_t there = 0;
    for (int q = 0; q < n; ++q) {
      if ((k & bit_of(q, n)) != 0) there |= bit_of(wires[static_cast<std::size_t>(q)], n);
    }
    result[there] = state[k];
  }
  return result;
}

/// The largest difference of entries.
inline double distance(const State& a, const State& b, std::complex<double> factor) {
  double most = 0;
  for (std::size_t k = 0; k < a.size(); ++k) most = std::max(most, std::abs(a[k] * factor - b[k]));
  return most;
}

/// Whether two circuits are the same operator up to a global phase, with output q of the first on
/// wire wires[q] of the other: they make the same of a random state, which is almost surely no
/// eigenvector of anything but multiples of the identity.
inline bool act_alike(const std::vector<structures::Gate>& one,
                      const std::vector<structures::Gate>& other, int n,
                      const std::vector<int>& wires, std::mt19937& rng, double tolerance = 1e-7) {
  const State state = random_state(n, rng);
  const State wanted = moved(after(one, n, state), n, wires);
  const State found = after(other, n, state);
  std::complex<double> phase = 0;
  double norm = 0;
  for (std::size_t k = 0; k < wanted.size(); ++k) {
    phase += std::conj(wanted[k]) * found[k];
    norm += std::norm(wanted[k]);
  }
  phase /= norm;
  return std::abs(std::abs(phase) - 1) < tolerance && distance(wanted, found, phase) < tolerance;
}

}  // namespace support
