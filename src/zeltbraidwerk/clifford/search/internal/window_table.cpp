#include "zeltbraidwerk/clifford/search/internal/window_table.h"

#include <algorithm>
#include <numeric>

namespace zelt::braidwerk::internal {
namespace {

/// What the six one-qubit Clifford gates make of labels.
constexpr std::array<std::array<std::uint8_t, 4>, 6> local_images{
    {{0, 1, 2, 3}, {0, 1, 3, 2}, {0, 2, 1, 3}, {0, 2, 3, 1}, {0, 3, 1, 2}, {0, 3, 2, 1}}};
constexpr unsigned locals = 6;

constexpr unsigned power(unsigned base, int exponent) {
  unsigned result = 1;
  for (; exponent > 0; --exponent) result *= base;
  return result;
}

/// Classes of operators: symplectic matrices over one-qubit matrices.
constexpr int classes_on(int wires, Outputs outputs) {
  const std::array<int, 5> free{1, 1, 10, 1120, 1523200};
  const std::array<int, 5> orders{1, 1, 2, 6, 24};
  const auto n = static_cast<std::size_t>(wires);
  return free[n] * (outputs == Outputs::free ? 1 : orders[n]);
}

/// The nine bits of a pair of wires, those that a set of labels' images have; from the second on
/// with the two wires exchanged.
using PairImages = std::array<std::array<std::array<std::uint16_t, 512>, locals * locals>, 2>;

PairImages make_pair_images() {
  PairImages images{};
  for (unsigned local = 0; local < locals * locals; ++local) {
    for (unsigned set = 0; set < 512; ++set) {
      for (unsigned bit = 0; bit < 9; ++bit) {
        if ((set >> bit & 1) == 0) continue;
        const int a = local_images[local % locals][bit / 3 + 1] - 1;
        const int b = local_images[local / locals][bit % 3 + 1] - 1;
        images[0][local][set] |= static_cast<std::uint16_t>(1U << (3 * a + b));
        images[1][local][set] |= static_cast<std::uint16_t>(1U << (3 * b + a));
      }
    }
  }
  return images;
}

}  // namespace

/// The operators that may be put before any other without changing its distance: a one-qubit gate
/// on each wire, wires renamed behind them. Element e has order e / 6^wires.
template <int wires>
class WindowTable<wires>::Symmetries {
 public:
  using Order = std::array<std::uint8_t, wires>;
  static constexpr unsigned locals_of_all = power(locals, wires);

  Symmetries(Outputs outputs, std::uint64_t allowed)
      : outputs_(outputs), pair_images_(make_pair_images()) {
    Order order;
    std::iota(order.begin(), order.end(), std::uint8_t{0});
    do {
      orders_.push_back(order);
      if (moved(allowed, element_count() - locals_of_all) != allowed) orders_.pop_back();
    } while (std::ranges::next_permutation(order).found);
  }

  unsigned element_count() const { return static_cast<unsigned>(orders_.size()) * locals_of_all; }

  /// Calls visit(element, rows) for the images of an operator.
  template <class F>
  void each_image(WindowRows rows, F&& visit) const {
    for (unsigned o = 0; o < orders_.size(); ++o) {
      const auto parts = images_of_wires(rows, orders_[o]);
      for (unsigned element = 0; element < locals_of_all; ++element) {
        WindowRows image = 0;
        unsigned rest = element;
        for (unsigned q = 0; q < wires; ++q, rest /= locals) image ^= parts[q][rest % locals];
        visit(o * locals_of_all + element, image);
      }
    }
  }

  /// The image of a set of moves.
  std::uint64_t moved(std::uint64_t set, unsigned element) const {
    const Order& order = orders_[element / locals_of_all];
    std::array<unsigned, wires> local{};
    for (unsigned q = 0, rest = element % locals_of_all; q < wires; ++q, rest /= locals) {
      local[q] = rest % locals;
    }
    std::uint64_t image = 0;
    for (unsigned b = 1; b < wires; ++b) {
      for (unsigned a = 0; a < b; ++a, set >>= 9) {
        const unsigned low = std::min(order[a], order[b]);
        const unsigned high = std::max(order[a], order[b]);
        const auto& images = pair_images_[order[a] == low ? 0 : 1][local[a] + locals * local[b]];
        image |= std::uint64_t{images[set & 511]} << (9 * (high * (high - 1) / 2 + low));
      }
    }
    return image;
  }

