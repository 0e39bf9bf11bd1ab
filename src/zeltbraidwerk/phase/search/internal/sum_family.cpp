#include "zeltbraidwerk/phase/search/internal/sum_family.h"

#include <utility>

namespace zelt::braidwerk::internal {
namespace {

/// The words of a variable: those in which it is 1, or in each word the bits.
constexpr std::array<std::uint64_t, 6> variable = {0xaaaaaaaaaaaaaaaa, 0xcccccccccccccccc,
                                                   0xf0f0f0f0f0f0f0f0, 0xff00ff00ff00ff00,
                                                   0xffff0000ffff0000, 0xffffffff00000000};

void swap_variables(SumFamily& family, int a, int b) {
  if (a > b) std::swap(a, b);
  if (b < 6) {
    const int shift = (1 << b) - (1 << a);
    const std::uint64_t moved =
        variable[static_cast<std::size_t>(a)] & ~variable[static_cast<std::size_t>(b)];
    for (std::uint64_t& word : family) {
      const std::uint64_t change = ((word >> shift) ^ word) & moved;
      word ^= change ^ (change << shift);
    }
    return;
  }
  const std::size_t high = std::size_t{1} << (b - 6);
  if (a < 6) {
    const int shift = 1 << a;
    const std::uint64_t ones = variable[static_cast<std::size_t>(a)];
    for (std::size_t w = 0; w < family_words; ++w) {
      if (w & high) continue;
      const std::uint64_t change = (family[w] & ones) ^ ((family[w | high] << shift) & ones);
      family[w] ^= change;
      family[w | high] ^= change >> shift;
    }
    return;
  }
  const std::size_t low = std::size_t{1} << (a - 6);
  for (std::size_t w = 0; w < family_words; ++w) {
    if ((w & low) && !(w & high)) std::swap(family[w], family[(w ^ low) | high]);
  }
}

}  // namespace

void forget_slot(SumFamily& family, int slot) {
  if (slot < 6) {
    for (std::uint64_t& word : family) {
      word &= ~variable[static_cast<std::size_t>(slot)];
      word |= word << (1 << slot);
    }
    return;
  }
  const std::size_t bit = std::size_t{1} << (slot - 6);
  for (std::size_t w = 0; w < family_words; ++w) {
    if (w & bit) family[w] = family[w ^ bit];
  }
}

void draw_back(SumFamily& family, Slots image) {
  for (int a = 0; a < sum_slots; ++a) {
    const std::uint8_t b = image[static_cast<std::size_t>(a)];
    if (b == a) continue;
    swap_variables(family, a, b);
    for (std::uint8_t& slot : image)
      slot = slot == a ? b : slot == b ? static_cast<std::uint8_t>(a) : slot;
  }
}

}  // namespace zelt::braidwerk::internal
