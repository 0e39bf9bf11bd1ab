#pragma once

#include <bit>
#include <cstdint>
#include <functional>
#include <random>

namespace zelt::braidwerk::internal {

/// A source of draws: an int from the first bound to the second, both included. The public
/// functions pass random::uniform; who needs the same circuit again brings a SeededDraw.
using Draw = std::function<int(int, int)>;

/// One draw from an engine of 32-bit outputs: keeps as many low bits of an output as the range
/// needs and rejects what lies above it. Equal bounds take no output. Unlike the standard
/// distributions, the same on every platform.
template <typename Engine>
int bounded_draw(Engine& engine, int a, int b) {
  if (a == b) return a;
  const auto low = static_cast<std::uint32_t>(a);
  const std::uint32_t largest = static_cast<std::uint32_t>(b) - low;
  if (largest == UINT32_MAX) return static_cast<int>(static_cast<std::uint32_t>(engine()));
  const std::uint32_t mask = UINT32_MAX >> std::countl_zero(largest);
  std::uint32_t offset;
  do {
    offset = static_cast<std::uint32_t>(engine()) & mask;
  } while (offset > largest);
  return static_cast<int>(low + offset);
}

/// A Draw that gives the same ints for the same seed and stream; streams of one seed are
/// independent, one a restart. A Draw made of it holds a copy: pass std::ref to go on drawing.
class SeededDraw {
 public:
  SeededDraw(std::uint64_t seed, std::uint32_t stream) {
    std::seed_seq words{static_cast<std::uint32_t>(seed), static_cast<std::uint32_t>(seed >> 32),
                        stream};
    engine_.seed(words);
  }
  int operator()(int a, int b) { return bounded_draw(engine_, a, b); }

 private:
  std::mt19937 engine_;
};

}  // namespace zelt::braidwerk::internal
