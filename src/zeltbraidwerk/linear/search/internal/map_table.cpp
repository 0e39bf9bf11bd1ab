#include "zeltbraidwerk/linear/search/internal/map_table.h"

#include <algorithm>
#include <bit>
#include <string>
#include <tuple>

#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {

namespace {

/// What a naming makes of every row: bit c goes to bit names[c].
std::array<std::uint8_t, 32> moved_bits(int wires, const WireNames& names) {
  std::array<std::uint8_t, 32> moved{};
  for (unsigned row = 0; row < (1U << wires); ++row) {
    unsigned to = 0;
    for (int c = 0; c < wires; ++c) {
      to |= ((row >> c) & 1U) << names[static_cast<std::size_t>(c)];
    }
    moved[row] = static_cast<std::uint8_t>(to);
  }
  return moved;
}

}  // namespace

MapTable::MapTable(int wires, WindowGraph graph, bool permuted)
    : wires_(wires),
      low_row_((1U << wires) - 1),
      low_column_(0),
      identity_(0),
      graph_(graph),
      permuted_(permuted) {
  for (int r = 0; r < wires; ++r) {
    low_column_ |= 1U << (wires * r);
    identity_ |= 1U << (wires * r + r);
    for (int c = 0; c < wires; ++c) {
      if (c != r && (graph & pair_bit(r, c))) {
        moves_.push_back({static_cast<std::uint8_t>(c), static_cast<std::uint8_t>(r)});
      }
    }
  }
  constexpr std::uint32_t layout = 1;
  const std::string name = "linear-maps-" + std::to_string(wires) + "-" + std::to_string(graph) +
                           (permuted ? "-anywhere" : "-in-place");
  distance_ = wires < most_window_wires ? StoredTable(distances())
                                        : stored_table<std::uint8_t>(
                                              name, layout, std::size_t{1} << (wires * wires),
                                              [this] { return distances(); });
}

std::vector<std::uint8_t> MapTable::distances() const {
  std::vector<std::uint8_t> distances(std::size_t{1} << (wires_ * wires_), unreachable);
  // Names of wires that keep the graph change no distance, nor do other places of the outputs
  // where those are free: one matrix of each class is enough to go on from.
  struct Symmetry {
    std::array<std::uint8_t, 32> columns;
    WireNames rows;
  };
  const std::vector<WireNames> namings = all_names(wires_);
  std::vector<Symmetry> symmetries;
  for (const WireNames& names : namings) {
    if (renamed(wires_, graph_, names) == graph_) {
      symmetries.push_back({moved_bits(wires_, names), names});
    }
  }
  const auto mark = [&](SmallMatrix m, std::uint8_t distance) {
    for (const Symmetry& symmetry : symmetries) {
      std::array<SmallMatrix, 5> rows{};
      for (int r = 0; r < wires_; ++r) {
        rows[static_cast<std::size_t>(r)] = symmetry.columns[(m >> (wires_ * r)) & low_row_];
      }
      const auto place = [&](const WireNames& names) {
        SmallMatrix image = 0;
        for (int r = 0; r < wires_; ++r) {
          image |= rows[static_cast<std::size_t>(r)]
                   << (wires_ * names[static_cast<std::size_t>(r)]);
        }
        distances[image] = distance;
      };
      if (permuted_) {
        for (const WireNames& names : namings) place(names);
      } else {
        place(symmetry.rows);
      }
    }
  };
  // So does turning every CNOT around, which makes of a matrix the inverse of its transpose.
  struct Class {
    SmallMatrix matrix;
    SmallMatrix turned;
  };
  std::vector<Class> level{{identity_, identity_}};
  std::vector<Class> next;
  mark(identity_, 0);
  for (std::uint8_t distance = 1; !level.empty(); ++distance) {
    next.clear();
    for (const auto& [m, turned] : level) {
      stop_point();
      for (const Move move : moves_) {
        const SmallMatrix neighbour = without(m, move);
        if (distances[neighbour] != unreachable) continue;
        const SmallMatrix other = without(turned, {move.target, move.control});
        mark(neighbour, distance);
        mark(other, distance);
        next.push_back({neighbour, other});
      }
    }
    std::swap(level, next);
  }
  return distances;
}

const MapTable& MapTable::of(int wires, WindowGraph graph, bool permuted) {
  static TableCache<std::tuple<int, WindowGraph, bool>, MapTable> tables;
  return tables.get({wires, graph, permuted}, [&] { return MapTable(wires, graph, permuted); });
}

SmallMatrix MapTable::map_of(const std::vector<Gate>& block) const {
  SmallMatrix m = identity_;
  for (const Gate& gate : block) m = then(m, wire_of(gate.a), wire_of(gate.b));
  return m;
}

SmallMatrix MapTable::product(SmallMatrix a, SmallMatrix b) const {
  SmallMatrix result = 0;
  for (int r = 0; r < wires_; ++r) {
    for (int c = 0; c < wires_; ++c) {
      if ((a >> (wires_ * r + c)) & 1) result ^= ((b >> (wires_ * c)) & low_row_) << (wires_ * r);
    }
  }
  return result;
}

SmallMatrix MapTable::descend(SmallMatrix m, int detours, Rng& rng,
                              std::vector<Gate>& block) const {
  int distance = distance_[m];
  std::array<std::uint8_t, 20> there;
  std::array<std::uint8_t, 20> chosen;
  // A detour is made when `before` more gates have led closer.
  int before = detours > 0 ? rng.below(distance + 1) : -1;
  while (distance > 0 || before == 0) {
    for (std::size_t k = 0; k < moves_.size(); ++k) there[k] = distance_[without(m, moves_[k])];
    const int wanted = before == 0 ? distance : distance - 1;
    std::size_t count = 0;
    for (std::size_t k = 0; k < moves_.size(); ++k) {
      chosen[count] = static_cast<std::uint8_t>(k);
      count += there[k] == wanted;
    }
    if (--before == -1 && count == 0) continue;
    const Move move = moves_[chosen[static_cast<std::size_t>(rng.below(static_cast<int>(count)))]];
    block.push_back(cnot(move.control, move.target));
    m = without(m, move);
    distance = wanted;
    if (before == -1 && --detours > 0) before = rng.below(distance + 1);
  }
  return m;
}

}  // namespace zelt::braidwerk::internal