 private:
  /// What each wire's labels become, by the one-qubit gate on it; an image is a sum of these.
  auto images_of_wires(WindowRows rows, const Order& order) const {
    constexpr WindowRows lowest = 0x0101010101010101;
    WindowRows placed = rows;
    if (outputs_ == Outputs::in_place) {
      placed = 0;
      for (unsigned i = 0; i < wires; ++i) {
        placed |= (rows >> (16 * i) & 0xffff) << (16 * order[i]);
      }
    }
    std::array<std::array<WindowRows, locals>, wires> parts{};
    for (unsigned q = 0; q < wires; ++q) {
      const WindowRows x = placed >> (2 * q) & lowest;
      const WindowRows z = placed >> (2 * q + 1) & lowest;
      for (unsigned local = 0; local < locals; ++local) {
        const auto& image = local_images[local];
        parts[q][local] = (x * image[1] ^ z * image[2]) << (2 * order[q]);
      }
    }
    return parts;
  }

  Outputs outputs_;
  PairImages pair_images_;
  std::vector<Order> orders_;
};

template <int wires>
WindowTable<wires>::WindowTable(Outputs outputs, std::uint64_t allowed) : outputs_(outputs) {
  const auto classes = static_cast<std::uint64_t>(classes_on(wires, outputs));
  slots_.resize(std::bit_ceil(classes + classes / 4 + 8));
  shift_ = 64 - std::countr_zero(slots_.size());
  build(allowed);
}

template <int wires>
const WindowTable<wires>& WindowTable<wires>::shared() {
  static const WindowTable table(Outputs::free);
  return table;
}

/// While it is built a slot's value holds its orbit and the symmetry that leads there.
constexpr int orbit_shift = 16;

template <int wires>
void WindowTable<wires>::fill(const Symmetries& symmetries, WindowRows first, std::size_t orbit) {
  symmetries.each_image(first, [&](unsigned element, WindowRows image) {
    const Key key = key_of(image);
    Slot& slot = slots_[slot_of(key)];
    if (slot.key != 0) return;
    slot = {key, orbit << orbit_shift | element};
    ++size_;
  });
}

template <int wires>
void WindowTable<wires>::build(std::uint64_t allowed) {
  const Symmetries symmetries(outputs_, allowed);
  std::vector<Orbit> orbits{{identity_rows_on(wires), 0, 0}};
  fill(symmetries, orbits[0].first, 0);
  for (std::size_t k = 0; k < orbits.size(); ++k) {
    const Orbit orbit = orbits[k];
    for (unsigned move = 0; move < moves; ++move) {
      if ((allowed >> move & 1) == 0) continue;
      const WindowRows rows = behind(window_gates[move], orbit.first);
      const Slot& slot = slots_[slot_of(key_of(rows))];
      if (slot.key == 0) {
        fill(symmetries, rows, orbits.size());
        orbits.push_back({rows, orbit.distance + 1, 0});
      } else if (orbits[slot.value >> orbit_shift].distance < orbit.distance) {
        orbits[k].down |= std::uint64_t{1} << move;
      }
    }
  }
  for (Slot& slot : slots_) {
    if (slot.key == 0) continue;
    const Orbit& orbit = orbits[slot.value >> orbit_shift];
    const auto element = static_cast<unsigned>(slot.value & ((1U << orbit_shift) - 1));
    slot.value = static_cast<std::uint64_t>(orbit.distance) << distance_shift |
                 symmetries.moved(orbit.down, element);
  }
}

template class WindowTable<2>;
template class WindowTable<3>;
template class WindowTable<4>;

}  // namespace zelt::braidwerk::internal
