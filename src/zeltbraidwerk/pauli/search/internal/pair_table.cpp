#include "zeltbraidwerk/pauli/search/internal/pair_table.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <utility>

#include "zeltbraidwerk/foundations/internal/clones.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr std::size_t lanes = GateCosts::lanes;

std::size_t blocks_for(int qubits) {
  return (static_cast<std::size_t>(qubits) + lanes - 1) / lanes;
}

/// A gate with labels P and Q takes a letter off where one of the letters is its label and the
/// other is another, and adds one where a letter other than its label stands alone.
///
/// Of one wire, whose letters stand `stride` apart in the table, and some others, `width` for each
/// label.
ZELTBRAIDWERK_CLONES void score_block(const std::uint64_t* __restrict both, std::size_t stride,
                                      std::size_t width, const std::int64_t* __restrict alone_a,
                                      const std::int64_t* __restrict alone_b,
                                      GateCosts::Block& __restrict block) {
  for (std::size_t b = 0; b < lanes; ++b) {
    std::int64_t less[3][3];
    // What stands alone with this label, and, less, what has any letter on the other wire.
    std::int64_t of_a[3] = {alone_a[0], alone_a[width], alone_a[2 * width]};
    std::int64_t of_b[3] = {alone_b[b], alone_b[width + b], alone_b[2 * width + b]};
    std::int64_t all = of_a[0] + of_a[1] + of_a[2] + of_b[0] + of_b[1] + of_b[2];
    for (std::size_t i = 0; i < 3; ++i) {
      for (std::size_t j = 0; j < 3; ++j) {
        const std::uint64_t entry = both[i * stride + j * width + b];
        const auto more = static_cast<std::int64_t>(entry & 0xffffffffU);
        less[i][j] = static_cast<std::int64_t>(entry >> 32);
        of_a[i] += less[i][j] - more;
        of_b[j] += less[i][j] - more;
        all -= 2 * more;
      }
    }
    std::int64_t least = std::numeric_limits<std::int64_t>::max();
    for (std::size_t i = 0; i < 3; ++i) {
      for (std::size_t j = 0; j < 3; ++j) {
        const std::int64_t cost = all - of_a[i] - of_b[j] + 2 * less[i][j];
        block.costs[3 * i + j][b] = cost;
        least = least < cost ? least : cost;
      }
    }
    block.least[b] = least;
  }
}

struct Table {
  std::uint64_t* both;
  std::int64_t* alone;
  std::size_t width;
};

/// Rows of one word and one weight.
template <std::size_t weight>
void add_rows(const LetterRows& rows, const std::vector<PairTable::Pull>& pulls,
              const Table& table) {
  for (const PairTable::Pull& pull : pulls) {
    const Word xs = rows.x_word(pull.row);
    const Word zs = rows.z_word(pull.row);
    std::array<std::uint64_t*, weight> line;
    std::array<std::size_t, weight> column;
    const std::uint64_t both = std::uint64_t{pull.less} << 32 | pull.more;
    Word rest = xs | zs;
    for (std::size_t k = 0; k < weight; ++k) {
      const auto q = static_cast<std::size_t>(std::countr_zero(rest));
      const std::size_t label = (xs >> q & 1) | (zs >> q & 1) << 1;
      line[k] = table.both + (3 * q + label - 1) * 3 * table.width;
      column[k] = (label - 1) * table.width + q;
      table.alone[column[k]] += pull.more;
      for (std::size_t i = 0; i < k; ++i) line[i][column[k]] += both;
      rest &= rest - 1;
    }
  }
}

constexpr std::size_t most_letters = 20;  // of strings that are common

template <std::size_t... weight>
constexpr auto adders(std::index_sequence<weight...>) {
  return std::array{&add_rows<weight>...};
}
constexpr auto by_weight = adders(std::make_index_sequence<most_letters + 1>());

}  // namespace

