#include "zeltbraidwerk/phase/search/internal/small_networks.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <unordered_set>
#include <utility>
#include <vector>

#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

namespace {

constexpr int most_small_wires = 6;
constexpr int most_parities = 32;
constexpr std::size_t most_tried = 1'000'000;  // parities behind gates, in hundredths of a second

/// Rows of six bits.
using Rows = std::uint64_t;

constexpr unsigned row_of(Rows rows, int k) {
  return static_cast<unsigned>(rows >> (most_small_wires * k) & 63);
}

constexpr Rows first_bits = 1 | 1ULL << 6 | 1ULL << 12 | 1ULL << 18 | 1ULL << 24 | 1ULL << 30;

struct State {
  Rows map;  ///< the inputs that each wire holds
  Rows way;  ///< the wires that each input is the sum of
  std::uint32_t shown;
};

/// By the map and what is shown; a number for both would leave out states that share it.
using Key = std::pair<Rows, std::uint32_t>;
struct Hash {
  std::size_t operator()(const Key& key) const {
    return Rng::mixed(key.first + Rng::mixed(key.second));
  }
};

struct Node {
  State state;
  std::size_t parent;  // on the level before
  Gate gate;
};

class SmallNetworks {
 public:
  SmallNetworks(const BitMatrix& parities, const Task& task) : n_(parities.rows()), task_(task) {
    const BitMatrix by_parity = parities.transposed();
    for (int p = 0; p < by_parity.rows(); ++p) {
      parities_.push_back(static_cast<unsigned>(by_parity.row(p)[0]));
    }
  }

  enum class Answer { yes, no, unknown };
  /// Whether there is a network of at most so many gates, which then is network().
  Answer takes(int gates) {
    Rows units = 0;
    for (int w = 0; w < n_; ++w) units |= Rows{1} << (most_small_wires * w + w);
    levels_.assign(1, {{{units, units, 0}, 0, {}}});
    seen_ = {{units, 0}};
    if (needed(levels_[0][0].state) > gates) return Answer::no;
    for (int left = gates; !levels_.back().empty(); --left) {
      const std::vector<Node> level = levels_.back();
      for (std::size_t k = 0; k < level.size(); ++k) {
        if (needed(level[k].state) > 0) continue;
        read_out(k);
        return Answer::yes;
      }
      levels_.emplace_back();
      for (std::size_t k = 0; k < level.size(); ++k) {
        if (tried_ > most_tried) return Answer::unknown;
        add_children(level[k].state, k, left - 1);
      }
    }
    return Answer::no;
  }
  GateList network() const { return network_; }

 private:
  bool undone() const { return task_.closes(); }

  bool at_home(unsigned inputs, int wire) const {
    return task_.in_place() ? inputs == 1U << wire : std::has_single_bit(inputs);
  }

  /// No fewer gates lead from the state to an end; 0 at an end alone.
  int needed(const State& state) const {
    int displaced = 0;
    for (int w = 0; w < n_ && undone(); ++w) displaced += at_home(row_of(state.map, w), w) ? 0 : 1;
    int unshown = 0;
    int farthest = 0;
    for (std::size_t p = 0; p < parities_.size(); ++p) {
      if ((state.shown >> p & 1) != 0) continue;
      ++unshown;
      unsigned wires = 0;
      for (int input = 0; input < n_; ++input) {
        if ((parities_[p] >> input & 1) != 0) wires ^= row_of(state.way, input);
      }
      const int back = undone() ? std::popcount(parities_[p]) - 1 : 0;
      farthest = std::max(farthest, std::popcount(wires) - 1 + back);
    }
    if (undone() && unshown > 0) displaced = std::max(displaced, 1);
    return std::max(unshown + displaced, farthest);
  }

  void add_children(const State& state, std::size_t parent, int most_behind) {
    for (int control = 0; control < n_; ++control) {
      for (int target = 0; target < n_; ++target) {
        if (control == target) continue;
        if (task_.device != nullptr && !task_.device->joined(control, target)) continue;
        tried_ += parities_.size() + 4;
        State child = state;
        child.map ^= Rows{row_of(state.map, control)} << (most_small_wires * target);
        child.way ^= (state.way >> target & first_bits) << control;
        const unsigned inputs = row_of(child.map, target);
        for (std::size_t p = 0; p < parities_.size(); ++p) {
          if (parities_[p] == inputs) child.shown |= 1U << p;
        }
        if (needed(child) > most_behind || !seen_.insert({child.map, child.shown}).second) continue;
        levels_.back().push_back({child, parent, cnot(control, target)});
      }
    }
  }

  /// From node k of the last level back.
  void read_out(std::size_t k) {
    network_ = GateList(n_, {});
    const Rows map = levels_.back()[k].state.map;
    for (int w = 0; w < n_ && undone(); ++w) {
      network_.frame.put_output(std::countr_zero(row_of(map, w)), w);
    }
    for (std::size_t level = levels_.size() - 1; level > 0; --level) {
      network_.gates.push_back(levels_[level][k].gate);
      k = levels_[level][k].parent;
    }
    std::ranges::reverse(network_.gates);
  }

  int n_;
  const Task& task_;
  std::vector<unsigned> parities_;
  std::vector<std::vector<Node>> levels_;
  std::unordered_set<Key, Hash> seen_;
  std::size_t tried_ = 0;
  GateList network_;
};

}  // namespace

SmallNetwork search_small_networks(const BitMatrix& parities, const Task& task, int least,
                                   int most) {
  if (parities.rows() > most_small_wires || parities.cols() > most_parities) return {least, {}};
  SmallNetworks networks(parities, task);
  for (; least < most; ++least) {
    const auto answer = networks.takes(least);
    if (answer == SmallNetworks::Answer::yes) return {least, networks.network()};
    if (answer == SmallNetworks::Answer::unknown) break;
  }
  return {least, {}};
}

}  // namespace zelt::braidwerk::internal
