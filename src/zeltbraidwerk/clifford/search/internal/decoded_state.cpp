#include "zeltbraidwerk/clifford/search/internal/decoded_state.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/code.h"
#include "zeltbraidwerk/clifford/search/internal/operator_rows.h"
#include "zeltbraidwerk/clifford/search/internal/state_graph.h"
#include "zeltbraidwerk/clifford/search/internal/state_list.h"
#include "zeltbraidwerk/clifford/search/internal/state_search.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/linear/search/internal/blocks.h"
#include "zeltbraidwerk/linear/search/internal/decoded_receiving.h"
#include "zeltbraidwerk/linear/search/internal/passing_vectors.h"
#include "zeltbraidwerk/search/internal/orders.h"

namespace zelt::braidwerk::internal {
namespace {

class StateElimination {
 public:
  StateElimination(const PauliFrame& stabilisers, Rng& rng, Meter& meter)
      : state_(stabilisers),
        form_(stabilisers),
        price_(state_tuning.block_steps_per_area * stabilisers.qubits() * stabilisers.qubits()),
        rng_(rng),
        meter_(meter) {
    qubits_ = shuffled(stabilisers.qubits(), [&](int, int last) { return rng.below(last + 1); });
  }

  /// The next qubits, in about so many steps. The last block has none to decode for.
  void take_block(int size, double steps) {
    steps *= price_;
    const std::vector<int> block(qubits_.begin(), qubits_.begin() + size);
    qubits_.erase(qubits_.begin(), qubits_.begin() + size);
    const double for_search = qubits_.empty() ? steps : steps * state_tuning.search_part;
    const std::vector<Gate> gates = take_apart(block, for_search);
    if (qubits_.empty()) return apply(gates, block);
    if (meter_.ended()) return;
    PassingVectors passing(state_.qubits(), size);
    hold(block, passing);
    for (const Gate& gate : gates) passing.play(gate);
    const double price = state_tuning.decoding_per_step;
    const bool is_done =
        receive_by_decoding(passing, block_matrix(form_.edges, {qubits_, block}), receivers(),
                            (steps - for_search) * price, rng_, [&](double decoding) {
                              spend(decoding / price);
                              return !meter_.ended();
                            });
    if (is_done) apply(passing.circuit(), block);
  }

  GateList circuit() const {
    PauliFrame letters(state_.qubits(), state_.qubits());
    for (int q = 0; q < letters.qubits(); ++q) {
      letters.set_letter(q, q, letter_for(form_.own[static_cast<std::size_t>(q)]));
    }
    return backwards(apart_, StateGroup(letters));
  }

 private:
  /// Steps on qubits of a block, for which the meter counts as many as take the same time on all.
  void spend(double steps) {
    spent_ += steps / price_;
    const auto whole = static_cast<std::uint64_t>(spent_);
    spent_ -= static_cast<double>(whole);
    meter_.charge(whole);
  }

  /// The gates that take the graph of the block apart.
  std::vector<Gate> take_apart(const std::vector<int>& block, double steps) {
    Effort effort;
    effort.control = meter_.control();
    effort.steps =
        static_cast<std::uint64_t>(std::min(steps, static_cast<double>(meter_.left()) * price_));
    const Task task{.outputs = Outputs::anywhere, .seed = rng_.next()};
    const GateList list = state_list(form_.part(block), task, effort);
    spend(static_cast<double>(effort.steps));
    const auto end = [&](End of_list) {
      const End of_block = list.frame[of_list];
      return end_of(block[static_cast<std::size_t>(wire_of(of_block))], label_of(of_block));
    };
    std::vector<Gate> gates;
    for (auto gate = list.gates.rbegin(); gate != list.gates.rend(); ++gate) {
      gates.push_back({end(gate->a), end(gate->b)});
    }
    return gates;
  }

  std::vector<Receiver> receivers() const {
    std::vector<Receiver> all;
    for (const int qubit : qubits_) {
      const auto q = static_cast<std::size_t>(qubit);
      all.push_back({end_of(qubit, form_.other[q]), end_of(qubit, form_.own[q])});
    }
    return all;
  }

  /// What letters on the block are up to stabilisers of its graph state: the qubits of the graph on
  /// which a product of Z is the same.
  void hold(const std::vector<int>& block, PassingVectors& passing) const {
    const BitMatrix edges = block_matrix(form_.edges, {block, block});
    const BitMatrix units = BitMatrix::identity(edges.rows());
    BitMatrix products = edges;
    for (int k = 0; k < edges.rows(); ++k) {
      products.flip(k, k);
      const int qubit = block[static_cast<std::size_t>(k)];
      passing.hold(end_of(qubit, form_.other[static_cast<std::size_t>(qubit)]), units.row(k));
    }
    for (int k = 0; k < edges.rows(); ++k) {
      const int qubit = block[static_cast<std::size_t>(k)];
      const int own = form_.own[static_cast<std::size_t>(qubit)];
      const int third = own ^ form_.other[static_cast<std::size_t>(qubit)];
      passing.hold(end_of(qubit, own), edges.row(k));
      passing.hold(end_of(qubit, third), products.row(k));
    }
  }

  /// A gate by which a qubit receives is a controlled letter: that of the list and a rotation of
  /// either qubit, by which labels turn.
  void apply(const std::vector<Gate>& gates, const std::vector<int>& block) {
    WireFrame labels(state_.qubits());
    std::vector<bool> is_in_block(form_.own.size());
    for (const int q : block) is_in_block[static_cast<std::size_t>(q)] = true;
    const auto in_block = [&](End end) {
      return is_in_block[static_cast<std::size_t>(wire_of(end))];
    };
    for (const Gate& gate : gates) {
      apart_.push_back({labels[gate.a], labels[gate.b]});
      apply_unsigned(state_, apart_.back());
      if (in_block(gate.a) && in_block(gate.b)) continue;
      for (const End end : {gate.a, gate.b}) {
        const auto& [first, second] = other_labels[static_cast<std::size_t>(label_of(end))];
        std::swap(labels[end_of(wire_of(end), first)], labels[end_of(wire_of(end), second)]);
      }
    }
    form_ = StateGraph(state_);
  }

  PauliFrame state_;
  StateGraph form_;
  double price_;      // of a step, in steps on a block
  double spent_ = 0;  // steps not counted yet
  Rng& rng_;
  Meter& meter_;
  std::vector<int> qubits_;  // not yet in a block
  std::vector<Gate> apart_;
};

}  // namespace

GateList state_by_decoding(const PauliFrame& stabilisers, std::uint64_t steps, Rng& rng,
                           Meter& meter) {
  const int n = stabilisers.qubits();
  const int size = state_tuning.block;
  const int blocks = std::max(0, n - state_tuning.last_block + size / 2) / size;
  const double share = static_cast<double>(steps) / (blocks + 1);
  StateElimination elimination(stabilisers, rng, meter);
  for (int k = 0; k < blocks && !meter.ended(); ++k) elimination.take_block(size, share);
  if (meter.ended()) return {};
  elimination.take_block(n - blocks * size, share);
  return elimination.circuit();
}

}  // namespace zelt::braidwerk::internal
