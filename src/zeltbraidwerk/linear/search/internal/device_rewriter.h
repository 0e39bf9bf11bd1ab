#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/linear/search/internal/map_table.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// Distances between the vertices of a graph by number of edges; -1 where there is no path.
class Distances {
 public:
  explicit Distances(const BitGraph& graph);
  int operator()(int a, int b) const { return far_[index(a, b)]; }

 private:
  std::size_t index(int a, int b) const {
    return static_cast<std::size_t>(a) * static_cast<std::size_t>(n_) + static_cast<std::size_t>(b);
  }
  int n_;
  std::vector<std::int16_t> far_;
};

/// Windows of a CNOT circuit on a device replaced by random shortest circuits for them on the edges
/// between their wires. A device has windows of several kinds, each with a table of its own: of
/// those for five wires at most `most_large_tables` of 32 MB, and windows of the kinds that come
/// too late stay as they are. The 21 kinds that there are all come in a dense random graph alone.
class DeviceRewriter {
 public:
  static constexpr Gathering gathering = Gathering::of_cnots;
  static constexpr bool judges = false;
  static constexpr int most_large_tables = 12;

  /// Windows of up to `largest` wires, at most 5. Outputs stay within `reach` edges of the places
  /// that they belong to: 0 leaves them there.
  DeviceRewriter(const BitGraph& graph, int largest, int reach);

  int window_size(Rng& rng) const { return largest_ > 4 && rng.coin() ? 5 : 4; }

  /// `uphill` may be above 1: what is more than that is the probability of a detour in a block that
  /// can be made shorter.
  bool rewrite(const GateList& list, const Window& window, float uphill, Rng& rng,
               Rewrite& rewrite);

 private:
  /// The graph on a window's places, under the names that its tables go by.
  struct Kind {
    NamedGraph named;
    WireNames place_at;  // the way back
    bool known = false;
    std::array<const MapTable*, 2> tables{};  // exact and permuted
  };

  Kind& kind_of(const Window& window);
  /// Null where there are too many already.
  const MapTable* table_of(Kind& kind, int wires, bool permuted);
  bool within_reach(const GateList& list, const Window& window, const Rewrite& rewrite) const;

  const BitGraph& graph_;
  int largest_;
  int reach_;
  Distances distances_;
  std::array<std::vector<Kind>, 6> kinds_;  // by graph
  int large_tables_ = 0;
  std::vector<Gate> block_;
};

}  // namespace zelt::braidwerk::internal
