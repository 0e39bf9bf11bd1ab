#include "zeltbraidwerk/linear/search/internal/decoded_elimination.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "zeltbraidwerk/linear/search/internal/blocks.h"
#include "zeltbraidwerk/linear/search/internal/cnot_search.h"
#include "zeltbraidwerk/linear/search/internal/decoded_receiving.h"
#include "zeltbraidwerk/linear/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/orders.h"

namespace zelt::braidwerk::internal {
namespace {

/// The first rows that are independent of the ones before.
std::vector<int> independent_rows(BitMatrix m) {
  std::vector<int> found;
  std::vector<int> pivots;
  for (int r = 0; r < m.rows(); ++r) {
    for (std::size_t k = 0; k < found.size(); ++k) {
      if (m.get(r, pivots[k])) m.add_row(found[k], r);
    }
    int pivot = 0;
    while (pivot < m.cols() && !m.get(r, pivot)) ++pivot;
    if (pivot == m.cols()) continue;
    found.push_back(r);
    pivots.push_back(pivot);
  }
  return found;
}

template <class T>
std::vector<T> those(const std::vector<T>& all, const std::vector<int>& places) {
  std::vector<T> chosen;
  for (const int k : places) chosen.push_back(all[static_cast<std::size_t>(k)]);
  return chosen;
}

BitMatrix sum(BitMatrix a, const BitMatrix& b) {
  for (int r = 0; r < a.rows(); ++r) {
    for (int w = 0; w < a.stride(); ++w) a.row(r)[w] ^= b.row(r)[w];
  }
  return a;
}

class Elimination {
 public:
  Elimination(const BitMatrix& m, int window, Rng& rng, Meter& meter)
      : left_(m), window_(window), rng_(rng), meter_(meter) {
    const auto draw = [&](int, int last) { return rng.below(last + 1); };
    wires_ = shuffled(m.rows(), draw);
    outputs_ = shuffled(m.rows(), draw);
  }

  int wires_left() const { return static_cast<int>(wires_.size()); }

  /// The next wires, about so many of steps for their circuit and as many to decode.
  void take_block(int size, std::uint64_t search_steps, double decoding_steps) {
    choose(size);
    const BitMatrix map = make_independent();
    Receiving others(lacking_, receivers());
    search(map, search_steps, others);
    if (meter_.ended()) return;
    const bool is_done = others.receive(decoding_steps, rng_, [this](double steps) {
      meter_.charge(static_cast<std::uint64_t>(steps));
      return !meter_.ended();
    });
    if (!is_done) return;
    for (const Gate& gate : others.gates()) {
      circuit_.push_back(gate);
      left_.add_col(wire_of(gate.b), wire_of(gate.a));
    }
    wires_ = later_;
    outputs_ = later_outputs_;
    done_.insert(done_.end(), found_outputs_.begin(), found_outputs_.end());
    done_wires_.insert(done_wires_.end(), block_.begin(), block_.end());
  }

  GateList circuit() const {
    GateList list(left_.rows(), circuit_);
    for (std::size_t k = 0; k < done_.size(); ++k) list.frame.put_output(done_[k], done_wires_[k]);
    return list;
  }

 private:
  BitMatrix part(const std::vector<int>& outputs, const std::vector<int>& wires) const {
    return block_matrix(left_, {outputs, wires});
  }

  /// The wires of the block, and its outputs, so that the others map to each other one to one.
  void choose(int size) {
    block_.assign(wires_.begin(), wires_.begin() + size);
    later_.assign(wires_.begin() + size, wires_.end());
    const std::vector<int> kept = independent_rows(part(outputs_, later_));
    later_outputs_ = those(outputs_, kept);
    found_outputs_.clear();
    for (const int output : outputs_) {
      if (std::ranges::count(later_outputs_, output) == 0) found_outputs_.push_back(output);
    }
  }

