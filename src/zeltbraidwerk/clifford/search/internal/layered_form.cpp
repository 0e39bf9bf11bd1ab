#include "zeltbraidwerk/clifford/search/internal/layered_form.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/graph_blocks.h"
#include "zeltbraidwerk/clifford/search/internal/graph_sorting.h"
#include "zeltbraidwerk/clifford/search/internal/reduction.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/graphs/internal/edge_coloring.h"
#include "zeltbraidwerk/linear/search/internal/cnot_search.h"
#include "zeltbraidwerk/linear/search/internal/depth_search.h"

namespace zelt::braidwerk::internal {
namespace {

/// Vectors that are independent.
class Independent {
 public:
  explicit Independent(int size) : rows_(size, size), used_(static_cast<std::size_t>(size)) {}

  /// Adds it unless it is a sum of others.
  bool add(BitMatrix vector) {
    for (int c = 0; c < rows_.cols(); ++c) {
      if (!vector.get(0, c)) continue;
      if (!used_[static_cast<std::size_t>(c)]) {
        std::copy_n(vector.row(0), rows_.stride(), rows_.row(c));
        used_[static_cast<std::size_t>(c)] = true;
        return true;
      }
      for (int w = 0; w < rows_.stride(); ++w) vector.row(0)[w] ^= rows_.row(c)[w];
    }
    return false;
  }

 private:
  BitMatrix rows_;  // by the first bit
  std::vector<bool> used_;
};

class LayeredForm {
 public:
  LayeredForm(OperatorRows rows, Rng& rng)
      : rows_(std::move(rows)), wires_(rows_.wires()), rng_(rng) {
    choose_inputs();
    choose_outputs();
  }

  GateList circuit(GraphsBy way, Outputs outputs, const Effort& effort) {
    Effort whole;
    whole.control = effort.control;
    Meter in_time(whole);
    for (const int side : {1, 0}) {
      const GraphInWork work{[&] { return graph(side); },
                             [&](const GraphMove& move) { play_on_graph(side, move); }};
      // When the meter ends, edges are left.
      if (way == GraphsBy::blocks) clear_by_blocks(wires_, 1, work, rng_, in_time);
      take_off_graph(side);
    }
    take_off_map(Objective::depth, outputs, effort);
    return circuit_of(rows_, moves_);
  }

  GateList circuit_by_count(Outputs outputs, const Effort& effort) {
    for (const int side : {1, 0}) {
      for (const GraphMove& move : clear_by_sorting(graph_without_diagonal(side))) {
        play_on_graph(side, move);
      }
      settle(side);
    }
    take_off_map(Objective::count, outputs, effort);
    return circuit_of(rows_, moves_);
  }

 private:
  using Labels = std::vector<int>;

  static int& of(Labels& labels, int wire) { return labels[static_cast<std::size_t>(wire)]; }
  static int of(const Labels& labels, int wire) { return labels[static_cast<std::size_t>(wire)]; }

  void choose_inputs() {
    for (int i = 0; i < wires_; ++i) {
      input_x_.push_back(1 + rng_.below(3));
      input_z_.push_back(other_labels[input_x_.back()][rng_.below(2)]);
    }
  }

  /// So that the parts of X of the images of X have an inverse. Of any two labels of a wire one
  /// will do: the images commute, and nothing else commutes with all of them.
  void choose_outputs() {
    Independent columns(wires_);
    for (int w = 0; w < wires_; ++w) {
      stop_point();
      const int first = rng_.below(3);
      int z = 0;
      for (int k = 0; k < 3 && z == 0; ++k) {
        const int label = 1 + (first + k) % 3;
        BitMatrix column(1, wires_);
        for (int i = 0; i < wires_; ++i) column.set(0, i, meets(i, of(input_x_, i), w, label));
        if (columns.add(std::move(column))) z = label;
      }
      output_z_.push_back(z);
      output_x_.push_back(other_labels[z][0]);
    }
  }

  /// Whether the image of a label on an input anticommutes with one on an output.
  bool meets(int input, int label, int output, int by) const {
    const int found = rows_.label_at(1, input, label, output);
    return found != 0 && found != by;
  }

  BitMatrix parts(const Labels& of_inputs, const Labels& by_outputs) const {
    BitMatrix parts(wires_, wires_);
    for (int i = 0; i < wires_; ++i) {
      for (int w = 0; w < wires_; ++w) {
        parts.set(i, w, meets(i, of(of_inputs, i), w, of(by_outputs, w)));
      }
    }
    return parts;
  }

