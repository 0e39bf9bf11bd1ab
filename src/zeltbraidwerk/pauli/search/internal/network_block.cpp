#include "zeltbraidwerk/pauli/search/internal/network_block.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "zeltbraidwerk/clifford/search/internal/operator_table.h"

namespace zelt::braidwerk::internal {
namespace {

using Table = OperatorTable<NetworkBlock::wires>;
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

const OperatorTable<NetworkBlock::wires>& table() {
  static const auto& shared = OperatorTable<NetworkBlock::wires>::shared();
  return shared;
}

struct Move {
  int a;
  int b;
  int label_a;
  int label_b;

  /// Eight operators through the gate, each in its byte.
  std::uint64_t through(std::uint64_t operators) const {
    const auto anticommuting = [&](int wire, int label) {
      std::uint64_t odd = 0;
      if ((label & label_z) != 0) odd ^= operators >> (2 * wire);
      if ((label & label_x) != 0) odd ^= operators >> (2 * wire + 1);
      return odd & 0x0101010101010101;
    };
    return operators ^ (anticommuting(a, label_a) * static_cast<unsigned>(label_b)) << (2 * b) ^
           (anticommuting(b, label_b) * static_cast<unsigned>(label_a)) << (2 * a);
  }
};
constexpr auto block_moves = [] {
  std::array<Move, moves> result{};
  for (std::size_t k = 0; k < moves; ++k) {
    const Gate& gate = window_gates[k];
    result[k] = {wire_of(gate.a), wire_of(gate.b), label_of(gate.a), label_of(gate.b)};
  }
  return result;
}();

}  // namespace

/// What gates make of the strings of a state, rotations by bits: for each wire and each of the
/// three labels, in lanes of a word, those that have this label there, and those that anticommute.
class NetworkBlock::GatesOn {
 public:
  explicit GatesOn(const State& state) {
    for (std::size_t q = 0; q < wires; ++q) {
      const std::uint64_t x = state.letters[q].x;
      const std::uint64_t z = state.letters[q].z;
      is_[q] = (x & ~z) | (z & ~x) << lane | (x & z) << (2 * lane);
      anticommutes_[q] = z | x << lane | (x ^ z) << (2 * lane);
    }
  }

  /// The moves after which a string has fewer letters.
  unsigned useful() const {
    unsigned result = 0;
    for (int b = 1; b < wires; ++b) {
      for (int a = 0; a < b; ++a) {
        for (int label = 1; label <= 3; ++label) {
          const std::uint64_t fallen =
              (in_all_lanes(is(a, label)) & anticommutes_[static_cast<std::size_t>(b)]) |
              (is_[static_cast<std::size_t>(b)] & in_all_lanes(anticommutes(a, label)));
          result |= lanes_in_use(fallen) << move_number(end_of(a, label), end_of(b, 1));
        }
      }
    }
    return result;
  }
  /// One less than the most letters that a string has after the gate.
  int farthest(const Move& move) const {
    const unsigned fallen = (is(move.a, move.label_a) & anticommutes(move.b, move.label_b)) |
                            (is(move.b, move.label_b) & anticommutes(move.a, move.label_a));
    const unsigned on_a = on(move.a);
    const unsigned on_b = on(move.b);
    const unsigned on_other = on(3 - move.a - move.b);
    const unsigned both = (on_a & on_b & ~fallen) | (~on_a & anticommutes(move.b, move.label_b)) |
                          (~on_b & anticommutes(move.a, move.label_a));
    if ((both & on_other) != 0) return 2;
    return (both | (on_other & (on_a | on_b))) != 0 ? 1 : 0;
  }
  State after(const Move& move, const State& state, std::uint64_t operators) const {
    State next = state;
    next.operators = operators;
    const auto multiply = [&](int wire, int label, unsigned rows) {
      Letters& letters = letters_of(next, wire);
      if ((label & label_x) != 0) letters.x = static_cast<Rows>(letters.x ^ rows);
      if ((label & label_z) != 0) letters.z = static_cast<Rows>(letters.z ^ rows);
    };
    multiply(move.b, move.label_b, anticommutes(move.a, move.label_a));
    multiply(move.a, move.label_a, anticommutes(move.b, move.label_b));
    return next;
  }

