#include "zeltbraidwerk/pauli/search/internal/pair_table.h"

#include <algorithm>

namespace zelt::braidwerk::internal {

PairTable::PairTable(int qubits, const BitGraph* graph)
    : qubits_(qubits), stride_(3 * static_cast<std::size_t>(qubits)) {
  index_.assign(static_cast<std::size_t>(qubits) * static_cast<std::size_t>(qubits), -1);
  for (int a = 0; a < qubits; ++a) {
    for (int b = a + 1; b < qubits; ++b) {
      if (graph != nullptr && !graph->joined(a, b)) continue;
      index_[static_cast<std::size_t>(a * qubits + b)] = static_cast<int>(pairs_.size());
      pairs_.push_back({a, b});
    }
  }
  both_.resize(stride_ * stride_);
  alone_.resize(stride_);
  costs_.resize(pairs_.size());
}

void PairTable::clear() {
  std::ranges::fill(both_, 0);
  std::ranges::fill(alone_, 0);
}

void PairTable::add(const int* letters, int count, std::uint32_t less, std::uint32_t more) {
  const std::uint64_t both = std::uint64_t{less} << 32 | more;
  for (int i = 0; i < count; ++i) {
    alone_[static_cast<std::size_t>(letters[i])] += more;
    std::uint64_t* row = both_.data() + static_cast<std::size_t>(letters[i]) * stride_;
    for (int j = i + 1; j < count; ++j) row[letters[j]] += both;
  }
}

/// A gate with labels P and Q takes a letter off where one of the letters is its label and the
/// other is another, and adds one where a letter other than its label stands alone.
void PairTable::score() {
  for (std::size_t p = 0; p < pairs_.size(); ++p) {
    const auto a = 3 * static_cast<std::size_t>(pairs_[p].a);
    const auto b = 3 * static_cast<std::size_t>(pairs_[p].b);
    std::int64_t less[3][3];
    std::int64_t of_a[3] = {};  // less, of all strings with this label on a and any on b
    std::int64_t of_b[3] = {};
    std::int64_t alone_a[3];
    std::int64_t alone_b[3];
    for (std::size_t k = 0; k < 3; ++k) {
      alone_a[k] = alone_[a + k];
      alone_b[k] = alone_[b + k];
    }
    for (std::size_t i = 0; i < 3; ++i) {
      for (std::size_t j = 0; j < 3; ++j) {
        const std::uint64_t both = both_[(a + i) * stride_ + b + j];
        const auto more = static_cast<std::int64_t>(both & 0xffffffffu);
        less[i][j] = static_cast<std::int64_t>(both >> 32);
        of_a[i] += less[i][j];
        of_b[j] += less[i][j];
        alone_a[i] -= more;
        alone_b[j] -= more;
      }
    }
    const std::int64_t all = alone_a[0] + alone_a[1] + alone_a[2] +  //
                             alone_b[0] + alone_b[1] + alone_b[2];
    for (std::size_t i = 0; i < 3; ++i) {
      for (std::size_t j = 0; j < 3; ++j) {
        costs_[p][3 * i + j] = all - alone_a[i] - alone_b[j] - of_a[i] - of_b[j] + 2 * less[i][j];
      }
    }
  }
}

}  // namespace zelt::braidwerk::internal
