#include "zeltbraidwerk/clifford/search/internal/operator_class.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <numeric>
#include <utility>

#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr unsigned locals = 6;  // one-qubit gates, by what they make of labels
constexpr unsigned all_locals = (1U << locals) - 1;
constexpr std::uint32_t no_row = std::numeric_limits<std::uint32_t>::max();
constexpr std::array<std::array<std::uint8_t, 4>, locals> images{
    {{0, 1, 2, 3}, {0, 1, 3, 2}, {0, 2, 1, 3}, {0, 2, 3, 1}, {0, 3, 1, 2}, {0, 3, 2, 1}}};

// A block has the label of the row of X in its bits 0 and 1, that of the row of Z in 2 and 3.
constexpr unsigned blocks = 16;
constexpr std::array<unsigned, 4> labels_of(unsigned block) {
  return {0, block & 3, block >> 2, (block & 3) ^ (block >> 2)};
}

struct BlockFacts {
  std::uint8_t rank;
  std::uint8_t kernel;  ///< of rank 1: the label of the row's wire that has no letter
  std::uint8_t image;   ///< of rank 1: the letter that the two others have
};

constexpr auto facts = [] {
  std::array<BlockFacts, blocks> of{};
  for (unsigned block = 0; block < blocks; ++block) {
    const auto labels = labels_of(block);
    const auto zeros = std::count(labels.begin() + 1, labels.end(), 0U);
    of[block].rank = zeros == 3 ? 0 : zeros == 1 ? 1 : 2;
    for (unsigned label = 1; zeros == 1 && label < 4; ++label) {
      if (labels[label] == 0) of[block].kernel = static_cast<std::uint8_t>(label);
      if (labels[label] != 0) of[block].image = static_cast<std::uint8_t>(labels[label]);
    }
  }
  return of;
}();

/// The least block that a gate on the row's wire and one of some gates on the column's wire lead
/// to, and which of these do.
struct Least {
  std::uint8_t block;
  std::uint8_t gates;
};
using LeastBlocks = std::array<std::array<std::array<Least, blocks>, locals>, all_locals + 1>;

/// Of a set of gates on a column's wire those that do the same to a letter as one of the set.
using Closures = std::array<std::array<std::uint8_t, all_locals + 1>, 4>;

struct ClassSteps {
  LeastBlocks least{};
  Closures closure{};
};

const ClassSteps& class_steps() {
  static const ClassSteps steps = [] {
    ClassSteps made;
    for (unsigned gates = 1; gates <= all_locals; ++gates) {
      for (unsigned own = 0; own < locals; ++own) {
        for (unsigned block = 0; block < blocks; ++block) {
          const auto labels = labels_of(block);
          Least least{blocks, 0};
          for (unsigned gate = 0; gate < locals; ++gate) {
            if ((gates >> gate & 1) == 0) continue;
            const auto result = static_cast<std::uint8_t>(
                images[gate][labels[images[own][1]]] | images[gate][labels[images[own][2]]] << 2);
            if (result < least.block) least = {result, 0};
            if (result == least.block) least.gates |= static_cast<std::uint8_t>(1U << gate);
          }
          made.least[gates][own][block] = least;
        }
      }
      for (unsigned letter = 0; letter < 4; ++letter) {
        for (unsigned gate = 0; gate < locals * locals; ++gate) {
          const unsigned other = gate / locals;
          if ((gates >> other & 1) == 0) continue;
          if (images[gate % locals][letter] != images[other][letter]) continue;
          made.closure[letter][gates] |= static_cast<std::uint8_t>(1U << (gate % locals));
        }
      }
    }
    return made;
  }();
  return steps;
}

unsigned letters_in(unsigned block) {
  return 1U << (block & 3) | 1U << (block >> 2) | 1U << ((block & 3) ^ (block >> 2));
}

/// Places of two bits where both have the same, other than 0.
unsigned equal_letters(unsigned one, unsigned other) {
  const unsigned differ = one ^ other;
  const unsigned places = (one | one >> 1) & ~(differ | differ >> 1) & 0x555;
  const unsigned pairs = (places & 0x333) + (places >> 2 & 0x333);
  return pairs * 0x111 >> 8 & 15;
}

