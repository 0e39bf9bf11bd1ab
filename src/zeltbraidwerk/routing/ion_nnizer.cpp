#include "zeltbraidwerk/routing/ion_nnizer.h"

#include <iterator>

#include "zeltbraidwerk/foundations/internal/turns.h"
#include "zeltbraidwerk/routing/internal/route.h"

namespace zelt::braidwerk::internal {
namespace {

using structures::Gate;
using structures::OperatorTableau;

struct IonGadget {
  int row = -1;
  bool flip = false;
  int root = -1;
  std::vector<Gate> gates;
};

std::vector<int> support(const FrameAxes& axes, int row) {
  std::vector<int> ions;
  for_each_bit(axes.support(row), words_for(axes.qubits()), [&](int q) { ions.push_back(q); });
  return ions;
}

std::vector<Gate> basis_change(const FrameAxes& axes, int row, const std::vector<int>& ions) {
  std::vector<Gate> gates;
  for (const int q : ions) {
    if (axes.has_x(row, q)) gates.push_back(axes.is_y(row, q) ? Gate::RXP(q) : Gate::H(q));
  }
  return gates;
}

/// Gates that carry the product of Z over the ions to plus Z on the root.
std::vector<Gate> entangler(const std::vector<int>& ions, int root) {
  if (ions.size() < 2) return {};
  const auto turns = static_cast<double>((ions.size() - 1) % 4);
  std::vector<Gate> gates{Gate("RX", {root}, {turns * -quarter_turn}, false)};
  for (const int q : ions) {
    if (q != root) gates.push_back(Gate::H(q));
  }
  gates.emplace_back(
      "XX", ions,
      std::vector<structures::Parameter>{quarter_turn, static_cast<double>(ions.size())}, false);
  return gates;
}

/// Chooses the next rotation and its root, as GadgetSearch does on a device.
template <class Metric>
class IonSearch {
 public:
  IonSearch(Waiting& waiting, const Control& control) : waiting_(waiting), control_(control) {}

  double best(int block, FrameAxes axes, int depth, Metric& metric, IonGadget* plan) {
    if (waiting_.is_empty(block) || stop_requested()) return 0;
    IonGadget chosen;
    chosen.row = choose(block, axes, metric);
    chosen.flip = axes.is_negative(chosen.row);
    std::vector<int> ions = support(axes, chosen.row);
    const std::vector<Gate> basis = basis_change(axes, chosen.row, ions);
    if (depth > 0) axes.apply(basis);
    waiting_.take(block, chosen.row);
    double best_score = no_score;
    for (const int root : ions) {
      const std::vector<Gate> gates = entangler(ions, root);
      double score = metric.get_score(ions);
      if (depth > 0) {
        FrameAxes next = axes;
        next.apply(gates);
        Metric next_metric = metric;
        next_metric.update(ions);
        score = metric.compose(score, best(waiting_.is_empty(block) ? block + 1 : block,
                                           std::move(next), depth - 1, next_metric, nullptr));
      }
      if (metric.compare(score, best_score)) {
        best_score = score;
        chosen.root = root;
        chosen.gates = basis;
        chosen.gates.insert(chosen.gates.end(), gates.begin(), gates.end());
      }
      if (depth < 1) break;
    }
    waiting_.give_back(block, chosen.row);
    metric.update(ions);
    if (plan != nullptr) *plan = std::move(chosen);
    return best_score;
  }

  bool stop_requested() { return stopped_ = stopped_ || control_.stop_requested(); }

 private:
  static constexpr double no_score = -1.0;

  int choose(int block, FrameAxes& axes, const Metric& metric) const {
    int chosen = -1;
    double best_score = no_score;
    const std::vector<int> rows = waiting_.rows(block);
    axes.read(rows);
    for (const int row : rows) {
      std::vector<int> ions = support(axes, row);
      const double score = metric.get_score(ions);
      if (!metric.compare(score, best_score)) continue;
      chosen = row;
      best_score = score;
    }
    return chosen;
  }

