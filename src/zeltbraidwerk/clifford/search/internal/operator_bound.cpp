#include "zeltbraidwerk/clifford/search/internal/operator_bound.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/echelon.h"
#include "zeltbraidwerk/linear/search/internal/cut_bound.h"
#include "zeltbraidwerk/linear/search/internal/device_rewriter.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {

namespace {

/// The qubits on which a wire's labels have letters, and how many.
struct Images {
  std::array<std::vector<Word>, 4> qubits;
  std::array<int, 4> letters{};
};

Images images_of(const OperatorRows& rows, int side, int wire) {
  Images images;
  const int words = rows.words();
  for (std::size_t label = 1; label <= 3; ++label) {
    const Word* row = rows.row(side, wire, static_cast<int>(label));
    for (int w = 0; w < words; ++w) images.qubits[label].push_back(row[w] | row[words + w]);
    images.letters[label] = weight(images.qubits[label].data(), words);
  }
  return images;
}

/// The rank of the images on all qubits but one.
int rank_beside(const Images& images, int qubit) {
  int zero = 0;
  for (std::size_t label = 1; label <= 3; ++label) {
    const Word word = images.qubits[label][static_cast<std::size_t>(qubit / word_bits)];
    const auto there = static_cast<int>(word >> (qubit % word_bits) & 1);
    zero += images.letters[label] == there ? 1 : 0;
  }
  return zero == 3 ? 0 : zero == 1 ? 1 : 2;
}

/// What the operator leads from the wires beside the cut to those of its side.
int rank_across(const OperatorRows& rows, const VertexSet& side) {
  const int words = rows.words();
  BitMatrix part(2 * side.members(), 2 * words * word_bits);
  int next = 0;
  side.for_each([&](int wire) {
    for (int label = 1; label <= 2; ++label) {
      const Word* row = rows.row(0, wire, label);
      Word* there = part.row(next++);
      for (int w = 0; w < 2 * words; ++w) there[w] = row[w] & ~side.words()[w % words];
    }
  });
  return rank(std::move(part));
}

}  // namespace

LowerBound bound_of_operator(const OperatorRows& rows, Outputs outputs, const BitGraph* device) {
  const int n = rows.wires();
  LowerBound bound;
  if (n < 2) return bound;
  WireGroups groups(2 * n);  // outputs, then inputs
  int meetings = 0;
  int widest = 1;
  for (int wire = 0; wire < n; ++wire) {
    stop_point();
    const Images images = images_of(rows, 0, wire);
    const Images back = images_of(rows, 1, wire);
    int least = outputs == Outputs::in_place ? rank_beside(images, wire) : 2;
    for (int q = 0; q < n && least > 0 && outputs == Outputs::anywhere; ++q) {
      least = std::min(least, rank_beside(images, q));
    }
    meetings += least;
    bound.depth = std::max(bound.depth, least);
    for (std::size_t label = 1; label <= 3; ++label) {
      widest = std::max({widest, images.letters[label], back.letters[label]});
      if (groups.joins() == 2 * n - 1) continue;
      for_each_bit(images.qubits[label].data(), rows.words(),
                   [&](int q) { groups.join(wire, n + q); });
    }
    if (outputs == Outputs::in_place) groups.join(wire, n + wire);
  }
  bound.count = std::max((meetings + 1) / 2, groups.joins() - n);
  if (groups.largest() > 2) bound.depth = std::max(bound.depth, groups.largest() > 4 ? 2 : 1);
  bound.depth = std::max(bound.depth, layers_to_spread(widest));
  const bool cuts = outputs == Outputs::in_place && n <= most_cut_wires;
  const auto across = [&rows](const VertexSet& side) { return rank_across(rows, side); };
  if (cuts) bound.raise(bound_of_cuts(cuts_of_all_pairs(n), across));
  if (device != nullptr && outputs == Outputs::in_place) {
    const Distances distances(*device);
    for (int wire = 0; wire < n; ++wire) {
      for (int label = 1; label <= 3; ++label) {
        for (int q = 0; q < n; ++q) {
          if (rows.label_at(0, wire, label, q) == 0) continue;
          bound.raise({distances(wire, q), distances(wire, q)});
        }
      }
    }
    for (const Cuts& each : cuts ? cuts_of_graph(*device, distances) : std::vector<Cuts>{}) {
      bound.raise(bound_of_cuts(each, across));
    }
  }
  bound.depth = std::max(bound.depth, layers_to_hold(bound.count, n));
  return bound;
}

}  // namespace zelt::braidwerk::internal