  // What X on the inputs becomes is X on the outputs by the map, times Z by the graph after it; the
  // graph before it has given Z on the inputs its part of X.
  BitMatrix map() const { return parts(input_x_, output_z_); }
  BitMatrix graph(int side) {
    settle(side);
    const BitMatrix back = inverse(map());
    return side == 1 ? product(parts(input_z_, output_z_), back)
                     : product(back, parts(input_x_, output_x_));
  }
  /// Labels turn such that nothing stands on the diagonal.
  BitMatrix graph_without_diagonal(int side) {
    BitMatrix graph = this->graph(side);
    for (int a = 0; a < wires_; ++a) {
      if (graph.get(a, a)) of(passed(side), a) ^= of(crossed(side), a);
      graph.set(a, a, false);
    }
    return graph;
  }
  /// Gates between these commute, ...
  Labels& crossed(int side) { return side == 1 ? input_x_ : output_z_; }
  /// ... and those from the one to the other are CNOTs, which go into the map.
  Labels& passed(int side) { return side == 1 ? input_z_ : output_x_; }

  void play(int side, const Gate& gate) {
    moves_.push_back({side, gate});
    waiting_.push_back(gate);
  }
  /// Before rows are looked at.
  void settle(int side) {
    stop_point();
    if (!waiting_.empty()) rows_.multiply(side, waiting_);
    waiting_.clear();
  }
  /// Each is a gate as it is named but for one-qubit gates after it, which turn labels.
  void play_on_graph(int side, const GraphMove& move) {
    const auto& [is_edge, a, b] = move;
    Labels& x = crossed(side);
    Labels& z = passed(side);
    play(side, {end_of(a, of(x, a)), end_of(b, is_edge ? of(x, b) : of(z, b))});
    of(z, a) ^= of(x, a);
    if (is_edge) {
      of(z, b) ^= of(x, b);
    } else {
      of(x, b) ^= of(z, b);
    }
  }

  /// Edge by edge. What stands on the diagonal is on single wires.
  void take_off_graph(int side) {
    const BitMatrix adjacency = graph(side);
    const Labels& labels = crossed(side);
    BitGraph graph(wires_);
    for (int a = 0; a < wires_; ++a) {
      for (int b = a + 1; b < wires_; ++b) {
        if (adjacency.get(a, b)) graph.join(a, b);
      }
    }
    for (const auto& matching : matchings_of(graph)) {
      for (const auto& [a, b] : matching) {
        play(side, {end_of(a, of(labels, a)), end_of(b, of(labels, b))});
      }
    }
    settle(side);
  }

  /// From the last gate to the first. Each is a CNOT but for one-qubit gates after it, which turn
  /// X on its control, and Z on its target.
  void take_off_map(Objective objective, Outputs outputs, const Effort& effort) {
    const BitMatrix map = this->map();
    for (int i = 0; i < wires_; ++i) {
      for_each_bit(map.row(i), map.stride(),
                   [&](int w) { of(output_x_, w) = rows_.label_at(1, i, of(input_x_, i), w); });
    }
    const Task task{.objective = objective, .outputs = outputs, .seed = rng_.next()};
    const BitMatrix turned = map.transposed();
    const GateList list = objective == Objective::count
                              ? search_cnot(turned, task, effort)
                              : search_shallow_cnot(turned, task, effort).front().list;
    const auto output = [&](End end) { return list.frame.output_on(wire_of(end)); };
    for (auto gate = list.gates.rbegin(); gate != list.gates.rend(); ++gate) {
      const bool forward = label_of(gate->a) == label_z;
      const int control = output(forward ? gate->a : gate->b);
      const int target = output(forward ? gate->b : gate->a);
      play(0, {end_of(control, of(output_z_, control)), end_of(target, of(output_x_, target))});
      of(output_x_, control) ^= of(output_z_, control);
      of(output_z_, target) ^= of(output_x_, target);
    }
    settle(0);
  }

  OperatorRows rows_;
  int wires_;
  Rng& rng_;
  Labels input_x_, input_z_, output_x_, output_z_;
  std::vector<OperatorReduction::Move> moves_;
  std::vector<Gate> waiting_;  // the last ones, which the rows do not have yet
};

}  // namespace

GateList layered_list(OperatorRows rows, GraphsBy way, Outputs outputs, Rng& rng,
                      const Effort& effort) {
  return LayeredForm(std::move(rows), rng).circuit(way, outputs, effort);
}

GateList layered_list_by_count(OperatorRows rows, Outputs outputs, Rng& rng, const Effort& effort) {
  return LayeredForm(std::move(rows), rng).circuit_by_count(outputs, effort);
}

}  // namespace zelt::braidwerk::internal
