#include "zeltbraidwerk/linear/internal/log_estimates.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "zeltbraidwerk/foundations/internal/clones.h"

namespace zelt::braidwerk::internal {
namespace {

using Estimate = std::int32_t;

constexpr Estimate nothing = std::numeric_limits<Estimate>::min();
constexpr std::size_t lanes = 8;
constexpr std::size_t block = 2 * lanes;

using EstimateVector = Estimate __attribute__((vector_size(lanes * sizeof(Estimate)), may_alias));

constexpr EstimateVector lane_bits = {1, 2, 4, 8, 16, 32, 64, 128};

inline EstimateVector& vector_at(Estimate* p) {
  return *reinterpret_cast<EstimateVector*>(p);
}
inline const EstimateVector& vector_at(const Estimate* p) {
  return *reinterpret_cast<const EstimateVector*>(p);
}

/// A row of weight w keeps a one in every column. Adding such a column to another one cancels a
/// one there, or makes one.
ZELTBRAIDWERK_CLONES
void find_terms(const Word* rows, int words, const int* weights, const Estimate* logs, int n,
                std::size_t stride, Estimate* terms) {
  for (int r = 0; r < n; ++r) {
    const int w = weights[r];
    if (w == 0) continue;
    const Estimate made = logs[w] - logs[w + 1];
    const Estimate cancelled = logs[w] - logs[w - 1];
    Estimate* term = terms + static_cast<std::size_t>(r) * stride;
    for (std::size_t k = 0; k < stride; k += lanes) {
      const Word word = rows[r * words + static_cast<int>(k / word_bits)];
      const auto bits = static_cast<std::uint8_t>(word >> (k % word_bits));
      const EstimateVector set = ((EstimateVector{} + bits) & lane_bits) == lane_bits;
      vector_at(term + k) = set ? EstimateVector{} + cancelled : EstimateVector{} + made;
    }
  }
}

ZELTBRAIDWERK_CLONES
void add_terms(const Word* columns, int words, const Estimate* terms, int n, std::size_t stride,
               Estimate* savings) {
  for (int from = 0; from < n; ++from) {
    Estimate* saving = savings + static_cast<std::size_t>(from) * stride;
    for (std::size_t k = 0; k < stride; k += block) {
      EstimateVector low = {};
      EstimateVector high = {};
      for (int w = 0; w < words; ++w) {
        for (Word rest = columns[from * words + w]; rest != 0; rest &= rest - 1) {
          const auto r = static_cast<std::size_t>(w * word_bits + std::countr_zero(rest));
          low += vector_at(terms + r * stride + k);
          high += vector_at(terms + r * stride + k + lanes);
        }
      }
      vector_at(saving + k) = low;
      vector_at(saving + k + lanes) = high;
    }
  }
}

ZELTBRAIDWERK_CLONES
void find_row_savings(const Word* rows, int words, const int* weights, const Estimate* logs, int n,
                      std::size_t stride, Estimate* savings) {
  for (int a = 0; a < n; ++a) {
    for (int b = a + 1; b < n; ++b) {
      const Estimate after = logs[distance(rows + a * words, rows + b * words, words)];
      savings[static_cast<std::size_t>(a) * stride + static_cast<std::size_t>(b)] =
          logs[weights[b]] - after;
      savings[static_cast<std::size_t>(b) * stride + static_cast<std::size_t>(a)] =
          logs[weights[a]] - after;
    }
  }
}

ZELTBRAIDWERK_CLONES
Estimate largest_of(const Estimate* savings, std::size_t count) {
  EstimateVector most = EstimateVector{} + nothing;
  for (std::size_t k = 0; k < count; k += lanes) {
    const EstimateVector& v = vector_at(savings + k);
    most = v > most ? v : most;
  }
  Estimate largest = nothing;
  for (std::size_t lane = 0; lane < lanes; ++lane) largest = std::max(largest, most[lane]);
  return largest;
}

ZELTBRAIDWERK_CLONES
bool reaches(const Estimate* savings, std::size_t count, Estimate least) {
  EstimateVector found = {};
  for (std::size_t k = 0; k < count; k += lanes) found |= vector_at(savings + k) >= least;
  Estimate any = 0;
  for (std::size_t lane = 0; lane < lanes; ++lane) any |= found[lane];
  return any != 0;
}

}  // namespace

LogEstimates::LogEstimates(const std::vector<double>& logs)
    : n_(static_cast<int>(logs.size()) - 1),
      stride_((static_cast<std::size_t>(n_) + block - 1) / block * block),
      scale_((1 << 30) / std::max(1.0, static_cast<double>(n_))),
      error_((n_ + 2) / scale_) {
  for (const double log : logs) logs_.push_back(static_cast<Estimate>(std::lround(log * scale_)));
  logs_.push_back(logs_.back());  // room for a full row; such an entry is not used
  const std::size_t size = static_cast<std::size_t>(n_) * stride_;
  for (Row& savings : savings_) savings.assign(size, nothing);
  terms_.assign(size, 0);
}

void LogEstimates::find(const Lines& lines) {
  if (n_ < 2) return;
  const BitMatrix& rows = lines.side(true);
  const BitMatrix& columns = lines.side(false);
  find_terms(rows.row(0), rows.stride(), lines.weights(true), logs_.data(), n_, stride_,
             terms_.data());
  add_terms(columns.row(0), columns.stride(), terms_.data(), n_, stride_, savings_[0].data());
  find_row_savings(rows.row(0), rows.stride(), lines.weights(true), logs_.data(), n_, stride_,
                   savings_[1].data());
  for (int k = 0; k < n_; ++k) {
    Estimate* row = savings_[0].data() + static_cast<std::size_t>(k) * stride_;
    row[k] = nothing;
    std::fill(row + n_, row + stride_, nothing);
  }
  largest_ = nothing;
  for (const Row& savings : savings_) {
    largest_ = std::max(largest_, largest_of(savings.data(), savings.size()));
  }
}

std::vector<LineAddition> LogEstimates::near_largest(double tolerance) const {
  std::vector<LineAddition> near;
  const double least = (largest() - tolerance - 2 * error_) * scale_;
  const auto bound = static_cast<Estimate>(std::floor(least));
  for (const bool row : {false, true}) {
    for (int from = 0; from < n_; ++from) {
      const Estimate* savings = savings_[row].data() + static_cast<std::size_t>(from) * stride_;
      if (!reaches(savings, stride_, bound)) continue;
      for (int to = 0; to < n_; ++to) {
        if (to != from && savings[to] >= bound) near.push_back({from, to, row});
      }
    }
  }
  return near;
}

}  // namespace zelt::braidwerk::internal
