#pragma once

namespace zelt::braidwerk::internal {

/// While one is alive on any thread, a child that the process forks is of no use: a lock that this
/// thread holds, or a table that it is building, would never be free there. So threads that build
/// what all share keep one, and calls in such a child are refused instead of waiting for ever.
class Unforkable {
 public:
  Unforkable();
  ~Unforkable();
  Unforkable(const Unforkable&) = delete;
  Unforkable& operator=(const Unforkable&) = delete;
};

/// Whether this process was forked while one was alive.
bool is_forked_amid_a_build();

}  // namespace zelt::braidwerk::internal
