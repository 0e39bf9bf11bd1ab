#include "speed/memory.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace bench {
namespace {

std::atomic<std::size_t> now{0};
std::atomic<std::size_t> peak{0};

void* counted(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  const std::size_t size = now += malloc_usable_size(memory);
  if (size > peak) peak = size;
  return memory;
}

void release(void* memory) {
  now -= malloc_usable_size(memory);
  std::free(memory);
}

}  // namespace

std::size_t heap_now() {
  return now;
}
std::size_t heap_peak() {
  return peak;
}
void reset_heap_peak() {
  peak = now.load();
}

}  // namespace bench

void* operator new(std::size_t size) {
  return bench::counted(std::malloc(size == 0 ? 1 : size));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  const auto step = static_cast<std::size_t>(alignment);
  return bench::counted(std::aligned_alloc(step, (size + step - 1) / step * step));
}
void operator delete(void* memory) noexcept {
  bench::release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  bench::release(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
  bench::release(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
  bench::release(memory);
}
