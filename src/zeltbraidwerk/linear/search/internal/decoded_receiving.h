#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/linear/search/internal/light_sums.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// Gates in their order, with room for others between them.
class Timeline {
 public:
  static constexpr int none = -1;

  /// Puts a gate after another one, or before all; returns its number.
  int put(const Gate& gate, int after);
  /// Of each gate: how many are before it.
  std::vector<int> places() const;
  std::vector<Gate> gates() const;

 private:
  template <class F>
  void each(F&& f) const {
    for (int at = first_; at != none; at = next_[static_cast<std::size_t>(at)]) f(at);
  }

  std::vector<Gate> gates_;
  std::vector<int> next_;
  int first_ = none;
};

/// A wire outside of a block: the end of the gates by which it receives, and the end by which it
/// passes on what it lacks, where it may.
struct Receiver {
  End by;
  std::optional<End> passes_on;
};

/// What wires outside of a block receive from its circuit. Each lacks a vector, and a gate with an
/// end of the block at some moment brings another one: the fewest that sum up to what a wire lacks
/// are found by decoding. A wire may pass on what it lacks, at any moment between its own gates, so
/// there are more vectors with every wire.
class Receiving {
 public:
  /// A row and a receiver for each wire. LightSums::most_dimensions columns at most.
  Receiving(const BitMatrix& lacking, std::vector<Receiver> receivers);

  /// A gate of the block, after those so far.
  void put(const Gate& gate) { last_ = timeline_.put(gate, last_); }
  /// What an end of the block brings after the gates so far. The first ones are the unit vectors.
  void add(End end, const Word* vector) { add({end, last_}, vector); }

  /// Puts the gates by which the wires receive among those of the block, after about so many steps
  /// of decoding. False where spend(steps) was, before the end.
  bool receive(double steps, Rng& rng, const std::function<bool(double)>& spend);

  std::vector<Gate> gates() const { return timeline_.gates(); }

 private:
  struct Source {
    End end;
    int after;  // the number of a gate
  };

  void add(const Source& source, const Word* vector);
  const Word* vector(std::size_t source) const {
    return &vectors_[source * static_cast<std::size_t>(lacking_.stride())];
  }
  void give(int row);

  BitMatrix lacking_;
  std::vector<Receiver> receivers_;
  LightSums sums_;
  Timeline timeline_;
  int last_ = Timeline::none;
  std::vector<Source> sources_;
  std::vector<Word> vectors_;  // of the sources, one after the other
};

}  // namespace zelt::braidwerk::internal
