#include "zeltbraidwerk/clifford/search/internal/closing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <utility>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/placed_rewriter.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/clifford/search/internal/window_rewriter.h"
#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {
namespace {

/// The output that is found on each wire.
using Permutation = std::vector<int>;

int exchanges_left(const Permutation& permutation) {
  std::vector<bool> seen(permutation.size());
  int exchanges = 0;
  for (std::size_t first = 0; first < permutation.size(); ++first) {
    for (std::size_t k = first; !seen[k]; k = static_cast<std::size_t>(permutation[k])) {
      seen[k] = true;
      if (k != first) ++exchanges;
    }
  }
  return exchanges;
}

/// A walk that closes: an exchange of outputs that is left counts as some gates.
class ClosingRewriter {
 public:
  static constexpr Gathering gathering = Gathering::by_labels;
  static constexpr bool judges = false;

  ClosingRewriter(const GateList& list, int window) : window_(window) {
    for (int wire = 0; wire < list.wires(); ++wire) {
      permutation_.push_back(list.frame.output_on(wire));
    }
    left_ = exchanges_left(permutation_);
  }

  bool done() const { return left_ == 0; }
  int window_size(Rng&) const { return window_; }

  bool rewrite(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) {
    switch (window.size) {
      case 2:
        return rewrite_on<2>(window, uphill, rng, rewrite);
      case 3:
        return rewrite_on<3>(window, uphill, rng, rewrite);
      default:
        return rewrite_on<4>(window, uphill, rng, rewrite);
    }
  }

 private:
  template <int wires>
  bool rewrite_on(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) {
    const Places<wires> places = random_places<wires>(rng);
    Permutation after = reordered(window, places);
    const int left = exchanges_left(after);
    read_ends<wires>(
        append_reordered_circuit<wires>(PlacedTable<wires>::shared(), rows_of(window.gates, wires),
                                        places, false, rng, rewrite.block),
        rewrite);
    const float rise = static_cast<float>(rewrite.block.size()) -
                       static_cast<float>(window.gates.size()) +
                       clifford_tuning.exchange_price * static_cast<float>(left - left_);
    if (rise > 0 && !rng.chance(std::pow(uphill, rise))) return false;
    permutation_ = std::move(after);
    left_ = left;
    return true;
  }

  template <std::size_t wires>
  Permutation reordered(const Window& window, const Places<wires>& places) const {
    Permutation result = permutation_;
    for (std::size_t place = 0; place < wires; ++place) {
      result[window.wires[place]] =
          permutation_[static_cast<std::size_t>(window.wires[places[place]])];
    }
    return result;
  }

  int window_;
  Permutation permutation_;
  int left_;
};

/// Three gates of equal labels exchange two wires.
void exchange_by_gates(GateList& list) {
  for (int wire = 0; wire < list.wires(); ++wire) {
    for (int other = list.frame.output_on(wire); other != wire;
         other = list.frame.output_on(wire)) {
      for (int label = 0; label < 4; ++label) {
        const End a = end_of(wire, label);
        const End b = end_of(other, label);
        if (label != 0) list.gates.push_back({a, b});
        std::swap(list.frame[a], list.frame[b]);
      }
    }
  }
}

}  // namespace

GateList with_outputs_in_place(const GateList& list, int window, Rng& rng) {
  ClosingRewriter rewriter(list, window);
  Walk<ClosingRewriter> walk(list, rewriter);
  const int steps = clifford_tuning.closing_steps * list.wires();
  for (int step = 0; step < steps && !rewriter.done(); ++step) {
    stop_point();
    walk.step(clifford_tuning.cooling_closing.at(static_cast<double>(step) / steps), rng);
  }
  GateList result = walk.list();
  exchange_by_gates(result);
  return result;
}

GateList with_layers_of_swaps(GateList list) {
  const WireFrame found = list.frame;
  std::vector<bool> seen(static_cast<std::size_t>(list.wires()));
  for (int first = 0; first < list.wires(); ++first) {
    std::vector<int> cycle;  // what is on one wire belongs on the next
    for (int wire = first; !seen[static_cast<std::size_t>(wire)]; wire = found.output_on(wire)) {
      seen[static_cast<std::size_t>(wire)] = true;
      cycle.push_back(wire);
    }
    const int length = static_cast<int>(cycle.size());
    for (int reflection = 0; reflection < 2; ++reflection) {
      for (int k = 0; k < length; ++k) {
        const int other = (length + reflection - k) % length;
        if (k >= other) continue;
        const int a = cycle[static_cast<std::size_t>(k)];
        const int b = cycle[static_cast<std::size_t>(other)];
        for (int label = 0; label < 4; ++label) {
          if (label != label_wire) list.gates.push_back({end_of(a, label), end_of(b, label)});
          std::swap(list.frame[end_of(a, label)], list.frame[end_of(b, label)]);
        }
      }
    }
  }
  return list;
}

}  // namespace zelt::braidwerk::internal
