#include "zeltbraidwerk/routing/stim_nnizer.h"

#include <cmath>
#include <iterator>

#include <stim/stabilizers/pauli_string.h>
#include <stim/stabilizers/tableau.h>
#include <stim/stabilizers/tableau_transposed_raii.h>
#include "zeltbraidwerk/foundations/internal/turns.h"
#include "zeltbraidwerk/foundations/weyl.h"
#include "zeltbraidwerk/routing/internal/cached_trees.h"
#include "zeltbraidwerk/routing/internal/route.h"

namespace synthesis {
namespace {

using namespace zelt::braidwerk::internal;
using structures::Gate;
using structures::Graph;
using structures::OperatorTableau;
using Transposed = stim::TableauTransposedRaii<64>;

std::size_t at(int i) {
  return static_cast<std::size_t>(i);
}

/// The axes of the waiting rotations, read through a tableau whenever they are asked for.
class StimAxes {
 public:
  StimAxes(const std::vector<StimPauli>& strings, StimTableau frame)
      : strings_(&strings), frame_(std::move(frame)) {}

  int qubits() const { return static_cast<int>(frame_.num_qubits); }

  void read(const std::vector<int>& rows) {
    first_ = rows.empty() ? 0 : rows.front();
    const int count = rows.empty() ? 0 : rows.back() - first_ + 1;
    images_.assign(at(count), StimPauli(0));
    supports_ = BitMatrix(count, qubits());
    for (const int row : rows) {
      StimPauli& p = images_[at(row - first_)];
      p = frame_((*strings_)[at(row)]);
      for (int w = 0; w < supports_.stride(); ++w) {
        supports_.row(row - first_)[w] = p.xs.u64[w] | p.zs.u64[w];
      }
    }
  }
  const Word* support(int row) const { return supports_.row(row - first_); }
  bool has_x(int row, int q) const { return image(row).xs[at(q)]; }
  bool is_y(int row, int q) const { return has_x(row, q) && image(row).zs[at(q)]; }
  bool is_negative(int row) const { return image(row).sign; }

  void apply(const std::vector<BasisChange>& changes) {
    images_.clear();
    Transposed view(frame_);
    for (const auto& [q, is_y] : changes) {
      view.append_H_XZ(at(q));
      if (!is_y) continue;
      view.append_S(at(q));
      view.append_H_XZ(at(q));
    }
  }
  void apply(std::span<const Cnot> cnots) {
    Transposed view(frame_);
    for (const Cnot& cnot : cnots) view.append_ZCX(at(cnot.control), at(cnot.target));
  }

  StimAxes window(int /*first*/, int /*last*/) const { return *this; }
  StimTableau& frame() { return frame_; }

 private:
  const StimPauli& image(int row) const { return images_[at(row - first_)]; }

