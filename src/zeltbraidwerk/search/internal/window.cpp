#include "zeltbraidwerk/search/internal/window.h"

#include <algorithm>

namespace zelt::braidwerk::internal {

namespace {

/// The gates skipped so far on the way from the block, by what they leave open: a gate may pass
/// them when its a is among `first` and its b among `second`, and with Gathering::by_labels when on
/// neither another label was met.
template <Gathering gathering>
class Skipped {
 public:
  explicit Skipped(int places) : first_((1U << places) - 1), second_(first_), untouched_(first_) {}

  bool pass(const Gate& gate, int a, int b) const {
    if (((first_ >> a) & (second_ >> b) & 1U) == 0) return false;
    if constexpr (gathering != Gathering::by_labels) return true;
    return only(a, gate.a) && only(b, gate.b);
  }

  void add(int place, End end) {
    const unsigned bit = 1U << place;
    untouched_ &= ~bit;
    if constexpr (gathering == Gathering::by_labels) {
      unsigned& labels = labels_[static_cast<std::size_t>(place)];
      labels |= 1U << label_of(end);
      if ((labels & (labels - 1)) != 0) first_ = second_ &= ~bit;
    } else {
      const bool target = label_of(end) == label_x;
      if (target) first_ &= ~bit;
      if (!target || gathering == Gathering::by_values) second_ &= ~bit;
    }
  }

  /// Whether any gate may still pass.
  bool open() const {
    const unsigned both = first_ | second_;
    return first_ != 0 && second_ != 0 && (both & (both - 1)) != 0;
  }
  unsigned untouched() const { return untouched_; }

 private:
  bool only(int place, End end) const {
    return (labels_[static_cast<std::size_t>(place)] & ~(1U << label_of(end))) == 0;
  }

  unsigned first_;
  unsigned second_;
  unsigned untouched_;
  std::array<unsigned, most_window_wires> labels_{};  // by place: one bit per label met
};

}  // namespace

void WindowFinder::enter(int wire, Window& window) {
  place_[static_cast<std::size_t>(wire)] = static_cast<std::uint8_t>(window.size);
  window.wires[static_cast<std::size_t>(window.size++)] = static_cast<std::uint16_t>(wire);
}

void WindowFinder::find(const std::vector<Gate>& list, int at, int size, Gathering gathering,
                        Rng& rng, Window& window) {
  grow(list, at, size, rng, window);
  gather(list, at, gathering, window);
  for (int k = 0; k < window.size; ++k) {
    place_[window.wires[static_cast<std::size_t>(k)]] = none;
  }
}

void WindowFinder::grow(const std::vector<Gate>& list, int at, int size, Rng& rng, Window& window) {
  window.size = 0;
  const Gate& seed = list[static_cast<std::size_t>(at)];
  enter(wire_of(seed.a), window);
  enter(wire_of(seed.b), window);
  const int end = static_cast<int>(list.size());
  int low = at;
  int high = at;
  std::uint64_t bits = 0;
  while (window.size < size && (low > 0 || high + 1 < end)) {
    if (bits < 8) bits = rng.next() | (std::uint64_t{1} << 63);
    const bool down = high + 1 >= end || (low > 0 && (bits & 1) != 0);
    const bool take = (bits & 6) != 0;
    bits >>= 3;
    // On to the next gate with one wire inside.
    int& position = down ? low : high;
    const int step = down ? -1 : 1;
    for (position += step; position >= 0 && position < end; position += step) {
      const Gate& gate = list[static_cast<std::size_t>(position)];
      const bool a = place(gate.a) != none;
      if (a == (place(gate.b) != none)) continue;
      if (take) enter(wire_of(a ? gate.b : gate.a), window);
      break;
    }
  }
}

void WindowFinder::gather(const std::vector<Gate>& list, int at, Gathering gathering,
                          Window& window) {
  window.positions.clear();
  window.first = window.centre = window.last = at;
  switch (gathering) {
    case Gathering::by_labels:
      scan_both<Gathering::by_labels>(list, at, window);
      break;
    case Gathering::of_cnots:
      scan_both<Gathering::of_cnots>(list, at, window);
      break;
    case Gathering::by_values:
      scan_both<Gathering::by_values>(list, at, window);
      break;
  }
  window.gates.clear();
  for (const int position : window.positions) {
    const Gate& gate = list[static_cast<std::size_t>(position)];
    window.gates.push_back(
        {end_of(place(gate.a), label_of(gate.a)), end_of(place(gate.b), label_of(gate.b))});
  }
}

template <Gathering gathering>
void WindowFinder::scan_both(const std::vector<Gate>& list, int at, Window& window) {
  scan<-1, gathering>(list, at, window);
  std::reverse(window.positions.begin(), window.positions.end());
  scan<1, gathering>(list, at, window);
}

template <int direction, Gathering gathering>
void WindowFinder::scan(const std::vector<Gate>& list, int at, Window& window) {
  Skipped<gathering> skipped(window.size);
  const int end = direction > 0 ? static_cast<int>(list.size()) : -1;
  int position = direction > 0 ? at : at - 1;
  int reached = at;  // the end of the stretch up to the last gate taken
  bool all = position == end;
  while (position != end && skipped.open()) {
    // The gates on wires of the window, first picked out without a branch.
    constexpr int most = 32;
    std::array<int, most> touching;
    const int stop =
        direction > 0 ? std::min(position + most, end) : std::max(position - most, end);
    int count = 0;
    for (; position != stop; position += direction) {
      const Gate& gate = list[static_cast<std::size_t>(position)];
      touching[static_cast<std::size_t>(count)] = position;
      count += (place(gate.a) & place(gate.b)) != none;
    }
    int k = 0;
    for (; k < count && skipped.open(); ++k) {
      const int here = touching[static_cast<std::size_t>(k)];
      const Gate& gate = list[static_cast<std::size_t>(here)];
      const int a = place(gate.a);
      const int b = place(gate.b);
      if (a != none && b != none && skipped.pass(gate, a, b)) {
        window.positions.push_back(here);
        reached = direction > 0 ? here + 1 : here;
        continue;
      }
      if (a != none) skipped.add(a, gate.a);
      if (b != none) skipped.add(b, gate.b);
    }
    all = position == end && k == count;
  }
  (direction > 0 ? window.last : window.first) = reached;
  (direction > 0 ? window.to_end : window.from_start) = all ? skipped.untouched() : 0;
}

int WindowFinder::replace(std::vector<Gate>& list, const Window& window,
                          const std::vector<Gate>& block) {
  static thread_local std::vector<Gate> on_wires;
  const auto placed = [&](End end) {
    return end_of(window.wires[static_cast<std::size_t>(wire_of(end))], label_of(end));
  };
  on_wires.clear();
  for (const Gate& gate : block) on_wires.push_back({placed(gate.a), placed(gate.b)});
  return put_block(list, window, on_wires);
}

}  // namespace zelt::braidwerk::internal
