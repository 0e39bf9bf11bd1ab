#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/internal/bool_rows.h"
#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {

/// The parities that may be added, each in `stride` words, place b of the syndrome at bit b.
struct ParityList {
  explicit ParityList(int places) : stride(words_for(places)) {}

  int stride;
  std::vector<Word> words;
  int size = 0;

  const Word* operator[](int row) const { return words.data() + offset(row); }
  /// Appends a zero parity and returns its words.
  Word* append() {
    words.resize(words.size() + static_cast<std::size_t>(stride));
    return words.data() + offset(size++);
  }

 private:
  std::size_t offset(int row) const {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(stride);
  }
};

/// The states of a beam search, one after the other: what is left of the syndrome, its weight, and
/// the path of parities that led there. All paths of a queue are equally long.
struct DecodingQueue {
  int stride = 0;
  int path_length = 0;
  std::vector<int> weights;
  std::vector<Word> residuals;
  std::vector<int> paths;

  int size() const { return static_cast<int>(weights.size()); }
  const Word* residual(int k) const { return residuals.data() + std::ptrdiff_t{stride} * k; }
  const int* path(int k) const { return paths.data() + std::ptrdiff_t{path_length} * k; }
  void clear(int new_path_length);
  /// Appends a state without a parity added; its weight counts as 0.
  void push_root(const Word* residual);

  bool operator==(const DecodingQueue&) const = default;
};

/// Finds a short list of parities whose sum is the syndrome, by beam search: from each state the
/// `width` children of lowest weight go on, of equal weight those whose residual comes first, place
/// by place with 0 before 1.
class SyndromeDecoder {
 public:
  enum class Outcome { open, solved, stopped };

  /// The list may grow between calls.
  SyndromeDecoder(const ParityList& parities, int width, const Control& control)
      : parities_(parities), width_(width), control_(control) {}

  /// Replaces the queue by its children. When a child is zero, appends its path to `result` and
  /// ends there.
  Outcome expand(DecodingQueue& queue, std::vector<int>& result);

  /// Looks `depth` steps ahead and commits the first one of the best state, until a child is zero.
  /// After a commitment the states beyond it are kept and expanded once, or all is built anew from
  /// the residual. Appends the parities to `result` in the order of adding; false when stopped.
  ///
  /// Throws runtime_error when the search returns to a state that it has been in, and so would
  /// never end: the syndrome is no sum of parities, or a search this narrow does not find one.
  bool decode(const Word* syndrome, int depth, bool keep_states, std::vector<int>& result);

 private:
  void commit(DecodingQueue& queue, int first);
  void keep_best_children(const DecodingQueue& queue, int parent, int keep);

  const ParityList& parities_;
  int width_;
  const Control& control_;
  std::vector<int> weights_;  ///< of the children of one state
  std::vector<int> order_;    ///< of the same children, the best first
  DecodingQueue next_;
};

}  // namespace zelt::braidwerk::internal