  const std::vector<StimPauli>* strings_;
  StimTableau frame_;
  std::vector<StimPauli> images_;  ///< of the rows read last
  BitMatrix supports_;
  int first_ = 0;  ///< their first
};

}  // namespace

void clifford_nnize_stim(const std::vector<Gate>& circuit, Graph& graph, int depth,
                         bool commuting_blocks, bool merge, std::vector<Gate>& out,
                         StimTableau& frame, int sketch_mode) {
  graph.sketch_mode = sketch_mode;
  NormalForm form = normal_form(circuit, OperatorTableau(static_cast<int>(frame.num_qubits)),
                                commuting_blocks, merge);
  std::vector<StimPauli> strings;
  for (int r = 0; r < form.rotations.count(); ++r) {
    strings.push_back(StimPauli::from_str(form.rotations.letters(r)));
  }
  StimAxes axes(strings, StimTableau(frame.num_qubits));
  Waiting waiting(form.first);
  CachedTrees trees(graph);
  route_on_device(
      axes, waiting, trees, FanInCost::cnots, depth, Control(), [&](const Gadget& gadget) {
        std::ranges::move(gadget.gates(), std::back_inserter(out));
        if (gadget.root < 0) return;
        out.push_back(turn(gadget.root, form.rotations.angles[at(gadget.row)], gadget.flip));
      });
  frame = convert_to_stim(form.clifford).then(axes.frame());
}

int cost_clifford_order_stim(int block, std::vector<StimRotations>& blocks, StimTableau frame,
                             Graph& graph, int depth, std::vector<Gate>& gates, int& qubit,
                             int& index, bool& flip) {
  if (block < 0 || block >= static_cast<int>(blocks.size())) return 0;
  std::vector<StimPauli> strings;
  std::vector<int> first{0};
  for (auto b = at(block); b < blocks.size(); ++b) {
    for (const auto& [string, angle] : blocks[b]) strings.push_back(string);
    first.push_back(static_cast<int>(strings.size()));
  }
  Waiting waiting(std::move(first));
  if (waiting.is_empty(0)) return 0;
  CachedTrees trees(graph);
  const Control control;
  Gadget gadget;
  GadgetSearch<StimAxes, CachedTrees> search(waiting, trees, FanInCost::cnots, control);
  const int cost = search.best(0, StimAxes(strings, std::move(frame)), depth, &gadget);
  std::ranges::move(gadget.gates(), std::back_inserter(gates));
  if (gadget.root >= 0) qubit = gadget.root;
  index = gadget.row;
  flip = gadget.flip;
  return cost;
}

void update_stim_tableau_left(const std::vector<Gate>& gates, StimTableau& tableau) {
  Transposed view(tableau);
  for (const Gate& gate : gates) {
    const auto qubit = [&](std::size_t k) { return at(gate.qbits.at(k)); };
    const auto quarter_turns = [&] {
      const double theta = std::fmod(gate.params.at(0).get_numeric_value(), full_turn);
      return is_near(theta, quarter_turn)         ? 1
             : is_near(theta, half_turn)          ? 2
             : is_near(theta, three_quarter_turn) ? 3
                                                  : 0;
    };
    if (gate.name == "CNOT") {
      view.append_ZCX(qubit(0), qubit(1));
    } else if (gate.name == "CZ" || gate.name == "CSIGN") {
      view.append_ZCZ(qubit(0), qubit(1));
    } else if (gate.name == "H") {
      view.append_H_XZ(qubit(0));
    } else if (gate.name == "RZ" || gate.name == "PH") {
      for (int k = quarter_turns(); k > 0; --k) view.append_S(qubit(0));
    } else if (gate.name == "RX") {
      const int count = quarter_turns();
      if (count == 0) continue;
      view.append_H_XZ(qubit(0));
      for (int k = 0; k < count; ++k) view.append_S(qubit(0));
      view.append_H_XZ(qubit(0));
    }
  }
}

StimTableau convert_to_stim(OperatorTableau& tableau) {
  const int n = tableau.nbqbits;
  const std::size_t size = 2 * at(n) + 1;
  structures::WeylOperator column(std::string(at(n), 'I'));
  const auto image = [&](int position) {
    for (std::size_t r = 0; r < size; ++r) column.data[r] = tableau.data[r * size + at(position)];
    const auto [negative, letters] = column.to_pauli();
    return StimPauli::from_str((negative ? "-" : "") + letters);
  };
  StimTableau result(at(n));
  for (int q = 0; q < n; ++q) {
    result.zs[at(q)] = image(q + 1);
    result.xs[at(q)] = image(n + q + 1);
  }
  return result;
}

std::vector<Gate> get_basis_change_stim(const StimPauli& pauli, int n) {
  std::vector<Gate> gates;
  for (int q = 0; q < n; ++q) {
    if (!pauli.xs[at(q)]) continue;
    gates.push_back(pauli.zs[at(q)] ? Gate::RXP(q) : Gate::H(q));
  }
  return gates;
}

}  // namespace synthesis
