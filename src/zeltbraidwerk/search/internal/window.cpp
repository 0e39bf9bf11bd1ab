#include "zeltbraidwerk/search/internal/window.h"

#include <algorithm>

namespace zelt::braidwerk::internal {

namespace {

/// Whether a gate may pass those skipped, of which `a` and `b` are the labels met on its wires.
constexpr bool passes(const Gate& gate, unsigned a, unsigned b, Gathering gathering) {
  const auto only = [](unsigned labels, int own) { return (labels & ~(1U << own)) == 0; };
  if (gathering == Gathering::by_values) return only(a, label_z) && b == 0;
  return only(a, label_of(gate.a)) && only(b, label_of(gate.b));
}

constexpr bool closed(unsigned labels) {
  return (labels & (labels - 1)) != 0;
}

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
  scan<-1>(list, at, gathering, window);
  std::reverse(window.positions.begin(), window.positions.end());
  scan<1>(list, at, gathering, window);
  window.gates.clear();
  for (const int position : window.positions) {
    const Gate& gate = list[static_cast<std::size_t>(position)];
    window.gates.push_back(
        {end_of(place(gate.a), label_of(gate.a)), end_of(place(gate.b), label_of(gate.b))});
  }
}

template <int direction>
void WindowFinder::scan(const std::vector<Gate>& list, int at, Gathering gathering,
                        Window& window) {
  std::array<unsigned, most_window_wires> skipped{};  // by place: a bit for each label met
  int open = window.size;
  const auto skip = [&](int place, End end) {
    unsigned& labels = skipped[static_cast<std::size_t>(place)];
    const bool was = closed(labels);
    labels |= 1U << label_of(end);
    if (!was && closed(labels)) --open;
  };
  const int end = direction > 0 ? static_cast<int>(list.size()) : -1;
  int position = direction > 0 ? at : at - 1;
  int reached = at;  // the end of the stretch up to the last gate taken
  bool all = position == end;
  while (position != end && open >= 2) {
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
    for (; k < count && open >= 2; ++k) {
      const int here = touching[static_cast<std::size_t>(k)];
      const Gate& gate = list[static_cast<std::size_t>(here)];
      const int a = place(gate.a);
      const int b = place(gate.b);
      if (a != none && b != none &&
          passes(gate, skipped[static_cast<std::size_t>(a)], skipped[static_cast<std::size_t>(b)],
                 gathering)) {
        window.positions.push_back(here);
        reached = direction > 0 ? here + 1 : here;
        continue;
      }
      if (a != none) skip(a, gate.a);
      if (b != none) skip(b, gate.b);
    }
    all = position == end && k == count;
  }
  unsigned untouched = 0;
  if (all) {
    for (int k = 0; k < window.size; ++k) {
      if (skipped[static_cast<std::size_t>(k)] == 0) untouched |= 1U << k;
    }
  }
  (direction > 0 ? window.last : window.first) = reached;
  (direction > 0 ? window.to_end : window.from_start) = untouched;
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