/// For two blocks between two wires, by their ranks.
constexpr auto rank_factors = [] {
  std::array<std::uint64_t, 11> of{};
  for (std::size_t k = 0; k < of.size(); ++k) of[k] = Rng::mixed(k + 1) | 1;
  return of;
}();

}  // namespace

template <int wires>
FewWireRows<wires> FewWireRows<wires>::identity() {
  FewWireRows rows;
  for (unsigned k = 0; k < rows.strings.size(); ++k) {
    rows.strings[k] = static_cast<std::uint16_t>(1U << k);
  }
  return rows;
}

template <int wires>
FewWireRows<wires> FewWireRows<wires>::of(const OperatorRows& rows) {
  FewWireRows result;
  for (int k = 0; k < 2 * wires; ++k) {
    unsigned string = 0;
    for (int q = 0; q < wires; ++q) {
      string |= static_cast<unsigned>(rows.label_at(0, k / 2, k % 2 + 1, q)) << (2 * q);
    }
    result.strings[static_cast<std::size_t>(k)] = static_cast<std::uint16_t>(string);
  }
  return result;
}

template <int wires>
FewWireRows<wires> FewWireRows<wires>::reordered(const std::array<int, wires>& places) const {
  FewWireRows result;
  for (std::size_t p = 0; p < places.size(); ++p) {
    const auto from = 2 * static_cast<std::size_t>(places[p]);
    result.strings[2 * p] = strings[from];
    result.strings[2 * p + 1] = strings[from + 1];
  }
  return result;
}

template <int wires>
auto FewWireRows<wires>::gates() -> const std::array<Gate, moves>& {
  static const auto gates = [] {
    std::array<Gate, moves> made{};
    std::size_t k = 0;
    for (int b = 1; b < wires; ++b) {
      for (int a = 0; a < b; ++a) {
        for (int labels = 0; labels < 9; ++labels) {
          made[k++] = {end_of(a, labels / 3 + 1), end_of(b, labels % 3 + 1)};
        }
      }
    }
    return made;
  }();
  return gates;
}

template <int wires>
OperatorClass ClassFinder<wires>::operator()(const FewWireRows<wires>& rows) {
  read(rows);
  const auto numbers = wire_numbers();
  Order order;
  std::iota(order.begin(), order.end(), 0);
  std::ranges::sort(order, {}, [&](int i) { return numbers[static_cast<std::size_t>(i)]; });
  least_.fill(no_row);
  try_orders(numbers, 0, order);
  OperatorClass found;
  constexpr int row_bits = 4 * wires;
  for (int k = wires - 1; k-- > 0;) {
    found.high = found.high << row_bits | found.low >> (64 - row_bits);
    found.low = found.low << row_bits | least_[static_cast<std::size_t>(k)];
  }
  return found;
}

template <int wires>
void ClassFinder<wires>::read(const FewWireRows<wires>& rows) {
  for (std::size_t i = 0; i < wires; ++i) {
    for (std::size_t j = 0; j < wires; ++j) {
      const unsigned x = rows.strings[2 * i] >> (2 * j) & 3U;
      const unsigned z = rows.strings[2 * i + 1] >> (2 * j) & 3U;
      blocks_[i][j] = static_cast<Block>(x | z << 2);
    }
  }
}

