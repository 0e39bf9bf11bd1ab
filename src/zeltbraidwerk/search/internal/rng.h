#pragma once

#include <array>
#include <bit>
#include <cstdint>

namespace zelt::braidwerk::internal {

/// The source of draws of a search: xoshiro256++ (D. Blackman, S. Vigna, 2019), one nanosecond
/// per draw. The same numbers on every platform; streams of one seed are independent, one per run.
class Rng {
 public:
  Rng(std::uint64_t seed, std::uint64_t stream) {
    std::uint64_t x = seed ^ (stream * 0xd1342543de82ef95u);
    for (std::uint64_t& word : state_) {
      x += 0x9e3779b97f4a7c15u;
      word = mixed(x);
    }
  }

  /// A bijection of 64-bit words that leaves no pattern; also the hash of a word.
  static constexpr std::uint64_t mixed(std::uint64_t z) {
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    return z ^ (z >> 31);
  }

  std::uint64_t next() {
    const std::uint64_t result = std::rotl(state_[0] + state_[3], 23) + state_[0];
    const std::uint64_t t = state_[1] << 17;
    state_[2] ^= state_[0];
    state_[3] ^= state_[1];
    state_[1] ^= state_[2];
    state_[0] ^= state_[3];
    state_[2] ^= t;
    state_[3] = std::rotl(state_[3], 45);
    return result;
  }

  /// 0 to bound - 1; uneven by less than one in 2^32 / bound. 0 for bounds below 1.
  int below(int bound) {
    const auto wide = (next() >> 32) * static_cast<std::uint64_t>(bound > 0 ? bound : 0);
    return static_cast<int>(wide >> 32);
  }

  bool coin() { return static_cast<std::int64_t>(next()) < 0; }

  /// From 0 up to, not including, 1.
  float unit() { return static_cast<float>(next() >> 40) * 0x1p-24f; }

  bool chance(float p) { return unit() < p; }

 private:
  std::array<std::uint64_t, 4> state_;
};

}  // namespace zelt::braidwerk::internal
