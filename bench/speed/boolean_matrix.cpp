#include "zeltbraidwerk/foundations/boolean_matrix.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "speed/inputs.h"

// Each public function beside a plain loop over packed words that does the same row operations. The
// functions pay for packing their argument and unpacking their result; the loops do not. At most
// twice the loop is what they may take.

namespace {

using Words = std::vector<std::uint64_t>;

/// Rows of 64-bit words, one row after the other; `stride` words per row.
struct Plain {
  std::size_t n, stride;
  Words words;

  Plain(std::size_t size, std::size_t columns)
      : n(size), stride((columns + 63) / 64), words(n * stride) {}

  std::uint64_t* row(std::size_t r) { return words.data() + r * stride; }
  bool get(std::size_t r, std::size_t c) const {
    return words[r * stride + c / 64] >> (c % 64) & 1;
  }
  void set(std::size_t r, std::size_t c) { row(r)[c / 64] |= std::uint64_t{1} << (c % 64); }
  void add(std::size_t from, std::size_t to, std::size_t first_word = 0) {
    const std::uint64_t* source = row(from);
    std::uint64_t* target = row(to);
    for (std::size_t w = first_word; w < stride; ++w) target[w] ^= source[w];
  }
};

Plain packed(const BoolMatrix& m, std::size_t columns) {
  Plain p(m.size(), columns);
  for (std::size_t r = 0; r < m.size(); ++r) {
    for (std::size_t c = 0; c < m.size(); ++c) {
      if (m[r][c]) p.set(r, c);
    }
  }
  return p;
}

/// Clears column c below row c, and above it too if asked, after finding a pivot.
bool clear_column(Plain& p, std::size_t c, bool above) {
  const std::size_t first_word = c / 64;
  std::size_t pivot = c;
  while (pivot < p.n && !p.get(pivot, c)) ++pivot;
  if (pivot == p.n) return false;
  if (pivot != c) p.add(pivot, c, first_word);
  for (std::size_t r = above ? 0 : c + 1; r < p.n; ++r) {
    if (r != c && p.get(r, c)) p.add(c, r, first_word);
  }
  return true;
}

void inverse_ours(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const BoolMatrix m = bench::random_invertible(n);
  for (auto _ : state) benchmark::DoNotOptimize(boolean_matrix_inverse(n, m));
}

void inverse_loop(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  Plain start = packed(bench::random_invertible(static_cast<int>(n)), 2 * n);
  for (std::size_t r = 0; r < n; ++r) start.set(r, n + r);
  for (auto _ : state) {
    Plain p = start;
    for (std::size_t c = 0; c < n; ++c) clear_column(p, c, true);
    benchmark::DoNotOptimize(p.words.data());
  }
}

void product_ours(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const BoolMatrix m = bench::random_invertible(n);
  for (auto _ : state) benchmark::DoNotOptimize(boolean_matrix_product(n, n, n, m, m));
}

void product_loop(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  Plain m = packed(bench::random_invertible(static_cast<int>(n)), n);
  for (auto _ : state) {
    Plain result(n, n);
    for (std::size_t r = 0; r < n; ++r) {
      std::uint64_t* target = result.row(r);
      for (std::size_t k = 0; k < n; ++k) {
        if (!m.get(r, k)) continue;
        const std::uint64_t* source = m.row(k);
        for (std::size_t w = 0; w < m.stride; ++w) target[w] ^= source[w];
      }
    }
    benchmark::DoNotOptimize(result.words.data());
  }
}

void det_ours(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const BoolMatrix m = bench::random_invertible(n);
  for (auto _ : state) benchmark::DoNotOptimize(boolean_matrix_det(m, n));
}

void det_loop(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  const Plain start = packed(bench::random_invertible(static_cast<int>(n)), n);
  for (auto _ : state) {
    Plain p = start;
    bool invertible = true;
    for (std::size_t c = 0; c < n && invertible; ++c) invertible = clear_column(p, c, false);
    benchmark::DoNotOptimize(invertible);
  }
}

BENCHMARK(inverse_ours)->Arg(512)->Arg(1024)->Unit(benchmark::kMicrosecond);
BENCHMARK(inverse_loop)->Arg(512)->Arg(1024)->Unit(benchmark::kMicrosecond);
BENCHMARK(product_ours)->Arg(512)->Arg(1024)->Unit(benchmark::kMicrosecond);
BENCHMARK(product_loop)->Arg(512)->Arg(1024)->Unit(benchmark::kMicrosecond);
BENCHMARK(det_ours)->Arg(512)->Arg(1024)->Unit(benchmark::kMicrosecond);
BENCHMARK(det_loop)->Arg(512)->Arg(1024)->Unit(benchmark::kMicrosecond);

}  // namespace
