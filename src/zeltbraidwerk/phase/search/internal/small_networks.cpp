#include "zeltbraidwerk/phase/search/internal/small_networks.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "zeltbraidwerk/search/internal/level_search.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

namespace {

constexpr int most_small_wires = 6;
constexpr int most_parities = 32;
constexpr std::size_t most_work = 1'000'000;  // parities after gates: some hundredths of a second

/// Rows of six bits.
using Rows = std::uint64_t;

constexpr unsigned row_of(Rows rows, int k) {
  return static_cast<unsigned>(rows >> (most_small_wires * k) & 63);
}

constexpr Rows first_bits = 1 | 1ULL << 6 | 1ULL << 12 | 1ULL << 18 | 1ULL << 24 | 1ULL << 30;

/// Networks of parities as a problem of a level search.
class SmallNetworks {
 public:
  struct State {
    Rows map;     ///< the inputs that each wire holds
    Rows stands;  ///< the wires that each input is the sum of
    std::uint32_t shown;
  };
  using Move = Gate;
  /// By the map and what is shown; a number for both would leave out states that share it.
  using Key = std::pair<Rows, std::uint32_t>;
  struct Hash {
    std::size_t operator()(const Key& key) const {
      return Rng::mixed(key.first + Rng::mixed(key.second));
    }
  };

  SmallNetworks(const BitMatrix& parities, const Task& task) : n_(parities.rows()), task_(task) {
    const BitMatrix by_parity = parities.transposed();
    for (int p = 0; p < by_parity.rows(); ++p) {
      parities_.push_back(static_cast<unsigned>(by_parity.row(p)[0]));
    }
  }

  State start() const {
    Rows units = 0;
    for (int w = 0; w < n_; ++w) units |= Rows{1} << (most_small_wires * w + w);
    return {units, units, 0};
  }
  Key key(const State& state) const { return {state.map, state.shown}; }
  bool is_done(const State& state) const { return needed(state) == 0; }
  std::size_t work_of_child() const { return parities_.size() + 4; }

  /// 0 at an end alone.
  int needed(const State& state) const {
    int displaced = 0;
    for (int w = 0; w < n_ && task_.closes(); ++w)
      displaced += at_home(row_of(state.map, w), w) ? 0 : 1;
    int unshown = 0;
    int farthest = 0;
    for (std::size_t p = 0; p < parities_.size(); ++p) {
      if ((state.shown >> p & 1) != 0) continue;
      ++unshown;
      unsigned wires = 0;
      for (int input = 0; input < n_; ++input) {
        if ((parities_[p] >> input & 1) != 0) wires ^= row_of(state.stands, input);
      }
      const int back = task_.closes() ? std::popcount(parities_[p]) - 1 : 0;
      farthest = std::max(farthest, std::popcount(wires) - 1 + back);
    }
    if (task_.closes() && unshown > 0) displaced = std::max(displaced, 1);
    return std::max(unshown + displaced, farthest);
  }

  template <class Sink>
  void each_child(const State& state, Sink&& sink) const {
    for (int control = 0; control < n_; ++control) {
      for (int target = 0; target < n_; ++target) {
        if (control == target) continue;
        if (task_.device != nullptr && !task_.device->joined(control, target)) continue;
        State child = state;
        child.map ^= Rows{row_of(state.map, control)} << (most_small_wires * target);
        child.stands ^= (state.stands >> target & first_bits) << control;
        const unsigned inputs = row_of(child.map, target);
        for (std::size_t p = 0; p < parities_.size(); ++p) {
          if (parities_[p] == inputs) child.shown |= 1U << p;
        }
        sink(child, cnot(control, target));
      }
    }
  }

 private:
  bool at_home(unsigned inputs, int wire) const {
    return task_.in_place() ? inputs == 1U << wire : std::has_single_bit(inputs);
  }

  int n_;
  const Task& task_;
  std::vector<unsigned> parities_;
};

}  // namespace

SmallNetwork search_small_networks(const BitMatrix& parities, const Task& task, int least,
                                   int most) {
  const int n = parities.rows();
  if (n > most_small_wires || parities.cols() > most_parities) return {least, {}};
  const SmallNetworks networks(parities, task);
  auto found = LevelSearch(networks, most_work).run(least, most);
  if (!found.end) return {found.least, {}};
  GateList network(n, std::move(found.moves));
  for (int w = 0; w < n && task.closes(); ++w) {
    network.frame.put_output(std::countr_zero(row_of(found.end->map, w)), w);
  }
  return {found.least, std::move(network)};
}

}  // namespace zelt::braidwerk::internal
