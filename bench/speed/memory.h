#pragma once

#include <cstddef>

namespace bench {

/// Bytes on the heap now, and the most since the last reset. Counted in the whole program, the
/// library included, by the allocation functions that memory.cpp replaces.
std::size_t heap_now();
std::size_t heap_peak();
void reset_heap_peak();

/// The most that a call holds on the heap above what stood there before it.
template <typename Call>
std::size_t peak_of(Call&& call) {
  reset_heap_peak();
  const std::size_t before = heap_now();
  call();
  return heap_peak() - before;
}

}  // namespace bench
