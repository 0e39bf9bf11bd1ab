#include "zeltbraidwerk/clifford/search/internal/decoded_state.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <set>
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
#include "zeltbraidwerk/search/internal/orders.h"

namespace zelt::braidwerk::internal {
namespace {

using Vector = std::vector<Word>;

Vector sum(const Vector& a, const Vector& b) {
  Vector result(a);
  for (std::size_t w = 0; w < result.size(); ++w) result[w] ^= b[w];
  return result;
}

/// What the letters on the qubits of a block are up to stabilisers of its graph state, as gates
/// take it apart: the qubits of the graph on which a product of Z is the same.
class BlockStrings {
 public:
  BlockStrings(const StateGraph& form, const std::vector<int>& block)
      : block_(block), places_(form.own.size()), strings_(block.size()) {
    const BitMatrix edges = block_matrix(form.edges, {block, block});
    const BitMatrix units = BitMatrix::identity(edges.rows());
    for (int k = 0; k < edges.rows(); ++k) {
      const auto q = static_cast<std::size_t>(block[static_cast<std::size_t>(k)]);
      places_[q] = k;
      auto& strings = strings_[static_cast<std::size_t>(k)];
      const auto label = [&](int l) -> Vector& { return strings[static_cast<std::size_t>(l)]; };
      label(label_wire).assign(static_cast<std::size_t>(edges.stride()), 0);
      label(form.other[q]) = {units.row(k), units.row(k) + edges.stride()};
      label(form.own[q]) = {edges.row(k), edges.row(k) + edges.stride()};
      label(form.own[q] ^ form.other[q]) = sum(label(form.own[q]), label(form.other[q]));
    }
  }

  const Vector& at(End end) const {
    const int place = places_[static_cast<std::size_t>(wire_of(end))];
    return strings_[static_cast<std::size_t>(place)][static_cast<std::size_t>(label_of(end))];
  }

  void apply(const Gate& gate) {
    const Vector product = sum(at(gate.a), at(gate.b));
    for (const End end : {gate.a, gate.b}) {
      const auto place = static_cast<std::size_t>(places_[static_cast<std::size_t>(wire_of(end))]);
      for (int label = 1; label < 4; ++label) {
        if (label == label_of(end)) continue;
        Vector& string = strings_[place][static_cast<std::size_t>(label)];
        string = sum(string, product);
      }
    }
  }

  const std::vector<int>& block() const { return block_; }

 private:
  std::vector<int> block_;
  std::vector<int> places_;  // by qubit
  std::vector<std::array<Vector, 4>> strings_;
};

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
    Receiving others(block_matrix(form_.edges, {qubits_, block}), receivers());
    pass_by(BlockStrings(form_, block), gates, others);
    const double price = state_tuning.decoding_per_step;
    const bool is_done = others.receive((steps - for_search) * price, rng_, [&](double decoding) {
      spend(decoding / price);
      return !meter_.ended();
    });
    if (is_done) apply(others.gates(), block);
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

  /// Each string once; the first ones are single letters of the graph state.
  void pass_by(BlockStrings strings, const std::vector<Gate>& gates, Receiving& others) const {
    std::set<Vector> passed{strings.at(end_of(strings.block().front(), label_wire))};
    const auto pass = [&](End end) {
      const Vector& string = strings.at(end);
      if (passed.insert(string).second) others.add(end, string.data());
    };
    const auto pass_all_on = [&](int qubit) {
      for (int label = 1; label < 4; ++label) pass(end_of(qubit, label));
    };
    for (const int q : strings.block()) pass(end_of(q, form_.other[static_cast<std::size_t>(q)]));
    for (const int q : strings.block()) pass_all_on(q);
    for (const Gate& gate : gates) {
      others.put(gate);
      strings.apply(gate);
      for (const End end : {gate.a, gate.b}) pass_all_on(wire_of(end));
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
