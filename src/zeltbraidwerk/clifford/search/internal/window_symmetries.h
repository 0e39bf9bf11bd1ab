#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/window_moves.h"
#include "zeltbraidwerk/search/internal/task.h"

namespace zelt::braidwerk::internal {

/// What changes the distance of no operator: a one-qubit gate on each input, with the wires
/// renamed, on both sides where outputs are in place. A table of distances is built from one
/// operator of each orbit.
///
/// Element e of the group has the one-qubit gates e % 6^wires and the order e / 6^wires.
template <int wires>
class WindowSymmetries {
 public:
  /// Those that map the allowed moves, all or none on a pair of wires, to themselves.
  WindowSymmetries(Outputs outputs, std::uint64_t allowed) : outputs_(outputs) {
    for (unsigned local = 0; local < locals * locals; ++local) make_pair_images(local);
    Order order;
    std::iota(order.begin(), order.end(), std::uint8_t{0});
    do {
      orders_.push_back(order);
      const auto last = static_cast<unsigned>(orders_.size() - 1) * locals_of_all;
      if (moved(allowed, last) != allowed) orders_.pop_back();
    } while (std::ranges::next_permutation(order).found);
  }

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
  using Order = std::array<std::uint8_t, wires>;
  static constexpr unsigned locals = 6;
  static constexpr unsigned locals_of_all = [] {
    unsigned power = 1;
    for (int q = 0; q < wires; ++q) power *= locals;
    return power;
  }();
  /// What the one-qubit gates make of labels.
  static constexpr std::array<std::array<std::uint8_t, 4>, locals> local_images{
      {{0, 1, 2, 3}, {0, 1, 3, 2}, {0, 2, 1, 3}, {0, 2, 3, 1}, {0, 3, 1, 2}, {0, 3, 2, 1}}};

  void make_pair_images(unsigned local) {
    for (unsigned set = 0; set < 512; ++set) {
      for (unsigned bit = 0; bit < 9; ++bit) {
        if ((set >> bit & 1) == 0) continue;
        const int a = local_images[local % locals][bit / 3 + 1] - 1;
        const int b = local_images[local / locals][bit % 3 + 1] - 1;
        pair_images_[0][local][set] |= static_cast<std::uint16_t>(1U << (3 * a + b));
        pair_images_[1][local][set] |= static_cast<std::uint16_t>(1U << (3 * b + a));
      }
    }
  }

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
  std::vector<Order> orders_;
  /// The images of a set of the nine moves of a pair of wires; second, with the two exchanged.
  std::array<std::array<std::array<std::uint16_t, 512>, locals * locals>, 2> pair_images_{};
};

}  // namespace zelt::braidwerk::internal
