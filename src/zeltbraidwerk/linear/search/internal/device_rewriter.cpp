#include "zeltbraidwerk/linear/search/internal/device_rewriter.h"

#include <algorithm>
#include <bit>

namespace zelt::braidwerk::internal {

Distances::Distances(const BitGraph& graph)
    : n_(graph.size()),
      far_(static_cast<std::size_t>(n_) * static_cast<std::size_t>(n_), std::int16_t{-1}) {
  std::vector<int> queue;
  for (int root = 0; root < n_; ++root) {
    queue.assign(1, root);
    far_[index(root, root)] = 0;
    for (std::size_t head = 0; head < queue.size(); ++head) {
      const int v = queue[head];
      graph.for_each_neighbour(v, [&](int w) {
        if (far_[index(root, w)] >= 0) return;
        far_[index(root, w)] = static_cast<std::int16_t>(far_[index(root, v)] + 1);
        queue.push_back(w);
      });
    }
  }
}

DeviceRewriter::DeviceRewriter(const BitGraph& graph, int largest, int reach)
    : graph_(graph), largest_(largest), reach_(reach), distances_(graph) {
  for (int k = 2; k <= largest; ++k) {
    kinds_[static_cast<std::size_t>(k)].resize(std::size_t{complete_graph(k)} + 1);
  }
}

DeviceRewriter::Kind& DeviceRewriter::kind_of(const Window& window) {
  const WindowGraph graph = edges_within(window, graph_);
  Kind& kind = kinds_[static_cast<std::size_t>(window.size)][graph];
  if (!kind.known) {
    kind.known = true;
    kind.named = least_graph(window.size, graph);
    for (std::size_t v = 0; v < 5; ++v) {
      kind.place_at[kind.named.names[v]] = static_cast<std::uint8_t>(v);
    }
  }
  return kind;
}

const MapTable* DeviceRewriter::table_of(Kind& kind, int wires, bool permuted) {
  const MapTable*& table = kind.tables[permuted ? 1 : 0];
  if (table == nullptr && (wires < 5 || large_tables_ < most_large_tables)) {
    large_tables_ += wires == 5;
    table = &MapTable::of(wires, kind.named.graph, permuted);
  }
  return table;
}

bool DeviceRewriter::rewrite(const GateList& list, const Window& window, float uphill, Rng& rng,
                             Rewrite& rewrite) {
  const auto size = static_cast<int>(window.gates.size());
  if (size < 2) return false;
  Kind& kind = kind_of(window);
  const auto& names = kind.named.names;
  block_.clear();
  for (const Gate& gate : window.gates) {
    block_.push_back(cnot(names[static_cast<std::size_t>(wire_of(gate.a))],
                          names[static_cast<std::size_t>(wire_of(gate.b))]));
  }
  const bool at_end = reach_ > 0 && window.to_end == (1U << window.size) - 1;
  const MapTable* known = table_of(kind, window.size, at_end);
  if (known == nullptr) return false;
  const MapTable& table = *known;
  const SmallMatrix m = table.map_of(block_);
  const int distance = table.distance(m);
  if (distance > size) return false;  // uphill moves only make the list longer by one
  const float odds = distance == size ? uphill : uphill - 1;
  const int detours = odds > 0 && rng.chance(odds) ? 1 : 0;
  const SmallMatrix left = table.descend(m, detours, rng, rewrite.block);
  for (Gate& gate : rewrite.block) {
    gate = cnot(kind.place_at[static_cast<std::size_t>(wire_of(gate.a))],
                kind.place_at[static_cast<std::size_t>(wire_of(gate.b))]);
  }
  if (left == table.identity()) return true;
  rewrite.renames = true;
  for (int r = 0; r < window.size; ++r) {
    const SmallMatrix row = (left >> (window.size * r)) & ((1U << window.size) - 1);
    for (int label = 0; label < 4; ++label) {
      rewrite.ends[kind.place_at[static_cast<std::size_t>(r)]][static_cast<std::size_t>(label)] =
          end_of(kind.place_at[static_cast<std::size_t>(std::countr_zero(row))], label);
    }
  }
  return within_reach(list, window, rewrite);
}

bool DeviceRewriter::within_reach(const GateList& list, const Window& window,
                                  const Rewrite& rewrite) const {
  for (int place = 0; place < window.size; ++place) {
    const auto p = static_cast<std::size_t>(place);
    const int output = list.frame.output_on(window.wires[p]);
    const int to = window.wires[static_cast<std::size_t>(wire_of(rewrite.ends[p][0]))];
    if (distances_(output, to) > reach_) return false;
  }
  return true;
}

}  // namespace zelt::braidwerk::internal
