#include "zeltbraidwerk/pauli/search/internal/network_block.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "zeltbraidwerk/pauli/search/internal/block_bounds.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr int moves = NetworkBlock::moves;

constexpr std::uint8_t byte(std::uint64_t bytes, int k) {
  return static_cast<std::uint8_t>(bytes >> (8 * k));
}
/// What a label stands for.
std::uint8_t operator_of(std::uint64_t operators, End end) {
  unsigned result = 0;
  if ((label_of(end) & label_x) != 0) result ^= byte(operators, 2 * wire_of(end));
  if ((label_of(end) & label_z) != 0) result ^= byte(operators, 2 * wire_of(end) + 1);
  return static_cast<std::uint8_t>(result);
}
constexpr std::uint16_t bit_of(int rotation) {
  return static_cast<std::uint16_t>(1U << rotation);
}
constexpr bool clash(std::uint8_t a, std::uint8_t b) {
  const unsigned swapped = (b & 0x55U) << 1 | (b & 0xaaU) >> 1;
  return (std::popcount(a & swapped) & 1) != 0;
}

const BlockBounds& bounds() {
  static const BlockBounds& shared = BlockBounds::shared();
  return shared;
}

/// Moves come in turns by their numbers on places, every so many from a first one on.
constexpr std::array<int, 9> strides{1, 2, 4, 5, 7, 8, 10, 11, 13};  // prime to the number of moves
static_assert(moves == 27);
struct Turns {
  std::array<std::uint8_t, moves> move{};  // less the first one, by turn
  std::array<std::uint8_t, moves> turn{};
};
constexpr auto turns_by = [] {
  std::array<Turns, strides.size()> result{};
  for (std::size_t k = 0; k < strides.size(); ++k) {
    for (int turn = 0; turn < moves; ++turn) {
      const auto move = static_cast<std::uint8_t>(turn * strides[k] % moves);
      result[k].move[static_cast<std::size_t>(turn)] = move;
      result[k].turn[move] = static_cast<std::uint8_t>(turn);
    }
  }
  return result;
}();

/// By string: the end of its letter, where it is a single one; else 0.
constexpr auto single_end = [] {
  std::array<End, BlockBounds::strings> ends{};
  for (int q = 0; q < NetworkBlock::wires; ++q) {
    for (int label = 1; label <= 3; ++label) {
      ends[static_cast<std::size_t>(label << (2 * q))] = end_of(q, label);
    }
  }
  return ends;
}();

}  // namespace

/// Numbers of moves on places, where the wires of these are in some order, on the wires.
struct NetworkBlock::MovesOnWires {
  std::array<std::uint8_t, moves> number{};  // by that on places
  std::array<std::uint8_t, moves> given{};   // on places, by number
};

auto NetworkBlock::on_wires(const WireOrder& order) -> const MovesOnWires& {
  static constexpr auto by_order = [] {
    std::array<MovesOnWires, wires * wires> result{};
    for (int a = 0; a < wires; ++a) {
      for (int b = 0; b < wires; ++b) {
        if (a == b) continue;
        const std::array<int, wires> wire{a, b, 3 - a - b};
        const auto placed = [&](End end) {
          return end_of(wire[static_cast<std::size_t>(wire_of(end))], label_of(end));
        };
        MovesOnWires& of_order = result[static_cast<std::size_t>(wires * a + b)];
        for (std::size_t given = 0; given < moves; ++given) {
          const End first = placed(window_gates[given].a);
          const End second = placed(window_gates[given].b);
          const int number = move_number(std::min(first, second), std::max(first, second));
          of_order.number[given] = static_cast<std::uint8_t>(number);
          of_order.given[static_cast<std::size_t>(number)] = static_cast<std::uint8_t>(given);
        }
      }
    }
    return result;
  }();
  return by_order[static_cast<std::size_t>(wires * order[0] + order[1])];
}

int NetworkBlock::turn_of(int number) const {
  const int past = on_wires_->given[static_cast<std::size_t>(number)] - first_;
  return turns_by[stride_].turn[static_cast<std::size_t>(past < 0 ? past + moves : past)];
}

/// The move on places.
int NetworkBlock::given_at(int turn) const {
  const int given = turns_by[stride_].move[static_cast<std::size_t>(turn)] + first_;
  return given < moves ? given : given - moves;
}

