#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <ranges>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "zeltbraidwerk/foundations/structures.h"

/// \file
/// Digests that stand for many results: a test compares the digest of what the library gives today
/// with the recorded one, so that no gate, tie or order changes unseen. That the results are right
/// is tested beside it by other means. A failing comparison prints the new digest.

namespace support {

/// FNV-1a over everything that was added. Sizes are part of it, so that lists do not run together.
class Digest {
 public:
  template <class... Values>
  Digest& add(const Values&... values) {
    (add_one(values), ...);
    return *this;
  }
  std::string text() const {
    std::array<char, 17> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(state_));
    return digits.data();
  }

 private:
  template <class T>
  void add_one(const T& value) {
    if constexpr (std::is_floating_point_v<T>) {
      add_word(std::bit_cast<std::uint64_t>(static_cast<double>(value)));
    } else if constexpr (std::is_arithmetic_v<T>) {
      add_word(static_cast<std::uint64_t>(value));
    } else if constexpr (std::ranges::range<T>) {
      add_word(static_cast<std::uint64_t>(std::ranges::distance(value)));
      for (const auto& entry : value) add_one(entry);
    } else {
      std::apply([this](const auto&... parts) { this->add(parts...); }, value);
    }
  }
  void add_one(const structures::Parameter& angle) { add(angle.value, angle.expression); }
  void add_one(const structures::Gate& gate) {
    add(std::string_view(gate.name), gate.qbits, gate.params, gate.diag);
  }
  void add_one(const structures::CnotCircuit& circuit) { add(circuit.nbqbits, circuit.gates); }
  void add_one(const structures::OperatorTableau& tableau) { add(tableau.nbqbits, tableau.data); }
  void add_word(std::uint64_t word) {
    for (int byte = 0; byte < 64; byte += 8)
      state_ = (state_ ^ (word >> byte & 255)) * 1099511628211U;
  }

  std::uint64_t state_ = 14695981039346656037U;
};

}  // namespace support