  /// Finds what the others lack: what later wires receive frees their outputs of the block. Returns
  /// the map that is left for the block.
  BitMatrix make_independent() {
    lacking_ = product(inverse(part(later_outputs_, later_)), part(later_outputs_, block_));
    const auto without_later = [&](const std::vector<int>& outputs) {
      return sum(part(outputs, block_), product(part(outputs, later_), lacking_));
    };
    BitMatrix map = without_later(found_outputs_);
    const int done = static_cast<int>(done_.size());
    const BitMatrix of_done = without_later(done_);
    BitMatrix all(static_cast<int>(later_.size()) + done, map.cols());
    for (int r = 0; r < all.rows(); ++r) {
      const int later = lacking_.rows();
      const Word* row = r < later ? lacking_.row(r) : of_done.row(r - later);
      std::copy_n(row, all.stride(), all.row(r));
    }
    lacking_ = std::move(all);
    return map;
  }

  /// Later wires pass on what they lack; what is done must stay so.
  std::vector<Receiver> receivers() const {
    std::vector<Receiver> all;
    for (const int wire : later_) all.push_back({end_of(wire, label_x), end_of(wire, label_z)});
    for (const int wire : done_wires_) all.push_back({end_of(wire, label_x), std::nullopt});
    return all;
  }

  /// A circuit of the block, and the parities that it passes by.
  void search(const BitMatrix& map, std::uint64_t steps, Receiving& others) {
    Effort effort;
    effort.control = meter_.control();
    effort.steps = std::min(steps, meter_.left());
    const Task task{.outputs = Outputs::anywhere, .seed = rng_.next()};
    const GateList list = search_cnot(map, task, effort, window_);
    meter_.charge(effort.steps);
    const int size = map.rows();
    BitMatrix now = BitMatrix::identity(size);
    const auto control = [&](int w) {
      return end_of(block_[static_cast<std::size_t>(w)], label_z);
    };
    for (int w = 0; w < size; ++w) others.add(control(w), now.row(w));
    for (const Gate& gate : list.gates) {
      const int to = wire_of(gate.b);
      now.add_row(wire_of(gate.a), to);
      others.put(cnot(wire_of(control(wire_of(gate.a))), wire_of(control(to))));
      others.add(control(to), now.row(to));
    }
    std::vector<int> order;
    for (int w = 0; w < size; ++w) order.push_back(list.frame.output_on(w));
    found_outputs_ = those(found_outputs_, order);
  }

  BitMatrix left_;  // outputs, by what is on the wires now
  int window_;
  Rng& rng_;
  Meter& meter_;
  std::vector<Gate> circuit_;
  std::vector<int> wires_;  // not yet in a block
  std::vector<int> outputs_;
  std::vector<int> done_;  // outputs that blocks have found, and their wires
  std::vector<int> done_wires_;
  // Of the block.
  std::vector<int> block_;
  std::vector<int> found_outputs_;
  std::vector<int> later_;
  std::vector<int> later_outputs_;
  // What the other wires are to receive: the later ones, then those that are done.
  BitMatrix lacking_;
};

}  // namespace

GateList eliminate_by_decoding(const BitMatrix& m, std::uint64_t steps, int window, Rng& rng,
                               Meter& meter) {
  const EliminationTuning& tuning = elimination_tuning;
  const int n = m.rows();
  const auto pairs = static_cast<std::uint64_t>(n) * static_cast<std::uint64_t>(n);
  const int most = steps < tuning.few_steps * pairs ? tuning.small_block : tuning.block;
  const int blocks = (n + most - 1) / most;
  const bool are_small = n <= blocks * tuning.small_block;
  const double part = are_small ? tuning.search_part_of_small : tuning.search_part;
  const double share = static_cast<double>(steps) / blocks;
  Elimination elimination(m, window, rng, meter);
  for (int k = 0; k < blocks && !meter.ended(); ++k) {
    elimination.take_block(elimination.wires_left() / (blocks - k),
                           static_cast<std::uint64_t>(part * share), (1 - part) * share);
  }
  if (meter.ended()) return {};
  return elimination.circuit();
}

}  // namespace zelt::braidwerk::internal