GateCosts::GateCosts(int qubits, const BitGraph* graph) : qubits_(qubits) {
  const auto n = static_cast<std::size_t>(qubits);
  slots_.resize(n * n);
  std::size_t blocks = 0;
  for (int a = 0; a < qubits; ++a) {
    first_.push_back(blocks);
    for (int b = a + 1; b < qubits; ++b) {
      if (graph != nullptr && !graph->joined(a, b)) continue;
      const std::size_t slot =
          graph != nullptr ? pairs_.size()
                           : blocks * lanes + static_cast<std::size_t>(b) - first_of(a) * lanes;
      slots_[static_cast<std::size_t>(a) * n + static_cast<std::size_t>(b)] =
          static_cast<std::uint32_t>(slot);
      pairs_.push_back({a, b});
    }
    if (graph == nullptr) blocks += blocks_for(qubits) - first_of(a);
  }
  blocks_.resize(graph == nullptr ? blocks : (pairs_.size() + lanes - 1) / lanes);
}

void GateCosts::put(const Pair& pair, const std::array<std::int64_t, 9>& costs) {
  const std::size_t slot = slot_of(pair);
  Block& block = blocks_[slot / lanes];
  for (std::size_t k = 0; k < costs.size(); ++k) block.costs[k][slot % lanes] = costs[k];
  block.least[slot % lanes] = *std::ranges::min_element(costs);
}

PairTable::PairTable(int qubits)
    : qubits_(qubits),
      width_(blocks_for(qubits) * lanes),
      both_(9 * static_cast<std::size_t>(qubits) * width_),
      alone_(3 * width_) {
  for (std::size_t letter = 0; letter < 3 * static_cast<std::size_t>(qubits); ++letter) {
    column_.push_back(letter % 3 * width_ + letter / 3);
  }
}

void PairTable::clear() {
  std::ranges::fill(both_, 0);
  std::ranges::fill(alone_, 0);
}

void PairTable::add(const int* letters, int count, std::uint32_t less, std::uint32_t more) {
  const std::uint64_t both = std::uint64_t{less} << 32 | more;
  for (int i = 0; i < count; ++i) {
    const auto letter = static_cast<std::size_t>(letters[i]);
    alone_[column_[letter]] += more;
    std::uint64_t* row = both_.data() + letter * 3 * width_;
    for (int j = i + 1; j < count; ++j) row[column_[static_cast<std::size_t>(letters[j])]] += both;
  }
}

void PairTable::add(const LetterRows& rows, int weight, const std::vector<Pull>& pulls) {
  const auto letters = static_cast<std::size_t>(weight);
  if (letters <= most_letters && rows.words() == 1) {
    by_weight[letters](rows, pulls, {both_.data(), alone_.data(), width_});
    return;
  }
  letters_.resize(std::max(letters_.size(), letters));
  for (const Pull& pull : pulls) {
    add(letters_.data(), rows.letters(pull.row, letters_.data()), pull.less, pull.more);
  }
}

void PairTable::score(GateCosts& costs) {
  for (int a = 0; a + 1 < qubits_; ++a) {
    const auto wire = static_cast<std::size_t>(a);
    for (std::size_t k = GateCosts::first_of(a); k < width_ / lanes; ++k) {
      score_block(both_.data() + 9 * wire * width_ + k * lanes, 3 * width_, width_,
                  alone_.data() + wire, alone_.data() + k * lanes, costs.block_of(a, k));
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
    std::array<std::int64_t, 9> cost{};
    for (std::size_t i = 0; i < 3; ++i) {
      for (std::size_t j = 0; j < 3; ++j) {
        for (std::size_t k = 0; k < 3; ++k) {
          if (k != j) cost[3 * i + j] += changes.without_a[3 * i + k] + changes.with_a[k];
          if (k != i) cost[3 * i + j] += changes.without_b[3 * k + j] + changes.with_b[k];
        }
      }
    }
    costs.put(costs.pairs()[pair], cost);
  }
}

}  // namespace zelt::braidwerk::internal
