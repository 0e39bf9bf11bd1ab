#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/pauli/search/internal/network_bound.h"
#include "zeltbraidwerk/pauli/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/level_search.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

namespace {

constexpr int most_small_wires = 4;  // a string is a byte
constexpr int most_rotations = 32;   // those served are bits of a word

/// A string on up to four qubits: the X and Z bits of qubit q in bits 2 q and 2 q + 1.
using SmallString = std::uint8_t;

bool clash(SmallString a, SmallString b) {
  const unsigned turned = (b & 0x55U) << 1 | (b & 0xaaU) >> 1;
  return (std::popcount(a & turned) & 1) != 0;
}

/// The strings that stand on a wire as its labels, up to signs and names: the first two of three in
/// order, the third is their product.
using Labels = std::array<SmallString, 2>;

Labels labels_of(SmallString a, SmallString b) {
  std::array<SmallString, 3> all{a, b, static_cast<SmallString>(a ^ b)};
  std::ranges::sort(all);
  return {all[0], all[1]};
}

/// Networks of rotations as a problem of a level search.
class SmallNetworks {
 public:
  struct State {
    std::array<Labels, most_small_wires> wires;
    std::uint32_t served;
    bool operator==(const State&) const = default;
  };

  struct Hash {
    std::size_t operator()(const State& state) const {
      std::uint64_t hash = state.served;
      for (const Labels& labels : state.wires) {
        hash = Rng::mixed(hash + (std::uint64_t{labels[0]} << 8 | labels[1]) + 0x9e3779b97f4a7c15U);
      }
      return hash;
    }
  };
  using Key = State;
  /// The gate itself is not asked for.
  struct Move {};

  SmallNetworks(const PauliFrame& strings, const NetworkTask& task)
      : n_(strings.qubits()), task_(task) {
    for (int row = 0; row < strings.rows(); ++row) {
      SmallString string = 0;
      for (int q = 0; q < n_; ++q) {
        if (strings.x_planes().get(q, row)) string |= static_cast<SmallString>(1U << 2 * q);
        if (strings.z_planes().get(q, row)) string |= static_cast<SmallString>(2U << 2 * q);
      }
      if (string == 0) continue;
      std::uint32_t before = 0;
      for (std::size_t k = 0; task.in_order && k < strings_.size(); ++k) {
        if (clash(strings_[k], string)) before |= 1U << k;
      }
      strings_.push_back(string);
      before_.push_back(before);
    }
  }

  State start() const {
    State first{};
    for (int q = 0; q < n_; ++q) first.wires[static_cast<std::size_t>(q)] = own_labels(q);
    serve(first);
    return first;
  }
  const Key& key(const State& state) const { return state; }
  std::size_t work_of_child() const { return strings_.size() + most_small_wires; }

  bool is_done(const State& state) const {
    bool done = state.served == all();
    for (int w = 0; w < n_ && task_.closes(); ++w) done = done && gates_home(state, w) == 0;
    return done;
  }

  /// No fewer gates lead from the state to an end: what one string needs, and half of what the
  /// wires do. One that is at home, but has a letter of a string, meets two gates where it is to be
  /// at home again.
  int needed(const State& state) const {
    int gates = 0;
    unsigned in_strings = 0;
    for (std::size_t k = 0; k < strings_.size(); ++k) {
      if ((state.served >> k & 1) != 0) continue;
      const unsigned wires = wires_of(state, strings_[k]);
      if (std::popcount(wires) > 1) in_strings |= wires;
      const int back = task_.closes() ? letters(strings_[k]) - 1 : 0;
      gates = std::max(gates, std::popcount(wires) - 1 + back);
    }
    int meetings = 0;
    for (int w = 0; w < n_; ++w) {
      const int home = task_.closes() ? gates_home(state, w) : 0;
      const bool leaves = home == 0 && (in_strings >> w & 1) != 0;
      meetings += leaves ? (task_.closes() ? 2 : 1) : home;
    }
    return std::max(gates, (meetings + 1) / 2);
  }

