#include "zeltbraidwerk/phase/search/internal/parity_rewriter.h"

#include <bit>
#include <cassert>
#include <utility>

namespace zelt::braidwerk::internal {

namespace {

constexpr SmallMatrix identity = 0x8421;
constexpr unsigned all_wires = 15;

constexpr unsigned row_of(SmallMatrix m, int r) {
  return (m >> (4 * r)) & 15U;
}

/// Runs a block on four wires; calls made(sum) with what each gate makes of its target.
template <class F>
SmallMatrix run_block(const std::vector<Gate>& block, const std::array<std::uint8_t, 5>& place,
                      F&& made) {
  SmallMatrix m = identity;
  for (const Gate& gate : block) {
    const int control = place[static_cast<std::size_t>(wire_of(gate.a))];
    const int target = place[static_cast<std::size_t>(wire_of(gate.b))];
    m ^= row_of(m, control) << (4 * target);
    made(row_of(m, target));
  }
  return m;
}

/// Swaps that put all outputs in their places.
int swaps_left(const WireFrame& frame) {
  static thread_local std::vector<char> seen;
  const auto n = static_cast<std::size_t>(frame.wires());
  seen.assign(n, 0);
  int swaps = static_cast<int>(n);
  for (std::size_t first = 0; first < n; ++first) {
    if (seen[first]) continue;
    --swaps;
    for (std::size_t x = first; !seen[x];) {
      seen[x] = 1;
      x = static_cast<std::size_t>(frame.output_on(static_cast<int>(x)));
    }
  }
  return swaps;
}

}  // namespace

ParityRewriter::ParityRewriter(const BitMatrix& parities, Outputs outputs, bool counts_swaps,
                               const BitGraph* graph)
    : n_(parities.rows()), outputs_(outputs), counts_swaps_(counts_swaps), graph_(graph) {
  for (int q = 0; q < n_; ++q) {
    print_.push_back(n_ <= word_bits ? Word{1} << q : Rng::mixed(static_cast<Word>(q) + 1));
  }
  const auto count = static_cast<std::size_t>(parities.cols());
  known_.resize(2 * std::bit_ceil(count + 1));
  shown_.resize(count);
  std::vector<std::uint64_t> prints(count);
  for (int q = 0; q < n_; ++q) {
    for_each_bit(parities.row(q), parities.stride(), [&](int p) {
      prints[static_cast<std::size_t>(p)] ^= print_[static_cast<std::size_t>(q)];
    });
  }
  for (std::size_t p = 0; p < count; ++p) {
    slot_of(prints[p]) = {prints[p], static_cast<std::int32_t>(p)};
  }
}

ParityRewriter::Value& ParityRewriter::slot_of(std::uint64_t print) {
  std::size_t slot = Rng::mixed(print) & (known_.size() - 1);
  while (known_[slot].parity >= 0 && known_[slot].print != print) {
    slot = (slot + 1) & (known_.size() - 1);
  }
  return known_[slot];
}

ParityRewriter::Value ParityRewriter::value_of(std::uint64_t print) const {
  std::size_t slot = Rng::mixed(print) & (known_.size() - 1);
  while (known_[slot].parity >= 0 && known_[slot].print != print) {
    slot = (slot + 1) & (known_.size() - 1);
  }
  return {print, known_[slot].parity};
}

void ParityRewriter::begin(const GateList& list) {
  std::fill(shown_.begin(), shown_.end(), 0);
  std::vector<std::uint64_t> prints = print_;
  const auto show = [&](std::uint64_t print) {
    const Value value = value_of(print);
    if (value.parity >= 0) ++shown_[static_cast<std::size_t>(value.parity)];
    return value;
  };
  for (const std::uint64_t print : prints) show(print);
  values_.clear();
  for (const Gate& gate : list.gates) {
    std::uint64_t& target = prints[static_cast<std::size_t>(wire_of(gate.b))];
    target ^= prints[static_cast<std::size_t>(wire_of(gate.a))];
    values_.push_back(show(target));
  }
}

int ParityRewriter::length(const GateList& list) const {
  return counts_swaps_ ? list.count() + swaps_left(list.frame) : list.count();
}

void ParityRewriter::place_wires(const Window& window) {
  if (graph_ == nullptr) return;
  const NamedGraph& named = least_graph(wires, edges_within(window, *graph_));
  edges_ = named.graph;
  place_ = named.names;
}

/// The map of the block, and which sums no gate outside of it shows.
void ParityRewriter::read_block(const Window& window) {
  std::array<std::int32_t, 16> times{};
  known_sums_ = 0;
  std::size_t k = 0;
  map_ = run_block(window.gates, place_, [&](unsigned sum) {
    sums_[sum] = values_[static_cast<std::size_t>(window.positions[k++])];
    known_sums_ |= 1U << sum;
    ++times[sum];
  });
  needed_ = 0;
  constexpr unsigned single = 1U << 1 | 1U << 2 | 1U << 4 | 1U << 8;
  for (unsigned rest = known_sums_ & ~single; rest != 0; rest &= rest - 1) {
    const auto sum = static_cast<std::size_t>(std::countr_zero(rest));
    const std::int32_t parity = sums_[sum].parity;
    if (parity >= 0 && shown_[static_cast<std::size_t>(parity)] == times[sum]) {
      needed_ = static_cast<SumSet>(needed_ | 1U << sum);
    }
  }
}

/// What enters the window: the last thing made on each wire before the block, or its input. Of the
/// gates skipped before the block, those on its wires stand after all of the block's on them.
void ParityRewriter::read_inputs(const GateList& list, const Window& window) {
  unsigned missing = all_wires;
  const auto set = [&](int k, const Value& value) {
    sums_[std::size_t{1} << place_[static_cast<std::size_t>(k)]] = value;
    missing &= ~(1U << k);
  };
  std::size_t in_block = 0;
  while (in_block < window.positions.size() && window.positions[in_block] < window.centre) {
    ++in_block;
  }
  for (int p = window.centre; p-- > 0 && missing != 0;) {
    if (in_block > 0 && window.positions[in_block - 1] == p) {
      --in_block;
      continue;
    }
    const int target = wire_of(list.gates[static_cast<std::size_t>(p)].b);
    for (int k = 0; k < wires; ++k) {
      if (window.wires[static_cast<std::size_t>(k)] == target && ((missing >> k) & 1U)) {
        set(k, values_[static_cast<std::size_t>(p)]);
      }
    }
  }
  for (int k = 0; k < wires; ++k) {
    if ((missing >> k) & 1U) {
      set(k, value_of(print_[window.wires[static_cast<std::size_t>(k)]]));
    }
  }
}

/// Whether a block that is longer by so much, and leaves its outputs so, makes the whole no longer.
bool ParityRewriter::gains(const GateList& list, const Window& window, int longer,
                           SmallMatrix left) const {
  if (left == identity) return longer <= 0;
  static thread_local WireFrame frame;
  frame = list.frame;
  for (int r = 0; r < wires; ++r) {
    const int c = std::countr_zero(row_of(left, r));
    const auto wire_at = [&](int place) {
      int k = 0;
      while (place_[static_cast<std::size_t>(k)] != place) ++k;
      return 4 * static_cast<std::size_t>(window.wires[static_cast<std::size_t>(k)]);
    };
    frame[wire_at(c)] = list.frame[wire_at(r)];
  }
  return longer + swaps_left(frame) <= swaps_left(list.frame);
}

/// The new block, on the table's places.
bool ParityRewriter::choose(const GateList& list, const Window& window, float uphill, Rng& rng,
                            Rewrite& rewrite) {
  const auto size = static_cast<int>(window.gates.size());
  const bool last = window.to_end == all_wires;
  if (outputs_ == Outputs::left_open && last) map_ = ParityTable::of(edges_, true).any_end(needed_);
  bool permuted = outputs_ != Outputs::in_place && (graph_ == nullptr || last);
  for (;;) {
    const ParityTable& table = ParityTable::of(edges_, permuted);
    const int distance = table.distance(map_, needed_);
    assert(permuted || counts_swaps_ || distance <= size);
    if (distance > size) return false;
    const bool detour = distance == size && rng.chance(uphill);
    const SmallMatrix left = table.descend(map_, needed_, detour, rng, rewrite.block);
    if (counts_swaps_ && permuted && !detour &&
        !gains(list, window, static_cast<int>(rewrite.block.size()) - size, left)) {
      rewrite.block.clear();
      permuted = false;
      continue;
    }
    if (left == identity) return true;
    rewrite.renames = true;
    for (int r = 0; r < wires; ++r) {
      const int c = std::countr_zero(row_of(left, r));
      for (int label = 0; label < 4; ++label) {
        rewrite.ends[static_cast<std::size_t>(r)][static_cast<std::size_t>(label)] =
            end_of(c, label);
      }
    }
    return true;
  }
}

void ParityRewriter::put_values(const GateList& list, const Window& window,
                                const std::vector<Gate>& block) {
  const auto count = [&](const Value& value, int times) {
    if (value.parity >= 0) shown_[static_cast<std::size_t>(value.parity)] += times;
  };
  for (const int p : window.positions) count(values_[static_cast<std::size_t>(p)], -1);
  made_.clear();
  bool entered = false;
  constexpr std::array<std::uint8_t, 5> as_they_are{0, 1, 2, 3, 4};
  run_block(block, as_they_are, [&](unsigned sum) {
    if (((known_sums_ >> sum) & 1U) == 0) {
      if (!entered) read_inputs(list, window);
      entered = true;
      std::uint64_t print = 0;
      for (unsigned rest = sum; rest != 0; rest &= rest - 1) {
        print ^= sums_[std::size_t{1} << std::countr_zero(rest)].print;
      }
      sums_[sum] = value_of(print);
      known_sums_ |= 1U << sum;
    }
    made_.push_back(sums_[sum]);
    count(sums_[sum], 1);
  });
  put_block(values_, window, made_);
}

bool ParityRewriter::rewrite(const GateList& list, const Window& window, float uphill, Rng& rng,
                             Rewrite& rewrite) {
  if (window.size < wires || window.gates.size() < (outputs_ == Outputs::left_open ? 1U : 2U)) {
    return false;
  }
  place_wires(window);
  read_block(window);
  if (!choose(list, window, uphill, rng, rewrite)) return false;
  put_values(list, window, rewrite.block);
  if (graph_ == nullptr) return true;
  // Back to the window's own places.
  std::array<int, wires> back{};
  for (int k = 0; k < wires; ++k) back[place_[static_cast<std::size_t>(k)]] = k;
  const auto own = [&](End end) {
    return end_of(back[static_cast<std::size_t>(wire_of(end))], label_of(end));
  };
  for (Gate& gate : rewrite.block) gate = {own(gate.a), own(gate.b)};
  if (!rewrite.renames) return true;
  const auto ends = rewrite.ends;
  for (int r = 0; r < wires; ++r) {
    for (std::size_t label = 0; label < 4; ++label) {
      rewrite.ends[static_cast<std::size_t>(back[static_cast<std::size_t>(r)])][label] =
          own(ends[static_cast<std::size_t>(r)][label]);
    }
  }
  return true;
}

}  // namespace zelt::braidwerk::internal