  Waiting& waiting_;
  const Control& control_;
  bool stopped_ = false;
};

template <class Metric>
bool route_by(Metric& metric, const std::vector<Gate>& circuit, const RoutingOptions& options,
              std::vector<Gate>& out, OperatorTableau& frame) {
  const NormalForm form =
      normal_form(circuit, frame, options.commuting_blocks, options.merge, options.linear_sums);
  FrameAxes axes(carried(form.rotations, frame));
  Waiting waiting(form.first);
  IonSearch<Metric> search(waiting, options.control);
  for (int b = 0; b < waiting.blocks(); ++b) {
    while (!waiting.is_empty(b)) {
      IonGadget gadget;
      search.best(b, axes.window(waiting.first_row(b), waiting.end_of_window(b, options.depth)),
                  options.depth, metric, &gadget);
      if (search.stop_requested()) return false;
      waiting.take(b, gadget.row);
      axes.apply(gadget.gates);
      for (Gate& gate : gadget.gates) {
        frame.apply_left(gate);
        out.push_back(std::move(gate));
      }
      if (gadget.root < 0) continue;
      out.push_back(turn(gadget.root, form.rotations.angles[static_cast<std::size_t>(gadget.row)],
                         gadget.flip));
    }
  }
  frame.multiply_right(form.clifford);
  return true;
}

}  // namespace

bool route_ions(const std::vector<Gate>& circuit, structures::DefaultMetric metric,
                const RoutingOptions& options, std::vector<Gate>& out, OperatorTableau& frame) {
  return route_by(metric, circuit, options, out, frame);
}

bool route_ions(const std::vector<Gate>& circuit, structures::ShelveMetric metric,
                const RoutingOptions& options, std::vector<Gate>& out, OperatorTableau& frame) {
  return route_by(metric, circuit, options, out, frame);
}

}  // namespace zelt::braidwerk::internal

namespace synthesis {

namespace internal = zelt::braidwerk::internal;
using structures::Gate;
using structures::OperatorTableau;

void clifford_nnize_ion(const std::vector<Gate>& circuit, int depth, bool commuting_blocks,
                        bool merge, std::vector<Gate>& out, OperatorTableau& frame) {
  internal::RoutingOptions options{
      .depth = depth, .commuting_blocks = commuting_blocks, .merge = merge, .control = {}};
  internal::route_ions(circuit, structures::DefaultMetric(), options, out, frame);
}

void clifford_nnize_ion_shelving(const std::vector<Gate>& circuit, int depth, bool commuting_blocks,
                                 bool merge, double pair_error, double shelve_error,
                                 std::vector<Gate>& out, OperatorTableau& frame) {
  internal::RoutingOptions options{
      .depth = depth, .commuting_blocks = commuting_blocks, .merge = merge, .control = {}};
  internal::route_ions(circuit, structures::ShelveMetric(frame.nbqbits, pair_error, shelve_error),
                       options, out, frame);
}

template <class Metric>
double clifford_cost_ions(int block, std::vector<RotationSequence>& blocks, OperatorTableau frame,
                          int depth, std::vector<Gate>& gates, int& qubit, int& index, bool& flip,
                          Metric& metric) {
  if (block < 0 || block >= static_cast<int>(blocks.size())) return 0;
  const internal::BlockList list(block, blocks, frame.nbqbits);
  internal::Waiting waiting(list.first);
  if (waiting.is_empty(0)) return 0;
  const internal::Control control;
  internal::IonGadget gadget;
  internal::IonSearch<Metric> search(waiting, control);
  const double score = search.best(0, internal::FrameAxes(internal::carried(list.rotations, frame)),
                                   depth, metric, &gadget);
  std::ranges::move(gadget.gates, std::back_inserter(gates));
  if (gadget.root >= 0) qubit = gadget.root;
  index = gadget.row;
  flip = gadget.flip;
  return score;
}

template double clifford_cost_ions(int, std::vector<RotationSequence>&, OperatorTableau, int,
                                   std::vector<Gate>&, int&, int&, bool&,
                                   structures::DefaultMetric&);
template double clifford_cost_ions(int, std::vector<RotationSequence>&, OperatorTableau, int,
                                   std::vector<Gate>&, int&, int&, bool&,
                                   structures::ShelveMetric&);

}  // namespace synthesis
