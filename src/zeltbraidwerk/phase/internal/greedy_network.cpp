#include "zeltbraidwerk/phase/internal/greedy_network.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {
namespace {

class GreedyNetwork {
 public:
  GreedyNetwork(BitMatrix parities, const GreedyNetworkOptions& options, const Draw& draw)
      : parities_(std::move(parities)),
        map_(BitMatrix::identity(parities_.rows())),
        dual_(map_),
        options_(options),
        draw_(draw) {
    const auto n = static_cast<std::size_t>(parities_.rows());
    gain_.resize(n + 2);
    for (std::size_t w = 1; w < gain_.size(); ++w) {
      gain_[w] = std::pow(options.decay, static_cast<double>(w)) * (1 - options.decay);
    }
    weights_.resize(static_cast<std::size_t>(parities_.cols()));
    left_.resize(static_cast<std::size_t>(parities_.stride()));
    for (int r = 0; r < parities_.rows(); ++r) {
      for_each_bit(parities_.row(r), parities_.stride(), [&](int c) { ++weight(c); });
    }
    for (int c = 0; c < parities_.cols(); ++c) {
      left_[static_cast<std::size_t>(c / word_bits)] |= Word{1} << (c % word_bits);
    }
    serve();
  }

  bool run(const Control& control) {
    while (!lightest_.empty()) {
      stop_point();
      if (control.stop_requested()) return false;
      place(next());
      serve();
    }
    return true;
  }

  std::vector<PhaseStep> take() { return std::move(steps_); }

 private:
  int& weight(int column) { return weights_[static_cast<std::size_t>(column)]; }
  double gain(int w) const { return gain_[static_cast<std::size_t>(w)]; }

  /// Gives its phase to every parity that stands on a wire, and gathers the lightest others.
  void serve() {
    int least = parities_.rows() + 1;
    lightest_.clear();
    for_each_bit(left_.data(), parities_.stride(), [&](int c) {
      const int w = weight(c);
      if (w == 1) {
        int wire = 0;
        while (!parities_.get(wire, c)) ++wire;
        steps_.push_back(PhaseStep::phase(wire, c));
        left_[static_cast<std::size_t>(c / word_bits)] &= ~(Word{1} << (c % word_bits));
        return;
      }
      if (w < least) lightest_.clear();
      least = std::min(least, w);
      if (w == least) lightest_.push_back(c);
    });
  }

  /// What CNOT(control, target) is worth: it adds row `target` to row `control` of the table.
  double worth(int control, int target) {
    const Word* c = parities_.row(control);
    const Word* t = parities_.row(target);
    double sum = -options_.map_share * ones_added(control, target);
    for (int w = 0; w < parities_.stride(); ++w) {
      for (Word rest = t[w] & left_[static_cast<std::size_t>(w)]; rest != 0; rest &= rest - 1) {
        const int bit = std::countr_zero(rest);
        const int before = weight(w * word_bits + bit);
        sum += ((c[w] >> bit) & 1) != 0 ? gain(before - 1) : -gain(before);
      }
    }
    return sum;
  }

  /// How many ones CNOT(control, target) adds to the linear map and to its transposed inverse.
  int ones_added(int control, int target) const {
    const int words = map_.stride();
    return weight_of_sum(map_.row(control), map_.row(target), words) -
           internal::weight(map_.row(target), words) +
           weight_of_sum(dual_.row(control), dual_.row(target), words) -
           internal::weight(dual_.row(control), words);
  }

  std::pair<int, int> next() {
    tried_.assign(static_cast<std::size_t>(parities_.rows() * parities_.rows()), false);
    std::pair<int, int> best;
    double most = 0;
    int ties = 0;
    std::vector<int> support;
    for (const int column : lightest_) {
      support.clear();
      for (int r = 0; r < parities_.rows(); ++r) {
        if (parities_.get(r, column)) support.push_back(r);
      }
      for (const int c : support) {
        for (const int t : support) {
          const auto place = static_cast<std::size_t>(c * parities_.rows() + t);
          if (c == t || tried_[place]) continue;
          tried_[place] = true;
          const double value = worth(c, t);
          if (ties > 0 && value < most - 1e-12) continue;
          if (ties == 0 || value > most + 1e-12) {
            most = value;
            ties = 1;
          } else if (draw_(0, ties++) != 0) {
            continue;
          }
          best = {c, t};
        }
      }
    }
    return best;
  }

  void place(std::pair<int, int> gate) {
    const auto [control, target] = gate;
    steps_.push_back(PhaseStep::cnot(control, target));
    for_each_bit(parities_.row(target), parities_.stride(),
                 [&](int c) { weight(c) += parities_.get(control, c) ? -1 : 1; });
    parities_.add_row(target, control);
    map_.add_row(control, target);
    dual_.add_row(target, control);
  }

  BitMatrix parities_;
  BitMatrix map_;   // of the gates so far
  BitMatrix dual_;  // its transposed inverse
  const GreedyNetworkOptions options_;
  const Draw& draw_;
  std::vector<double> gain_;  // of a parity that becomes w heavy from w + 1
  std::vector<int> weights_;
  std::vector<Word> left_;  // columns without a phase yet
  std::vector<int> lightest_;
  std::vector<bool> tried_;
  std::vector<PhaseStep> steps_;
};

}  // namespace

std::optional<std::vector<PhaseStep>> greedy_network(BitMatrix parities,
                                                     const GreedyNetworkOptions& options,
                                                     const Draw& draw, const Control& control) {
  GreedyNetwork network(std::move(parities), options, draw);
  if (!network.run(control)) return std::nullopt;
  return network.take();
}

}  // namespace zelt::braidwerk::internal
