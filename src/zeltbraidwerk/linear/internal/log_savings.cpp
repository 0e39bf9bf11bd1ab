#include "zeltbraidwerk/linear/internal/log_savings.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/linear/internal/cell_rows.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr std::size_t lanes = 16;
constexpr double nothing = -std::numeric_limits<double>::infinity();

/// The logarithms that a row contributes: one row of cells as long as its weight stays, and one for
/// each column that may join in or cancel.
ZELTBRAIDWERK_CLONES
void find_terms(const Word* rows, int words, const int* weights, const double* logs, int n,
                std::size_t stride, double* terms) {
  for (int r = 0; r < n; ++r) {
    double* same = terms + 2 * static_cast<std::size_t>(r) * stride;
    std::fill_n(same, stride, logs[weights[r]]);
    double* changed = same + stride;
    for (int c = 0; c < n; ++c) {
      changed[c] = logs[weights[r] + (bit_at(rows + r * words, c) != 0 ? -1 : 1)];
    }
  }
}

ZELTBRAIDWERK_CLONES
void find_column_savings(const Word* columns, int words, const double* terms, double base, int n,
                         std::size_t stride, double* savings) {
  for (int from = 0; from < n; ++from) {
    const Word* column = columns + from * words;
    for (std::size_t k = 0; k < stride; k += lanes) {
      double left[lanes];
      for (double& value : left) value = base;
      for (int r = 0; r < n; ++r) {
        const double* term =
            terms + (2 * static_cast<std::size_t>(r) + bit_at(column, r)) * stride + k;
        for (std::size_t lane = 0; lane < lanes; ++lane) left[lane] -= term[lane];
      }
      std::copy_n(left, lanes, savings + static_cast<std::size_t>(from) * stride + k);
    }
  }
}

ZELTBRAIDWERK_CLONES
void find_row_savings(const Word* rows, int words, const double* logs, const double* terms,
                      double base, int n, std::size_t stride, double* savings) {
  for (int to = 0; to < n; ++to) {
    double* saving = savings + static_cast<std::size_t>(to) * stride;
    for (int from = 0; from < n; ++from) {
      saving[from] = base - logs[distance(rows + from * words, rows + to * words, words)];
    }
    for (std::size_t k = 0; k < stride; k += lanes) {
      double left[lanes];
      std::copy_n(saving + k, lanes, left);
      for (int r = to + 1; r < n; ++r) {
        const double* term = terms + 2 * static_cast<std::size_t>(r) * stride + k;
        for (std::size_t lane = 0; lane < lanes; ++lane) left[lane] -= term[lane];
      }
      std::copy_n(left, lanes, saving + k);
    }
    base -= terms[2 * static_cast<std::size_t>(to) * stride];
  }
}

ZELTBRAIDWERK_CLONES
void take_larger(double* __restrict largest, const double* __restrict row, std::size_t stride) {
  for (std::size_t k = 0; k < stride; ++k) largest[k] = row[k] > largest[k] ? row[k] : largest[k];
}

ZELTBRAIDWERK_CLONES
int count_above(const double* row, double least, std::size_t stride) {
  int count = 0;
  for (std::size_t k = 0; k < stride; ++k) count += row[k] > least;
  return count;
}

}  // namespace

std::vector<double> logarithms(int n) {
  std::vector<double> logs{0.0};
  for (int k = 1; k <= n; ++k) logs.push_back(std::log(k));
  return logs;
}

double potential(const Lines& lines, const std::vector<double>& logs) {
  double sum = 0.0;
  for (int r = 0; r < lines.size(); ++r) sum += logs.data()[lines.weights(true)[r]];
  return sum;
}

LogSavings::LogSavings(int n)
    : n_(std::max(n, 0)), stride_((static_cast<std::size_t>(n_) + lanes - 1) / lanes * lanes) {
  for (auto& table : table_) table.assign(static_cast<std::size_t>(n_) * stride_, nothing);
}

void LogSavings::find(const Lines& lines, const std::vector<double>& logs) {
  base_ = potential(lines, logs);
  if (n_ < 2) return;
  const BitMatrix& rows = lines.side(true);
  const BitMatrix& columns = lines.side(false);
  terms_.resize(2 * static_cast<std::size_t>(n_) * stride_);
  find_terms(rows.row(0), rows.stride(), lines.weights(true), logs.data(), n_, stride_,
             terms_.data());
  find_column_savings(columns.row(0), columns.stride(), terms_.data(), base_, n_, stride_,
                      table_[false].data());
  find_row_savings(rows.row(0), rows.stride(), logs.data(), terms_.data(), base_, n_, stride_,
                   table_[true].data());
  for (auto& table : table_) {
    for (int k = 0; k < n_; ++k) {
      double* row = table.data() + static_cast<std::size_t>(k) * stride_;
      row[k] = nothing;
      std::fill(row + n_, row + stride_, nothing);
    }
  }
}

double LogSavings::largest() const {
  std::vector<double> largest(stride_, std::numeric_limits<double>::lowest());
  for (const auto& table : table_) {
    for (std::size_t k = 0; k < table.size(); k += stride_) {
      take_larger(largest.data(), table.data() + k, stride_);
    }
  }
  double best = std::numeric_limits<double>::lowest();
  for (const double value : largest) best = std::max(best, value);
  return best;
}

std::vector<LineAddition> LogSavings::above(double least) const {
  std::vector<LineAddition> found;
  for (const bool row : {false, true}) {
    for (int k = 0; k < n_; ++k) {
      const double* savings = table_[row].data() + static_cast<std::size_t>(k) * stride_;
      if (count_above(savings, least, stride_) == 0) continue;
      for (int c = 0; c < n_; ++c) {
        if (savings[c] > least)
          found.push_back(row ? LineAddition{c, k, true} : LineAddition{k, c, false});
      }
    }
  }
  return found;
}

}  // namespace zelt::braidwerk::internal