bool NetworkBlock::read(const std::vector<NetworkEvent>& events, bool end_is_free,
                        const WireOrder& order, Exchange exchanged) {
  end_is_free_ = end_is_free;
  exchanged_ = exchanged;
  wire_ = order;
  on_wires_ = &on_wires(order);
  for (std::uint8_t place = 0; place < wires; ++place) place_[order[place]] = place;
  gates_ = rotations_ = 0;
  start_ = {};
  WindowRows labels = identity_rows_on(wires);
  auto& strings = start_.strings;
  for (const NetworkEvent& event : events) {
    const End a = on_wire(event.gate.a);
    if (event.row < 0) {
      const End b = on_wire(event.gate.b);
      const std::uint8_t of_a = operator_of(labels, a);
      const std::uint8_t of_b = operator_of(labels, b);
      const auto multiply = [&](End changed, std::uint8_t by) {
        for (const int bit : {label_x, label_z}) {
          if (label_of(changed) == bit) continue;
          labels ^= std::uint64_t{by} << (8 * (2 * wire_of(changed) + (bit == label_z ? 1 : 0)));
        }
      };
      multiply(a, of_b);
      multiply(b, of_a);
      ++gates_;
      continue;
    }
    if (rotations_ == most_rotations) return false;
    const std::uint8_t string = operator_of(labels, a);
    const auto k = static_cast<std::size_t>(rotations_);
    before_[k] = 0;
    std::uint64_t past = string;  // with all that must come before
    for (int other = 0; other < rotations_ && in_order_; ++other) {
      const auto o = static_cast<std::size_t>(other);
      if (!clash(strings[o], string)) continue;
      before_[k] |= bit_of(other);
      past += hash_[o] << 6;
    }
    hash_[k] = Rng::mixed(past);
    start_.hash += hash_[k];
    strings[k] = string;
    start_.left |= bit_of(rotations_);
    rows_[k] = event.row;
    ++rotations_;
  }
  const int a = 16 * order[static_cast<std::size_t>(exchanged.a)];
  const int b = 16 * order[static_cast<std::size_t>(exchanged.b)];
  const std::uint64_t different = (labels >> a ^ labels >> b) & 0xffff;
  labels ^= different << a ^ different << b;
  // Where the end is free, the operators tell no more than what became of the strings.
  start_.operators = end_is_free ? identity_rows_on(wires) : with_least_labels(labels);
  start_.number = end_is_free ? BlockBounds::free_end : bounds().number_of(start_.operators);
  start_.hash += Rng::mixed(start_.operators | std::uint64_t{end_is_free} << 63);
  return true;
}

/// Of the operators that a wire's labels stand for the two least: what the labels after the block
/// are called makes no difference.
std::uint64_t NetworkBlock::with_least_labels(std::uint64_t operators) {
  std::uint64_t result = 0;
  for (int q = 0; q < wires; ++q) {
    std::array<std::pair<std::uint8_t, int>, 3> labels;
    for (int label = 1; label <= 3; ++label) {
      labels[static_cast<std::size_t>(label - 1)] = {operator_of(operators, end_of(q, label)),
                                                     label};
    }
    const auto sort = [&](std::size_t a, std::size_t b) {
      if (labels[b] < labels[a]) std::swap(labels[a], labels[b]);
    };
    sort(0, 1), sort(1, 2), sort(0, 1);
    constexpr std::array<int, 3> names{label_x, label_z, label_y};
    for (std::size_t k = 0; k < 3; ++k) named_[end_of(q, labels[k].second)] = end_of(q, names[k]);
    result |= (std::uint64_t{labels[0].first} | std::uint64_t{labels[1].first} << 8) << (16 * q);
  }
  return result;
}

int NetworkBlock::least() const {
  const auto& bound = bounds().of(start_.number);
  int gates = bound[0].gates();
  for (unsigned rest = start_.left; rest != 0; rest &= rest - 1) {
    const auto k = static_cast<std::size_t>(std::countr_zero(rest));
    gates = std::max(gates, bound[start_.strings[k]].gates());
  }
  return gates;
}

/// Those with a single letter before which nothing must come; of those served nothing is left.
void NetworkBlock::serve(State& state) {
  unsigned single = 0;
  for (unsigned rest = state.left; rest != 0; rest &= rest - 1) {
    const int k = std::countr_zero(rest);
    const bool is_single = single_end[state.strings[static_cast<std::size_t>(k)]] != 0;
    single |= static_cast<unsigned>(is_single) << k;
  }
  // What comes before a rotation has a lower number.
  for (; single != 0; single &= single - 1) {
    const auto k = static_cast<std::size_t>(std::countr_zero(single));
    if ((before_[k] & state.left) != 0) continue;
    const End end = at_place(single_end[state.strings[k]]);
    found_.push_back({{end, end}, rows_[k]});
    state.left &= static_cast<Rows>(~bit_of(static_cast<int>(k)));
    state.hash -= hash_[k];
  }
}

