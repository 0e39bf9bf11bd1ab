#pragma once

#include <cstdint>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/internal/bool_rows.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

/// Few vectors out of a pool that add up to a target: information-set decoding. The pool is
/// written in the coordinates of some of its own vectors, then any sum with up to two others is
/// read off by its weight, where the sum is 0 on a few coordinates drawn anew each time; a few
/// coordinates are exchanged at random, and so on. Up to 65,535 vectors.
class ZELTBRAIDWERK_KERNEL_EXPORT SumDecoder {
 public:
  /// Vectors of `bits` bits. The pool must hold all unit vectors as its first `bits` vectors.
  explicit SumDecoder(int bits) : bits_(bits), stride_(words_for(bits)) {}

  void clear() { pool_.clear(); }
  void push(const Word* vector) { pool_.insert(pool_.end(), vector, vector + stride_); }
  int size() const { return stride_ == 0 ? 0 : static_cast<int>(pool_.size()) / stride_; }

  /// Numbers of vectors of the pool whose sum is the target; the fewest seen in so many exchanges.
  std::vector<int> decode(const Word* target, int exchanges, Rng& rng);

 private:
  void exchange(int coordinate, int place);
  int weight_of(const Word* words) const;
  void try_sums(Rng& rng);
  void keep(int weight, int first, int second);

  Word* vector(int k) { return work_.data() + static_cast<std::ptrdiff_t>(k) * stride_; }

  int bits_;
  int stride_;
  std::vector<Word> pool_;
  std::vector<Word> work_;    // the pool in the coordinates of the basis, the target last
  std::vector<int> basis_;    // coordinate -> vector
  std::vector<int> others_;   // the vectors outside
  std::vector<Word> packed_;  // scratch: the others side by side
  int best_weight_ = 0;
  std::vector<int> best_;
};

}  // namespace zelt::braidwerk::internal