  template <class Sink>
  void each_child(const State& state, Sink&& sink) const {
    for (std::size_t b = 1; b < static_cast<std::size_t>(n_); ++b) {
      for (std::size_t a = 0; a < b; ++a) {
        if (task_.device != nullptr &&
            !task_.device->joined(static_cast<int>(a), static_cast<int>(b))) {
          continue;
        }
        for (int gate = 0; gate < 9; ++gate) sink(child_of(state, a, b, gate), Move{});
      }
    }
  }

 private:
  static Labels own_labels(int q) {
    return labels_of(static_cast<SmallString>(1U << 2 * q), static_cast<SmallString>(2U << 2 * q));
  }
  std::uint32_t all() const {
    return static_cast<std::uint32_t>((std::uint64_t{1} << strings_.size()) - 1);
  }

  bool is_on_a_wire(const State& state, SmallString string) const {
    return std::any_of(state.wires.begin(), state.wires.begin() + n_, [&](const Labels& labels) {
      return string == labels[0] || string == labels[1] || string == (labels[0] ^ labels[1]);
    });
  }
  void serve(State& state) const {
    // Rotations that must come before are earlier ones, so that one pass serves all.
    for (std::size_t k = 0; k < strings_.size(); ++k) {
      if ((state.served >> k & 1) != 0 || (before_[k] & ~state.served) != 0) continue;
      if (is_on_a_wire(state, strings_[k])) state.served |= 1U << k;
    }
  }

  /// No fewer gates on a wire bring its labels to the qubit where they are to be: the rank of what
  /// they have on the others.
  int gates_home(const State& state, int w) const {
    int fewest = 2;
    for (int q = 0; q < n_; ++q) {
      if (task_.in_place() && q != w) continue;
      const unsigned beside = ~(3U << 2 * q);
      const unsigned a = state.wires[static_cast<std::size_t>(w)][0] & beside;
      const unsigned b = state.wires[static_cast<std::size_t>(w)][1] & beside;
      fewest = std::min(fewest, a == 0 && b == 0 ? 0 : a == 0 || b == 0 || a == b ? 1 : 2);
    }
    return fewest;
  }
  /// Those on which a string has letters now, as bits.
  unsigned wires_of(const State& state, SmallString string) const {
    unsigned wires = 0;
    for (int w = 0; w < n_; ++w) {
      const Labels& labels = state.wires[static_cast<std::size_t>(w)];
      if (clash(labels[0], string) || clash(labels[1], string)) wires |= 1U << w;
    }
    return wires;
  }
  static int letters(SmallString string) {
    return std::popcount((string | static_cast<unsigned>(string) >> 1) & 0x55U);
  }

  /// The label of each wire that a gate keeps is multiplied to the others of the other wire.
  State child_of(const State& state, std::size_t a, std::size_t b, int gate) const {
    const auto turned = [](const Labels& labels, int which) {
      const auto third = static_cast<SmallString>(labels[0] ^ labels[1]);
      return which == 0 ? labels : which == 1 ? Labels{labels[1], third} : Labels{third, labels[0]};
    };
    const Labels on_a = turned(state.wires[a], gate / 3);
    const Labels on_b = turned(state.wires[b], gate % 3);
    State child = state;
    child.wires[a] = labels_of(on_a[0], static_cast<SmallString>(on_a[1] ^ on_b[0]));
    child.wires[b] = labels_of(on_b[0], static_cast<SmallString>(on_b[1] ^ on_a[0]));
    serve(child);
    return child;
  }

  int n_;
  const NetworkTask& task_;
  std::vector<SmallString> strings_;
  std::vector<std::uint32_t> before_;  // rotations that have to come first
};

}  // namespace

int fewest_network_gates(const PauliFrame& strings, const NetworkTask& task, int least, int most) {
  if (strings.qubits() > most_small_wires || strings.rows() > most_rotations) return least;
  const SmallNetworks networks(strings, task);
  return LevelSearch(networks, small_network_tuning.most_work).run(least, most).least;
}

}  // namespace zelt::braidwerk::internal