void NetworkBlock::name_ends(const State& state) {
  for (int q = 0; q < wires; ++q) {
    for (int label = 1; label <= 3; ++label) {
      const End end = end_of(q, label);
      const int now = end_is_free_ ? label : operator_of(state.operators, named_[end]) >> (2 * q);
      ends_[at_place(end)] = at_place(end_of(q, now));
    }
  }
  for (int label = 1; label <= 3; ++label) {
    std::swap(ends_[end_of(exchanged_.a, label)], ends_[end_of(exchanged_.b, label)]);
  }
  renames_ = false;
  for (int place = 0; place < wires; ++place) {
    for (int label = 1; label <= 3; ++label) {
      const End end = end_of(place, label);
      renames_ |= ends_[end] != end;
    }
  }
}

bool NetworkBlock::descend(const State& state, int budget) {
  if (state.left == 0 && (end_is_free_ || state.number == BlockBounds::done)) {
    name_ends(state);
    return true;
  }
  if (budget == 0 || --patience_ < 0) return false;
  // Moves after which the operator or a string is shorter, and for each of both one gate less may
  // do.
  const BlockBounds::Bounds& bound = bounds().of(state.number);
  unsigned useful = bound[0].lowering();
  unsigned allowed = allowed_;
  const auto limit = [&](const BlockBounds::Bound& of_string) {
    const int spare = budget - of_string.gates();
    if (spare <= 1)
      allowed &= spare == 0 ? of_string.lowering() : spare < 0 ? 0 : of_string.keeping();
  };
  limit(bound[0]);
  for (unsigned rest = state.left; rest != 0; rest &= rest - 1) {
    const std::size_t string = state.strings[static_cast<std::size_t>(std::countr_zero(rest))];
    limit(bound[string]);
    useful |= string_moves.shortening[string];
  }
  useful &= allowed;
  unsigned turns = 0;
  for (; useful != 0; useful &= useful - 1) turns |= 1U << turn_of(std::countr_zero(useful));
  for (; turns != 0; turns &= turns - 1) {
    const int given = given_at(std::countr_zero(turns));
    const int number = on_wires_->number[static_cast<std::size_t>(given)];
    const auto& after = string_moves.after[static_cast<std::size_t>(number)];
    const Number next_number = bounds().after(state.number, number);
    const std::uint64_t operators =
        rows_through(window_gates[static_cast<std::size_t>(number)], state.operators);
    const std::uint64_t key = VainSearches::key(operators, state.hash, budget - 1);
    if (budget > 1) {
      const int nodes = vain_.find(key);
      if (nodes >= 0) {
        patience_ -= nodes;
        if (patience_ < 0) return false;
        continue;
      }
    }
    State next;
    next.operators = operators;
    next.number = next_number;
    next.left = state.left;
    next.hash = state.hash;
    for (unsigned rest = state.left; rest != 0; rest &= rest - 1) {
      const auto k = static_cast<std::size_t>(std::countr_zero(rest));
      next.strings[k] = after[state.strings[k]];
    }
    const std::size_t before = found_.size();
    found_.push_back({window_gates[static_cast<std::size_t>(given)], -1});
    serve(next);
    const int patience = patience_;
    if (descend(next, budget - 1)) return true;
    found_.resize(before);
    if (patience_ < 0) return false;
    if (budget > 1) vain_.add(key, patience - patience_);
  }
  return false;
}

/// Gates between the pairs of places.
unsigned NetworkBlock::moves_between(unsigned pairs) const {
  unsigned result = 0;
  for (std::size_t given = 0; given < moves; given += 9) {
    if ((pairs >> (given / 9) & 1) != 0) result |= 0x1ffU << (on_wires_->number[given] / 9 * 9);
  }
  return result;
}

bool NetworkBlock::rewrite(int most_gates, unsigned pairs, int patience, Rng& rng) {
  first_ = rng.below(moves);
  stride_ = static_cast<std::size_t>(rng.below(static_cast<int>(strides.size())));
  allowed_ = moves_between(pairs);
  State state = start_;
  state.hash += Rng::mixed(allowed_);
  const std::uint64_t key = VainSearches::key(state.operators, state.hash, most_gates);
  if (vain_.find(key) >= 0) return false;
  patience_ = patience;
  found_.clear();
  serve(state);
  if (descend(state, most_gates)) return true;
  if (patience_ >= 0) vain_.add(key, patience - patience_);
  return false;
}

}  // namespace zelt::braidwerk::internal
