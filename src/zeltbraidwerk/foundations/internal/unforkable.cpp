#include "zeltbraidwerk/foundations/internal/unforkable.h"

#include <pthread.h>

#include <atomic>

namespace zelt::braidwerk::internal {
namespace {

std::atomic<int> builds = 0;
std::atomic<bool> orphaned = false;

void look_in_child() {
  if (builds > 0) orphaned = true;
}

}  // namespace

Unforkable::Unforkable() {
  [[maybe_unused]] static const int registered = pthread_atfork(nullptr, nullptr, look_in_child);
  ++builds;
}

Unforkable::~Unforkable() {
  --builds;
}

bool is_forked_amid_a_build() {
  return orphaned;
}

}  // namespace zelt::braidwerk::internal