 private:
  static constexpr int lane = 16;
  static constexpr std::uint64_t lowest = 0x0000'0001'0001'0001;

  static std::uint64_t in_all_lanes(unsigned rows) { return rows * lowest; }
  static unsigned lanes_in_use(std::uint64_t lanes) {
    constexpr std::uint64_t below_top = lowest * 0x7fff;
    const std::uint64_t used = ((((lanes & below_top) + below_top) | lanes) >> (lane - 1)) & lowest;
    return static_cast<unsigned>(used | used >> (lane - 1) | used >> (2 * (lane - 1))) & 7;
  }
  unsigned is(int wire, int label) const {
    return static_cast<Rows>(is_[static_cast<std::size_t>(wire)] >> (lane * (label - 1)));
  }
  unsigned anticommutes(int wire, int label) const {
    return static_cast<Rows>(anticommutes_[static_cast<std::size_t>(wire)] >> (lane * (label - 1)));
  }
  unsigned on(int wire) const { return anticommutes(wire, label_x) | anticommutes(wire, label_z); }

  std::array<std::uint64_t, wires> is_;
  std::array<std::uint64_t, wires> anticommutes_;
};

bool NetworkBlock::read(const std::vector<NetworkEvent>& events, bool end_is_free,
                        const WireOrder& order, Exchange exchanged) {
  end_is_free_ = end_is_free;
  exchanged_ = exchanged;
  wire_ = order;
  for (std::uint8_t place = 0; place < wires; ++place) place_[order[place]] = place;
  gates_ = rotations_ = 0;
  start_ = {};
  WindowRows labels = identity_rows_on(wires);
  std::array<std::uint8_t, most_rotations> strings;
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
    for (int q = 0; q < wires; ++q) {
      const int label = string >> (2 * q) & 3;
      if ((label & label_x) != 0) letters_of(start_, q).x |= bit_of(rotations_);
      if ((label & label_z) != 0) letters_of(start_, q).z |= bit_of(rotations_);
    }
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

/// One less than the most letters that a string has.
int NetworkBlock::farthest(const State& state) {
  const auto on = [&](std::size_t q) { return state.letters[q].x | state.letters[q].z; };
  const int a = on(0);
  const int b = on(1);
  const int c = on(2);
  return (a & b & c) != 0 ? 2 : ((a & b) | (c & (a | b))) != 0 ? 1 : 0;
}

int NetworkBlock::least() const {
  return std::max(farthest(start_), end_is_free_ ? 0 : table().find(start_.operators).distance);
}

/// Those with a single letter before which nothing must come; of those served nothing is left.
void NetworkBlock::serve(State& state) {
  for (bool again = true; again;) {
    again = false;
    const auto on = [&](std::size_t q) { return state.letters[q].x | state.letters[q].z; };
    const int several = (on(0) & on(1)) | (on(2) & (on(0) | on(1)));
    for (auto rest = static_cast<unsigned>((on(0) | on(1) | on(2)) & ~several); rest != 0;
         rest &= rest - 1) {
      const int k = std::countr_zero(rest);
      if ((before_[static_cast<std::size_t>(k)] & state.left) != 0) continue;
      const auto gone = static_cast<Rows>(~bit_of(k));
      for (int q = 0; q < wires; ++q) {
        Letters& letters = letters_of(state, q);
        const int label = (letters.x >> k & 1) * label_x + (letters.z >> k & 1) * label_z;
        if (label == 0) continue;
        const End end = at_place(end_of(q, label));
        found_.push_back({{end, end}, rows_[static_cast<std::size_t>(k)]});
        letters.x &= gone;
        letters.z &= gone;
      }
      state.left &= gone;
      state.hash -= hash_[static_cast<std::size_t>(k)];
      again = in_order_;
    }
  }
}

/// Every qubit is on its own wire again.
bool NetworkBlock::is_done(const State& state) const {
  if (state.left != 0) return false;
  for (int k = 0; k < 2 * wires && !end_is_free_; ++k) {
    if ((byte(state.operators, k) & ~(3U << (2 * (k / 2)))) != 0) return false;
  }
  return true;
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
}

bool NetworkBlock::descend(const State& state, int budget) {
  if (is_done(state)) {
    name_ends(state);
    return true;
  }
  if (budget == 0 || --patience_ < 0) return false;
  // What is left to undo takes a gate less after the moves `down`, and at most a gate more
  // otherwise.
  const auto [distance, down] = end_is_free_ ? Table::Entry{-1, 0} : table().find(state.operators);
  if (budget == 1 && distance == 0) return false;
  const GatesOn gates(state);
  unsigned useful = static_cast<unsigned>(down);
  if (distance < budget && state.left != 0) useful |= gates.useful();
  useful &= allowed_;
  unsigned turns = 0;
  for (; useful != 0; useful &= useful - 1) {
    turns |= 1U << turn_[static_cast<std::size_t>(std::countr_zero(useful))];
  }
  for (; turns != 0; turns &= turns - 1) {
    const auto turn = static_cast<std::size_t>(std::countr_zero(turns));
    const int number = number_[turn];
    const bool undoes = (down >> number & 1) != 0;
    const Move& move = block_moves[static_cast<std::size_t>(number)];
    if (budget <= 2 && gates.farthest(move) > budget - 1) continue;
    const std::uint64_t operators = move.through(state.operators);
    if (!undoes && distance == budget - 1 && table().find(operators).distance > distance) {
      continue;
    }
    const std::uint64_t key = VainSearches::key(operators, state.hash, budget - 1);
    if (budget > 1) {
      const int nodes = vain_.find(key);
      if (nodes >= 0) {
        patience_ -= nodes;
        if (patience_ < 0) return false;
        continue;
      }
    }
    State next = gates.after(move, state, operators);
    const std::size_t before = found_.size();
    found_.push_back({window_gates[static_cast<std::size_t>(given_[turn])], -1});
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
void NetworkBlock::allow(unsigned pairs) {
  allowed_ = 0;
  for (int b = 1; b < wires; ++b) {
    for (int a = 0; a < b; ++a) {
      if ((pairs >> (b * (b - 1) / 2 + a) & 1) == 0) continue;
      const auto [low, high] = std::minmax({on_wire(end_of(a, 1)), on_wire(end_of(b, 1))});
      allowed_ |= 0x1ffU << move_number(low, high);
    }
  }
}

/// By their numbers on places, every so many.
void NetworkBlock::order_moves(int first, int stride) {
  for (int turn = 0, given = first; turn < moves; ++turn) {
    const Gate& gate = window_gates[static_cast<std::size_t>(given)];
    const auto [low, high] = std::minmax({on_wire(gate.a), on_wire(gate.b)});
    const int number = move_number(low, high);
    turn_[static_cast<std::size_t>(number)] = static_cast<std::uint8_t>(turn);
    number_[static_cast<std::size_t>(turn)] = static_cast<std::uint8_t>(number);
    given_[static_cast<std::size_t>(turn)] = static_cast<std::uint8_t>(given);
    given += stride;
    if (given >= moves) given -= moves;
  }
}

bool NetworkBlock::rewrite(int most_gates, unsigned pairs, int patience, Rng& rng) {
  constexpr int strides[] = {1, 2, 4, 5, 7, 8, 10, 11, 13};  // prime to the number of moves
  static_assert(moves == 27);
  const int first = rng.below(moves);
  const int stride = strides[rng.below(static_cast<int>(std::size(strides)))];
  allow(pairs);
  State state = start_;
  state.hash += Rng::mixed(allowed_);
  const std::uint64_t key = VainSearches::key(state.operators, state.hash, most_gates);
  if (vain_.find(key) >= 0) return false;
  order_moves(first, stride);
  patience_ = patience;
  found_.clear();
  serve(state);
  if (descend(state, most_gates)) return true;
  if (patience_ >= 0) vain_.add(key, patience - patience_);
  return false;
}

}  // namespace zelt::braidwerk::internal
