#pragma once

#include <cstddef>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/internal/bool_rows.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// Puts the gates of a list into layers. Gates that commute may change their order, so a gate is
/// bound by this alone: on each of its wires it comes behind all gates that stood before it and
/// bear another label there, and a layer has one gate a wire.
///
/// A pass over the gates puts each into the first layer that is open to it, filling gaps. A pass
/// backward, from the last layer to the first, and one forward again never need more layers and
/// often fewer, as each gate finds at least the place open that it had.
class ZELTBRAIDWERK_KERNEL_EXPORT Scheduler {
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
  struct WireState {
    int label = 0;
    int open = 0;  ///< first layer for gates of this label
    int end = 0;   ///< behind the last layer in use
  };
  /// Gates by layer; there is room for one on every pair of wires.
  struct Layers {
    std::vector<Gate> gates;
    std::vector<int> sizes;
    void clear() { sizes.clear(); }
    int depth() const { return static_cast<int>(sizes.size()); }
  };

  void start(Layers& layers);
  /// Puts the gate into the first layer that is open to it; returns the layer.
  int place(const Gate& gate, Layers& layers);
  int first_open(const Word* a, const Word* b, int layer);
  void widen();

  int room_;       // gates a layer
  int words_ = 1;  // a wire
  int bound_ = 0;
  std::vector<WireState> states_;
  std::vector<Word> used_;  // layers in use, by wire
  Layers forward_;
  Layers backward_;
  std::vector<int> spans_;  // gates by the layers before the earliest and behind the latest place
};

}  // namespace zelt::braidwerk::internal
