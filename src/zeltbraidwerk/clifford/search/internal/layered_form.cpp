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
#include "zeltbraidwerk/foundations/internal/echelon.h"
#include "zeltbraidwerk/graphs/internal/edge_coloring.h"
#include "zeltbraidwerk/linear/search/internal/depth_search.h"
#include "zeltbraidwerk/linear/search/internal/map_circuits.h"

namespace zelt::braidwerk::internal {
namespace {

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
                             [&](const GraphMove& move) { play(side, turn_by_move(side, move)); }};
      // When the meter ends, edges are left.
      if (way == GraphsBy::blocks) clear_by_blocks(wires_, 1, work, rng_, in_time);
      take_off_graph(side);
    }
    take_off_map(outputs, effort);
    return circuit_of(rows_, moves_);
  }

  /// As many moves and gates as there are here are followed in the map alone, not in all images.
  GateList circuit_by_count() {
    BitMatrix map = this->map();
    const BitMatrix back = inverse(map);
    BitMatrix after = product(parts(input_z_, output_z_), back);
    BitMatrix before = product(back, parts(input_x_, output_x_));
    for (const GraphMove& move : moves_of_graph(1, std::move(after))) {
      if (!move.is_edge) map.add_row(move.to, move.from);
    }
    BitMatrix columns = map.transposed();
    for (const GraphMove& move : moves_of_graph(0, std::move(before))) {
      if (!move.is_edge) columns.add_row(move.to, move.from);
    }
    each_cnot(by_pairs(columns, Facing::plain), [&](int control, int target) {
      moves_.push_back({0, turn_by_cnot(control, target)});
      columns.add_row(control, target);
    });
    return circuit_of(frame_of(columns), moves_);
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
    std::vector<BitMatrix> columns(1);  // by label
    for (int label = 1; label < 4; ++label) {
      columns.push_back(parts(input_x_, Labels(input_x_.size(), label)).transposed());
    }
    RowSpace chosen(wires_);
    for (int w = 0; w < wires_; ++w) {
      stop_point();
      const int first = rng_.below(3);
      int z = 0;
      for (int k = 0; k < 3 && z == 0; ++k) {
        const int label = 1 + (first + k) % 3;
        if (chosen.add(columns[static_cast<std::size_t>(label)].row(w))) z = label;
      }
      output_z_.push_back(z);
      output_x_.push_back(other_labels[z][0]);
    }
  }

  /// Row i tells whether the image of a label on input i anticommutes with one on each output.
  BitMatrix parts(const Labels& of_inputs, const Labels& by_outputs) const {
    BitMatrix by(2, wires_);
    for (int w = 0; w < wires_; ++w) {
      if ((of(by_outputs, w) & label_x) != 0) by.set(0, w);
      if ((of(by_outputs, w) & label_z) != 0) by.set(1, w);
    }
    BitMatrix parts(wires_, wires_);
    const int words = parts.stride();
    for (int i = 0; i < wires_; ++i) {
      const Word* image = rows_.row(1, i, of(of_inputs, i));
      for (int w = 0; w < words; ++w) {
        parts.row(i)[w] = (image[w] & by.row(1)[w]) ^ (image[words + w] & by.row(0)[w]);
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
  Gate turn_by_move(int side, const GraphMove& move) {
    const auto& [is_edge, a, b] = move;
    Labels& x = crossed(side);
    Labels& z = passed(side);
    const Gate gate{end_of(a, of(x, a)), end_of(b, is_edge ? of(x, b) : of(z, b))};
    of(z, a) ^= of(x, a);
    if (is_edge) {
      of(z, b) ^= of(x, b);
    } else {
      of(x, b) ^= of(z, b);
    }
    return gate;
  }
  /// The same for those of the map, between outputs.
  Gate turn_by_cnot(int control, int target) {
    const Gate gate{end_of(control, of(output_z_, control)), end_of(target, of(output_x_, target))};
    of(output_x_, control) ^= of(output_z_, control);
    of(output_z_, target) ^= of(output_x_, target);
    return gate;
  }
  /// Labels turn first, such that nothing stands on the diagonal.
  std::vector<GraphMove> moves_of_graph(int side, BitMatrix graph) {
    for (int a = 0; a < wires_; ++a) {
      if (graph.get(a, a)) of(passed(side), a) ^= of(crossed(side), a);
      graph.set(a, a, false);
    }
    std::vector<GraphMove> moves = clear_by_sorting(std::move(graph));
    for (const GraphMove& move : moves) moves_.push_back({side, turn_by_move(side, move)});
    return moves;
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

  void take_off_map(Outputs outputs, const Effort& effort) {
    const BitMatrix map = this->map();
    for (int i = 0; i < wires_; ++i) {
      for_each_bit(map.row(i), map.stride(),
                   [&](int w) { of(output_x_, w) = rows_.label_at(1, i, of(input_x_, i), w); });
    }
    const Task task{.objective = Objective::depth, .outputs = outputs, .seed = rng_.next()};
    each_cnot(search_shallow_cnot(map.transposed(), task, effort).front().list,
              [&](int control, int target) { play(0, turn_by_cnot(control, target)); });
    settle(0);
  }

  /// From the last gate of a map's circuit to the first.
  template <class F>
  static void each_cnot(const GateList& list, F f) {
    const auto output = [&](End end) { return list.frame.output_on(wire_of(end)); };
    for (auto gate = list.gates.rbegin(); gate != list.gates.rend(); ++gate) {
      const bool forward = label_of(gate->a) == label_z;
      f(output(forward ? gate->a : gate->b), output(forward ? gate->b : gate->a));
    }
  }

  /// Where the labels of the outputs come from, with both graphs gone and this map left, which
  /// renames wires. By columns.
  WireFrame frame_of(const BitMatrix& map) const {
    WireFrame frame(wires_);
    for (int w = 0; w < wires_; ++w) {
      for_each_bit(map.row(w), map.stride(), [&](int i) {
        const int x = of(input_x_, i), z = of(input_z_, i);
        const int to_x = of(output_x_, w), to_z = of(output_z_, w);
        frame[end_of(w, 0)] = end_of(i, 0);
        frame[end_of(w, to_x)] = end_of(i, x);
        frame[end_of(w, to_z)] = end_of(i, z);
        frame[end_of(w, to_x ^ to_z)] = end_of(i, x ^ z);
      });
    }
    return frame;
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

GateList layered_list_by_count(OperatorRows rows, Rng& rng) {
  return LayeredForm(std::move(rows), rng).circuit_by_count();
}

}  // namespace zelt::braidwerk::internal
