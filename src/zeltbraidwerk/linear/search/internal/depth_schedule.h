#pragma once

#include <cstddef>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bool_rows.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// Puts the gates of a list into layers. Gates that commute may change their order, so a gate is
/// bound by this alone: on each of its wires it comes after all gates that were before it and have
/// another label there, and a layer has one gate per wire.
///
/// A pass over the gates puts each into the first layer that is open to it, filling gaps. A pass
/// backward, from the last layer to the first, and one forward again never need more layers and
/// often fewer, as each gate finds at least the place open that it had.
class Scheduler {
 public:
  explicit Scheduler(int wires);

  /// A pass forward in the order of the list, and one backward; the gates are then in the order of
  /// their layers, each as late as it can be. Returns the number of layers: never more than
  /// depth_of(gates).
  int tighten(std::vector<Gate>& gates);

  /// tighten() until it finds nothing more.
  int settle(std::vector<Gate>& gates);

  /// Gates that were as early as they were late when last tightened.
  int bound() const { return bound_; }

 private:
  struct Wire {
    unsigned label;
    unsigned open;  ///< first layer for gates of this label
    unsigned end;   ///< after the last layer in use
  };
  /// Gates by layer; there is room for one on every pair of wires.
  struct Layers {
    std::vector<Gate> gates;
    std::vector<unsigned> sizes;  // one for each layer that there is room for
    unsigned depth = 0;
  };

  void start(Layers& layers);
  /// Puts the gate into the first layer that is open to it; returns the layer.
  unsigned place(Gate gate, Layers& layers);
  void make_room(unsigned layer, Layers& layers);

  std::size_t width_;      // gates that have room in a layer
  std::size_t words_ = 1;  // per wire
  int bound_ = 0;
  std::vector<Wire> wires_;
  std::vector<Word> used_;  // layers in use, by wire
  Layers forward_;
  Layers backward_;
  std::vector<int> spans_;  // gates by the layers before their earliest and after their latest
};

}  // namespace zelt::braidwerk::internal
