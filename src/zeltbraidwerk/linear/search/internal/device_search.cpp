#include "zeltbraidwerk/linear/search/internal/device_search.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

#include "zeltbraidwerk/linear/internal/row_column.h"
#include "zeltbraidwerk/linear/search/internal/device_elimination.h"
#include "zeltbraidwerk/linear/search/internal/device_rewriter.h"

namespace zelt::braidwerk::internal {

namespace {

GateList list_of(const FreeCircuit& found) {
  const int n = static_cast<int>(found.perm.size());
  std::vector<Gate> gates;
  for (const auto& [control, target] : found.circuit.gates) gates.push_back(cnot(control, target));
  GateList list(n, std::move(gates));
  for (int r = 0; r < n; ++r) {
    const int wire = found.perm[static_cast<std::size_t>(r)];
    for (int label = 0; label < 4; ++label) list.origin[end_of(wire, label)] = end_of(r, label);
  }
  return list;
}

class Search {
 public:
  Search(const BitMatrix& m, const BitGraph& graph, const DeviceSearchOptions& options,
         const Effort& effort)
      : m_(m),
        graph_(graph),
        options_(options),
        rng_(options.seed, options.stream),
        meter_(effort),
        n_(std::min(m.rows(), graph.size())),
        rewriter_(graph, most_window_wires, options.reach),
        best_(n_, {}) {}

  GateList run() {
    if (n_ < 2) return std::move(best_);
    eliminate_at_once();
    if (!replace_all()) {
      std::uint64_t steps = 1 << 14;
      for (int number = 0; !meter_.ended() && best_.count() > 0; ++number, steps *= 2) {
        cup(number, steps);
      }
    }
    return std::move(best_);
  }

 private:
  /// Without a search: the answer when there is no time for more.
  void eliminate_at_once() {
    const Draw draw = [this](int low, int high) { return low + rng_.below(high - low + 1); };
    FreeCircuit found(n_);
    row_column_synthesis(m_, graph_, {}, draw, Control{}, found);
    best_ = list_of(found);
    tell();
  }

  /// On few wires all gates fit into one window. True when that gives the shortest circuit.
  bool replace_all() {
    if (n_ > most_window_wires || (options_.reach > 0 && options_.reach < n_ - 1)) return false;
    Window all;
    all.size = n_;
    std::iota(all.wires.begin(), all.wires.begin() + n_, std::uint16_t{0});
    all.gates = best_.gates;
    all.to_end = (1U << n_) - 1;
    Rewrite rewrite;
    if (!rewriter_.rewrite(best_, all, 0, rng_, rewrite)) return best_.count() < 2;
    GateList shortest(n_, std::move(rewrite.block));
    for (std::size_t end = 0; rewrite.renames && end < shortest.origin.size(); ++end) {
      shortest.origin[rewrite.ends[end / 4][end % 4]] = best_.origin[end];
    }
    take(shortest);
    return true;
  }

  /// Some new circuits, each walked from for a while. From the best of them the walk goes on for
  /// longer, and then once more from the best of all.
  void cup(int number, std::uint64_t steps) {
    GateList winner = best_;
    for (int k = 0; k < starts && !meter_.ended(); ++k) {
      GateList fresh = eliminated(width_of_cup(number));
      walk(fresh, steps);
      if (k == 0 || fresh.count() < winner.count()) winner = std::move(fresh);
    }
    walk(winner, 2 * steps);
    if (best_.count() < winner.count()) winner = best_;
    walk(winner, 4 * steps);
  }

  static constexpr int starts = 4;

  static int width_of_cup(int number) {
    int width = 10;
    for (; number > 0 && width < 100; --number) width *= 3;
    return width;
  }

  GateList eliminated(int width) {
    DeviceEliminationOptions options;
    options.width = width;
    options.vertices = n_ <= 32 ? n_ : 8;
    auto found = eliminate_on_device(m_, graph_, options, rng_, meter_);
    if (found.empty()) return best_;
    take(found.front());
    return std::move(found.front());
  }

  void walk(GateList& list, std::uint64_t steps) {
    walk_round(list, rewriter_, steps, Cooling{1.0F, 0.1F}, rng_, meter_,
               [&](const GateList& found, bool) {
                 take(found);
                 return true;  // equals take over: they lead elsewhere
               });
  }

  /// Fewer gates first, then fewer layers.
  void take(const GateList& list) {
    if (list.count() > best_.count()) return;
    const int depth = depth_of(list.gates, n_);
    if (list.count() == best_.count() && depth >= depth_) return;
    best_ = list;
    tell();
  }
  void tell() {
    depth_ = depth_of(best_.gates, n_);
    meter_.better(best_.count(), depth_);
  }

  const BitMatrix& m_;
  const BitGraph& graph_;
  const DeviceSearchOptions& options_;
  Rng rng_;
  Meter meter_;
  int n_;
  DeviceRewriter rewriter_;
  GateList best_;
  int depth_ = 0;
};

}  // namespace

GateList search_cnot_on_device(const BitMatrix& m, const BitGraph& graph,
                               const DeviceSearchOptions& options, const Effort& effort) {
  return Search(m, graph, options, effort).run();
}

}  // namespace zelt::braidwerk::internal
