#include "zeltbraidwerk/graphs/blossom.h"

#include <algorithm>
#include <cstddef>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/graphs/internal/matcher.h"

double BlossomAlgorithm(const std::vector<std::vector<int>>& weights, int n,
                        std::vector<std::tuple<int, int>>& matching) {
  zelt::braidwerk::internal::Matcher matcher(n);
  auto weight = matcher.weights().begin();
  const auto size = static_cast<std::size_t>(matcher.size());
  for (std::size_t i = 0; i < size; ++i) {
    zelt::braidwerk::internal::stop_point();
    for (std::size_t j = i; j < size; ++j) *weight++ = std::max(weights[i][j], weights[j][i]);
  }
  return matcher.run(matching);
}
