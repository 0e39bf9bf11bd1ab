#include "zeltbraidwerk/linear/internal/syndrome_decoder.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <functional>
#include <numeric>
#include <stdexcept>

#include "zeltbraidwerk/foundations/internal/clones.h"

namespace zelt::braidwerk::internal {
namespace {

/// Weights of base plus each parity, up to the first that is zero. Returns its number, or -1.
ZELTBRAIDWERK_CLONES
int weigh_children(const Word* parities, int count, int stride, const Word* base, int* weights) {
  for (int c = 0; c < count; ++c, parities += stride) {
    int weight = 0;
    for (int w = 0; w < stride; ++w) weight += std::popcount(base[w] ^ parities[w]);
    if (weight == 0) return c;
    weights[c] = weight;
  }
  return -1;
}

/// -1, 0 or 1: the order of two rows, given by their words, place by place with 0 before 1.
template <class A, class B>
int compare_bits(int stride, A a, B b) {
  for (int w = 0; w < stride; ++w) {
    const Word difference = a(w) ^ b(w);
    if (difference != 0) return (a(w) & difference & (~difference + 1)) != 0 ? 1 : -1;
  }
  return 0;
}

/// The order of the states of a queue: weight, residual, path.
bool state_before(const DecodingQueue& queue, int a, int b) {
  const auto weight = [&](int k) { return queue.weights[static_cast<std::size_t>(k)]; };
  if (weight(a) != weight(b)) return weight(a) < weight(b);
  const int order = compare_bits(
      queue.stride, [&](int w) { return queue.residual(a)[w]; },
      [&](int w) { return queue.residual(b)[w]; });
  if (order != 0) return order < 0;
  return std::lexicographical_compare(queue.path(a), queue.path(a) + queue.path_length,
                                      queue.path(b), queue.path(b) + queue.path_length);
}

}  // namespace

void DecodingQueue::clear(int new_path_length) {
  path_length = new_path_length;
  weights.clear();
  residuals.clear();
  paths.clear();
}

void DecodingQueue::push_root(const Word* residual) {
  weights.push_back(0);
  residuals.insert(residuals.end(), residual, residual + stride);
}

void SyndromeDecoder::keep_best_children(const DecodingQueue& queue, int parent, int keep) {
  const Word* base = queue.residual(parent);
  // The same order as state_before: the paths of two children differ in the last step alone.
  const auto child_before = [&](int a, int b) {
    const int weight_a = weights_[static_cast<std::size_t>(a)];
    const int weight_b = weights_[static_cast<std::size_t>(b)];
    if (weight_a != weight_b) return weight_a < weight_b;
    const int order = compare_bits(
        queue.stride, [&](int w) { return base[w] ^ parities_[a][w]; },
        [&](int w) { return base[w] ^ parities_[b][w]; });
    return order != 0 ? order < 0 : a < b;
  };
  std::iota(order_.begin(), order_.end(), 0);
  std::ranges::partial_sort(order_, order_.begin() + keep, child_before);
  for (int k = 0; k < keep; ++k) {
    const int row = order_[static_cast<std::size_t>(k)];
    next_.weights.push_back(weights_[static_cast<std::size_t>(row)]);
    for (int w = 0; w < queue.stride; ++w) {
      next_.residuals.push_back(base[w] ^ parities_[row][w]);
    }
    next_.paths.insert(next_.paths.end(), queue.path(parent),
                       queue.path(parent) + queue.path_length);
    next_.paths.push_back(row);
  }
}

SyndromeDecoder::Outcome SyndromeDecoder::expand(DecodingQueue& queue, std::vector<int>& result) {
  const int count = parities_.size;
  const int keep = std::clamp(width_, 0, count);
  weights_.resize(static_cast<std::size_t>(count));
  order_.resize(static_cast<std::size_t>(count));
  next_.stride = queue.stride;
  next_.clear(queue.path_length + 1);
  for (int parent = 0; parent < queue.size(); ++parent) {
    if (control_.stop_requested()) return Outcome::stopped;
    const int zero = weigh_children(parities_.words.data(), count, parities_.stride,
                                    queue.residual(parent), weights_.data());
    if (zero >= 0) {
      result.insert(result.end(), queue.path(parent), queue.path(parent) + queue.path_length);
      result.push_back(zero);
      return Outcome::solved;
    }
    keep_best_children(queue, parent, keep);
  }
  std::swap(queue, next_);
  return Outcome::open;
}

/// Keeps the states whose path begins with `first`, in order, and takes it from their paths.
void SyndromeDecoder::commit(DecodingQueue& queue, int first) {
  std::vector<int> kept;
  for (int k = 0; k < queue.size(); ++k) {
    if (*queue.path(k) == first) kept.push_back(k);
  }
  std::ranges::sort(kept, [&](int a, int b) { return state_before(queue, a, b); });
  next_.stride = queue.stride;
  next_.clear(queue.path_length - 1);
  for (const int k : kept) {
    next_.weights.push_back(queue.weights[static_cast<std::size_t>(k)]);
    next_.residuals.insert(next_.residuals.end(), queue.residual(k),
                           queue.residual(k) + queue.stride);
    next_.paths.insert(next_.paths.end(), queue.path(k) + 1, queue.path(k) + queue.path_length);
  }
  std::swap(queue, next_);
}

bool SyndromeDecoder::decode(const Word* syndrome, int depth, bool keep_states,
                             std::vector<int>& result) {
  std::vector<Word> residual(syndrome, syndrome + parities_.stride);
  if (std::ranges::none_of(residual, std::identity{})) return true;

  DecodingQueue queue;
  queue.stride = parities_.stride;
  queue.push_root(residual.data());
  // A search without an end comes back to an earlier queue: one is remembered, at distances that
  // double, and found again once it lies on the loop.
  DecodingQueue remembered;
  for (int levels = std::max(depth, 1), step = 1, mark = 1;; ++step) {
    for (int level = 0; level < levels; ++level) {
      const Outcome outcome = expand(queue, result);
      if (outcome != Outcome::open) return outcome == Outcome::solved;
    }
    if (queue.size() == 0) throw std::runtime_error("Syndrome decoding: no parities to add");
    int best = 0;
    for (int k = 1; k < queue.size(); ++k) {
      if (state_before(queue, k, best)) best = k;
    }
    const int first = *queue.path(best);
    result.push_back(first);
    if (keep_states) {
      commit(queue, first);
      levels = 1;
    } else {
      for (int w = 0; w < parities_.stride; ++w) {
        residual[static_cast<std::size_t>(w)] ^= parities_[first][w];
      }
      queue.clear(0);
      queue.push_root(residual.data());
    }
    if (queue == remembered) {
      throw std::runtime_error("Syndrome decoding: the search runs in circles");
    }
    if (step == mark) {
      remembered = queue;
      mark *= 2;
    }
  }
}

}  // namespace zelt::braidwerk::internal
