#include "zeltbraidwerk/pauli/search/internal/pair_table.h"

#include <algorithm>

namespace zelt::braidwerk::internal {

GateCosts::GateCosts(int qubits, const BitGraph* graph) : qubits_(qubits) {
  index_.assign(static_cast<std::size_t>(qubits) * static_cast<std::size_t>(qubits), -1);
  for (int a = 0; a < qubits; ++a) {
    for (int b = a + 1; b < qubits; ++b) {
      if (graph != nullptr && !graph->joined(a, b)) continue;
      index_[static_cast<std::size_t>(a * qubits + b)] = static_cast<int>(pairs_.size());
      pairs_.push_back({a, b});
    }
  }
  costs_.resize(pairs_.size());
}

PairTable::PairTable(int qubits)
    : stride_(3 * static_cast<std::size_t>(qubits)), both_(stride_ * stride_), alone_(stride_) {}

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
void PairTable::score(GateCosts& costs) const {
  for (int pair = 0; pair < static_cast<int>(costs.pairs().size()); ++pair) {
    const auto a = 3 * static_cast<std::size_t>(costs.pairs()[static_cast<std::size_t>(pair)].a);
    const auto b = 3 * static_cast<std::size_t>(costs.pairs()[static_cast<std::size_t>(pair)].b);
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
    auto& cost = costs.of(pair);
    for (std::size_t i = 0; i < 3; ++i) {
      for (std::size_t j = 0; j < 3; ++j) {
        cost[3 * i + j] = all - alone_a[i] - alone_b[j] - of_a[i] - of_b[j] + 2 * less[i][j];
      }
    }
  }
}

void EdgeTable::clear() {
  std::ranges::fill(changes_, Changes{});
}

void EdgeTable::add(int pair, int label_a, int label_b, std::int64_t without_a_or_with_b,
                    std::int64_t without_b_or_with_a) {
  Changes& changes = changes_[static_cast<std::size_t>(pair)];
  if (label_a != 0 && label_b != 0) {
    const auto at = static_cast<std::size_t>(3 * label_a + label_b - 4);
    changes.without_a[at] += without_a_or_with_b;
    changes.without_b[at] += without_b_or_with_a;
  } else if (label_a != 0) {
    changes.with_b[static_cast<std::size_t>(label_a - 1)] += without_a_or_with_b;
  } else {
    changes.with_a[static_cast<std::size_t>(label_b - 1)] += without_b_or_with_a;
  }
}

/// As above: the letter on a goes where it is the gate's and the one on b is not, and so on.
void EdgeTable::score(GateCosts& costs) const {
  for (std::size_t pair = 0; pair < changes_.size(); ++pair) {
    const Changes& changes = changes_[pair];
    auto& cost = costs.of(static_cast<int>(pair));
    for (std::size_t i = 0; i < 3; ++i) {
      for (std::size_t j = 0; j < 3; ++j) {
        cost[3 * i + j] = 0;
        for (std::size_t k = 0; k < 3; ++k) {
          if (k != j) cost[3 * i + j] += changes.without_a[3 * i + k] + changes.with_a[k];
          if (k != i) cost[3 * i + j] += changes.without_b[3 * k + j] + changes.with_b[k];
        }
      }
    }
  }
}

}  // namespace zelt::braidwerk::internal
