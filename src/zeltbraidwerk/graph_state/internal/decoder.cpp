#include "zeltbraidwerk/graph_state/internal/decoder.h"

#include <algorithm>
#include <bit>
#include <numeric>

#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/engine_draw.h"

namespace zelt::braidwerk::internal {
namespace {

struct Nearest {
  int distance;
  int column;
};

/// Vectors are compared with the syndrome in blocks of this many words.
constexpr int block_words = 8;
constexpr int most_digits = 32;

/// Improves `best` by a column that is nearer to the syndrome, of equally near ones the first. The
/// distances of a block are counted bit-sliced, a digit a row of words.
ZELTBRAIDWERK_CLONES
void find_nearest(const Word* bits, int rows, int stride, int cols, Nearest* best) {
  Word digits[most_digits][block_words];
  for (int first = 0; first < stride; first += block_words) {
    const int width = stride - first < block_words ? stride - first : block_words;
    int used = 0;
    for (int r = 0; r < rows; ++r) {
      const Word* row = bits + static_cast<std::ptrdiff_t>(r) * stride;
      const Word wanted = row[0] & 1 ? ~Word{0} : 0;
      Word carry[block_words] = {};
      for (int w = 0; w < width; ++w) carry[w] = row[first + w] ^ wanted;
      if (((r + 1) & r) == 0) {
        for (int w = 0; w < block_words; ++w) digits[used][w] = 0;
        ++used;
      }
      for (int k = 0; k < used; ++k) {
        for (int w = 0; w < block_words; ++w) {
          const Word both = digits[k][w] & carry[w];
          digits[k][w] ^= carry[w];
          carry[w] = both;
        }
      }
    }
    // The columns that exist, but for the syndrome's own.
    Word nearest[block_words] = {};
    for (int w = 0; w < width; ++w) {
      const int left = cols - (first + w) * word_bits;
      nearest[w] = left < word_bits ? low_bits(left) : ~Word{0};
    }
    if (first == 0) nearest[0] &= ~Word{1};
    int distance = 0;
    for (int k = used; k-- > 0;) {
      Word zero[block_words];
      Word any = 0;
      for (int w = 0; w < block_words; ++w) any |= zero[w] = nearest[w] & ~digits[k][w];
      if (any == 0) {
        distance |= 1 << k;
      } else {
        for (int w = 0; w < block_words; ++w) nearest[w] = zero[w];
      }
    }
    if (distance >= best->distance) continue;
    for (int w = 0; w < block_words; ++w) {
      if (nearest[w] == 0) continue;
      *best = {distance, (first + w) * word_bits + std::countr_zero(nearest[w])};
      break;
    }
  }
}

std::vector<Word> column(const BitMatrix& problem, int c) {
  std::vector<Word> bits(static_cast<std::size_t>(words_for(problem.rows())));
  for (int r = 0; r < problem.rows(); ++r) {
    bits[static_cast<std::size_t>(r / word_bits)] |= Word{problem.get(r, c)} << (r % word_bits);
  }
  return bits;
}

bool has_one(const BitMatrix& problem, int c, int first_row) {
  for (int r = first_row; r < problem.rows(); ++r) {
    if (problem.get(r, c)) return true;
  }
  return false;
}

/// Combines the bits so that the first independent vectors of `order` become unit vectors. The
/// order is drawn only as far as it is walked.
void draw_basis(BitMatrix& problem, std::vector<int>& order, const Draw& draw) {
  int pivot = 0;
  for (std::size_t k = 0; pivot < problem.rows() && k < order.size(); ++k) {
    stop_point();
    shuffle_step(order, k, draw);
    const int c = order[k];
    int r = pivot;
    while (r < problem.rows() && !problem.get(r, c)) ++r;
    if (r == problem.rows()) continue;
    if (r != pivot) problem.add_row(r, pivot);
    problem.clear_column(pivot++, c);
  }
}

}  // namespace

std::optional<std::vector<int>> decode_greedily(BitMatrix problem) {
  std::vector<int> picked;
  std::vector<Word> mark = column(problem, 0);
  std::size_t steps_to_mark = 1;
  while (has_one(problem, 0, 0)) {
    stop_point();
    Nearest best{problem.rows() + 1, 0};
    find_nearest(problem.row(0), problem.rows(), problem.stride(), problem.cols(), &best);
    if (best.column == 0) return std::nullopt;
    problem.add_col(best.column, 0);
    picked.push_back(best.column - 1);
    // The step rests on the syndrome alone, so one that comes again comes for ever.
    std::vector<Word> syndrome = column(problem, 0);
    if (syndrome == mark) return std::nullopt;
    if (picked.size() == steps_to_mark) {
      mark = std::move(syndrome);
      steps_to_mark *= 2;
    }
  }
  // A vector picked twice cancels.
  std::sort(picked.begin(), picked.end());
  std::vector<int> odd;
  for (const int j : picked) {
    if (!odd.empty() && odd.back() == j) {
      odd.pop_back();
    } else {
      odd.push_back(j);
    }
  }
  return odd;
}

std::vector<int> decode(const BitMatrix& problem, int tries, const Draw& draw,
                        const Control& control) {
  std::optional<std::vector<int>> best = decode_greedily(problem);
  std::vector<int> order(static_cast<std::size_t>(std::max(problem.cols() - 1, 0)));
  std::iota(order.begin(), order.end(), 1);
  for (int t = 0; t < tries; ++t) {
    // One vector that is the whole answer is the nearest there is, so two cannot be bettered.
    if (best && best->size() <= 2) break;
    if (control.stop_requested()) break;
    BitMatrix form = problem;
    draw_basis(form, order, draw);
    std::optional<std::vector<int>> answer = decode_greedily(std::move(form));
    if (answer && (!best || answer->size() < best->size())) best = std::move(answer);
  }
  return best.value_or(std::vector<int>{});
}

}  // namespace zelt::braidwerk::internal