/// Two rounds: from the blocks between two wires, and from the numbers of the first round.
template <int wires>
std::array<std::uint64_t, wires> ClassFinder<wires>::wire_numbers() const {
  std::array<unsigned, wires> row_images{};  // of the blocks in a row, two bits each
  std::array<unsigned, wires> column_kernels{};
  for (std::size_t i = 0; i < wires; ++i) {
    for (std::size_t j = 0; j < wires; ++j) {
      const BlockFacts& of = facts[blocks_[i][j]];
      row_images[i] |= static_cast<unsigned>(of.image) << (2 * j);
      column_kernels[j] |= static_cast<unsigned>(of.kernel) << (2 * i);
    }
  }
  const auto rank = [&](std::size_t i, std::size_t j) { return facts[blocks_[i][j]].rank; };
  std::array<std::uint64_t, wires> first{};
  for (std::size_t i = 0; i < wires; ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      const unsigned same = 16 * equal_letters(row_images[i], row_images[j]) +
                            128 * equal_letters(column_kernels[i], column_kernels[j]);
      first[i] += Rng::mixed(1U + rank(i, j) + 4U * rank(j, i) + same);
      first[j] += Rng::mixed(1U + rank(j, i) + 4U * rank(i, j) + same);
    }
  }
  for (std::size_t i = 0; i < wires; ++i) first[i] = Rng::mixed(first[i] + rank(i, i));
  std::array<std::uint64_t, wires> second = first;
  for (std::size_t i = 0; i < wires; ++i) {
    for (std::size_t j = 0; j < wires; ++j) {
      if (j != i) second[i] += first[j] * rank_factors[rank(i, j) + 4U * rank(j, i)];
    }
  }
  return second;
}

/// All orders that differ from a sorted one among wires of equal numbers, from a place on.
template <int wires>
void ClassFinder<wires>::try_orders(const std::array<std::uint64_t, wires>& numbers, int from,
                                    Order& order) {
  if (from == wires) {
    try_order(order);
    return;
  }
  const auto number_at = [&](int k) {
    return numbers[static_cast<std::size_t>(order[static_cast<std::size_t>(k)])];
  };
  for (int k = from; k < wires && number_at(k) == number_at(from); ++k) {
    std::swap(order[static_cast<std::size_t>(from)], order[static_cast<std::size_t>(k)]);
    try_orders(numbers, from + 1, order);
    std::swap(order[static_cast<std::size_t>(from)], order[static_cast<std::size_t>(k)]);
  }
}

template <int wires>
void ClassFinder<wires>::try_order(const Order& order) {
  ways_.assign(1, Gates{0x010101010101} * all_locals);
  for (std::size_t k = 0; k < least_.size(); ++k) {
    if (!add_row(order, k)) return;
  }
}

/// Keeps the ways that lead to the least row number k. False where another order has a smaller one.
template <int wires>
bool ClassFinder<wires>::add_row(const Order& order, std::size_t k) {
  static const ClassSteps& steps = class_steps();
  std::array<Block, wires> row{};
  // A column of which the later rows have one letter, or none, need not tell ways apart that do the
  // same to it.
  std::array<const std::uint8_t*, wires> closure{};
  for (std::size_t q = 0; q < wires; ++q) {
    row[q] = block(order[k], order[q]);
    unsigned letters = 1;
    for (std::size_t l = k + 1; l < wires; ++l) letters |= letters_in(block(order[l], order[q]));
    letters >>= 1;
    if ((letters & (letters - 1)) != 0) continue;
    closure[q] = steps.closure[static_cast<std::size_t>(std::bit_width(letters))].data();
  }
  next_ways_.clear();
  for (const Gates way : ways_) {
    for (unsigned own = 0; own < locals; ++own) {
      std::uint32_t found = 0;
      Gates gates = 0;
      for (std::size_t q = 0; q < wires; ++q) {
        const Least& least = steps.least[way >> (8 * q) & all_locals][own][row[q]];
        found = found << 4 | least.block;
        const std::uint8_t kept = closure[q] == nullptr ? least.gates : closure[q][least.gates];
        gates |= Gates{kept} << (8 * q);
      }
      if (found > least_[k]) continue;
      if (found < least_[k]) {
        least_[k] = found;
        std::fill(least_.begin() + static_cast<std::ptrdiff_t>(k) + 1, least_.end(), no_row);
        next_ways_.clear();
      }
      if (std::ranges::find(next_ways_, gates) == next_ways_.end()) next_ways_.push_back(gates);
    }
  }
  std::swap(ways_, next_ways_);
  return !ways_.empty();
}

template struct FewWireRows<3>;
template struct FewWireRows<4>;
template struct FewWireRows<5>;
template struct FewWireRows<6>;
template class ClassFinder<3>;
template class ClassFinder<4>;
template class ClassFinder<5>;
template class ClassFinder<6>;

}  // namespace zelt::braidwerk::internal
