#pragma once

#include <memory>
#include <tuple>
#include <vector>

namespace zelt::braidwerk::internal {

/// Maximum-weight matching on the complete graph of `size` items, a loop on each of them included.
/// The graph is built once and serves any number of weight tables.
///
/// Which of several best matchings comes out, and in which order, follows from the order of the
/// edges: (0, 0), (0, 1), ... (0, n-1), (1, 1), ... Edges that cannot be of use stay in for the
/// same reason.
class Matcher {
 public:
  explicit Matcher(int size);
  ~Matcher();
  Matcher(Matcher&&) noexcept;
  Matcher& operator=(Matcher&&) noexcept;

  int size() const;

  /// The weight of each edge, in the order of the edges; to be filled before a run.
  std::vector<int>& weights();

  /// Appends the matched pairs, the smaller item first. Returns the weight of the matching.
  int run(std::vector<std::tuple<int, int>>& matching);

 private:
  struct Problem;
  std::unique_ptr<Problem> problem_;
};

}  // namespace zelt::braidwerk::internal
