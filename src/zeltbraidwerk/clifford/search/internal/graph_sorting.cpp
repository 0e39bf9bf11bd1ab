#include "zeltbraidwerk/clifford/search/internal/graph_sorting.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/linear/internal/pair_elimination.h"

namespace zelt::braidwerk::internal {
namespace {

/// Of so many wires that are left, those that come next.
int wires_coming_next(int left) {
  const int digits = std::bit_width(static_cast<unsigned>(left));
  return std::max(digits - clifford_tuning.sorted_digits, 0);
}

/// Adds column a to column b, of rows of two words. Both words are written, so that many rows are
/// taken at once.
template <int word_of_a>
inline void add_column(Word* words, int rows, int a, int b) {
  const Word in_first = b < word_bits ? ~Word{0} : 0;
  for (int r = 0; r < 2 * rows; r += 2) {
    const Word bit = ((words[r + word_of_a] >> a % word_bits) & 1) << b % word_bits;
    words[r] ^= bit & in_first;
    words[r + 1] ^= bit & ~in_first;
  }
}
ZELTBRAIDWERK_CLONES
void add_column(Word* words, int rows, int a, int b) {
  a < word_bits ? add_column<0>(words, rows, a, b) : add_column<1>(words, rows, a, b);
}

/// A sum changes a row and a column. Rows are kept in full, columns only where they are looked at:
/// the 64 to 128 from the wire in turn on. Later ones are rows of the same graph, to which all sums
/// are then made up for. What edges were taken off matters to no wire that is left.
class SortedClearing {
 public:
  explicit SortedClearing(BitMatrix edges)
      : wires_(edges.rows()), rows_(std::move(edges)), near_(wires_, 2 * word_bits) {
    look_at(0);
  }

  void clear(int wire) {
    if (wire % word_bits == 0) look_at(wire + word_bits);
    const int next = wires_coming_next(wires_ - wire);
    far_.clear();
    for (int other = wire + 1; other < wires_; ++other) {
      if (!near_.get(other, wire - first_)) continue;
      if (other > wire + next) {
        far_.push_back(other);
      } else {
        moves_.push_back({true, wire, other});
      }
    }
    for (const auto& [from, to] : match_rows(near_, wire + 1 - first_, far_)) add(from, to, wire);
    if (!far_.empty()) moves_.push_back({true, wire, far_.front()});
  }

  std::vector<GraphMove> moves() && { return std::move(moves_); }

 private:
  /// The columns from `wire` on come after those that are near.
  void look_at(int wire) {
    BitMatrix columns =
        rows_.block(wire, 0, std::clamp(wires_ - wire, 0, word_bits), wires_).transposed();
    if (columns.cols() > 0) {
      for (const auto& [from, to] : sums_) columns.row(to)[0] ^= columns.row(from)[0];
    }
    for (int r = 0; r < wires_; ++r) {
      near_.row(r)[0] = near_.row(r)[1];
      near_.row(r)[1] = columns.cols() > 0 ? columns.row(r)[0] : 0;
    }
    first_ = wire - word_bits;
  }

  /// Wires up to `done` matter no more.
  void add(int from, int to, int done) {
    moves_.push_back({false, to, from});
    sums_.emplace_back(from, to);
    rows_.add_row(from, to);
    near_.add_row(from, to);
    // The smaller one is added to the larger one, so that it is near as well.
    const int a = from - first_;
    const int b = to - first_;
    if (b >= near_.cols()) return;
    add_column(near_.row(done + 1), wires_ - done - 1, a, b);
  }

  int wires_;
  BitMatrix rows_;
  BitMatrix near_;
  int first_ = 0;  ///< of the columns that are near
  std::vector<RowPair> sums_;
  std::vector<int> far_;
  std::vector<GraphMove> moves_;
};

}  // namespace

std::vector<GraphMove> clear_by_sorting(BitMatrix edges) {
  const int n = edges.rows();
  SortedClearing work(std::move(edges));
  for (int wire = 0; wire < n; ++wire) {
    stop_point();
    work.clear(wire);
  }
  return std::move(work).moves();
}

}  // namespace zelt::braidwerk::internal
