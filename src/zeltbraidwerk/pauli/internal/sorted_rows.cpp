#include "zeltbraidwerk/pauli/internal/sorted_rows.h"

#include <algorithm>
#include <numeric>

#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/pauli/internal/table_frame.h"

namespace zelt::braidwerk::internal {
namespace {

/// What a CNOT does to the weights: rows that gain a letter, and rows that lose one.
ZELTBRAIDWERK_CLONES
void weight_changes(const Word* __restrict xc, const Word* __restrict zc, const Word* __restrict xt,
                    const Word* __restrict zt, Word* __restrict up, Word* __restrict down,
                    int words) {
  for (int w = 0; w < words; ++w) {
    const Word at_control = zt[w] & ~xc[w];
    const Word at_target = xc[w] & ~zt[w];
    up[w] = (at_control & ~zc[w]) | (at_target & ~xt[w]);
    down[w] = (at_control & zc[w]) | (at_target & xt[w]);
  }
}

/// One digit of a sum, and of a difference; what is carried on replaces what came in.
ZELTBRAIDWERK_CLONES
void count_changes(Word* __restrict digit, Word* __restrict up, Word* __restrict down, int words) {
  for (int w = 0; w < words; ++w) {
    const Word sum = digit[w] ^ up[w];
    up[w] &= digit[w];
    digit[w] = sum ^ down[w];
    down[w] &= ~sum;
  }
}

/// Keeps of the rows those with a 0, unless there is none.
ZELTBRAIDWERK_CLONES
void keep_lighter(Word* __restrict rows, const Word* __restrict digit, int words) {
  int first = 0;
  while (first < words && (rows[first] & ~digit[first]) == 0) ++first;
  if (first == words) return;
  for (int w = 0; w < words; ++w) rows[w] &= ~digit[w];
}

/// Whether the digit tells some of the rows apart.
bool tells_apart(const Word* digit, ColumnsView rows) {
  Word zeros = 0;
  Word ones = 0;
  for (const auto& [word, mask] : rows) {
    zeros |= mask & ~digit[word];
    ones |= mask & digit[word];
    if (zeros != 0 && ones != 0) return true;
  }
  return false;
}

}  // namespace

SortedRows::SortedRows(PauliFrame frame)
    : frame_(std::move(frame)),
      numbers_(static_cast<std::size_t>(frame_.rows())),
      count_left_(frame_.rows()) {
  std::iota(numbers_.begin(), numbers_.end(), 0);
  weigh();
}

void SortedRows::weigh() {
  std::vector<int> all(static_cast<std::size_t>(frame_.qubits()));
  std::iota(all.begin(), all.end(), 0);
  weights_ = frame_.weight_planes(all);
  left_.assign(static_cast<std::size_t>(frame_.words()), 0);
  for (const auto& [w, mask] : all_columns(frame_.rows()))
    left_[static_cast<std::size_t>(w)] = mask;
  up_.resize(left_.size());
  down_.resize(left_.size());
  past_.clear();
  work_ = 0;
}

void SortedRows::sort() {
  restart();
  // Ties that cost as much as a sort of everything are worth one.
  constexpr std::size_t words_a_row = 32;
  constexpr std::size_t most_past = std::size_t{1} << 22;
  const auto rows = static_cast<std::size_t>(frame_.rows());
  if (work_ > words_a_row * rows || past_.size() > most_past || 2 * count_left_ < frame_.rows()) {
    settle();
    restart();
  }
}

void SortedRows::restart() {
  groups_.clear();
  stack_.clear();
  to_come_ = left_;
}

/// Makes a group of the lightest of the rows to come.
bool SortedRows::gather_lightest() {
  lightest_ = to_come_;
  for (int k = weights_.rows(); k-- > 0;) {
    keep_lighter(lightest_.data(), weights_.row(k), frame_.words());
  }
  for (std::size_t w = left_.size(); w-- > 0;) {
    if (lightest_[w] == 0) continue;
    stack_.push_back({static_cast<int>(w), lightest_[w]});
    to_come_[w] ^= lightest_[w];
  }
  if (stack_.empty()) return false;
  groups_.push_back({0, stack_.size()});
  return true;
}

/// Puts the rows themselves in order, so that the past need not be known any longer.
void SortedRows::settle() {
  std::vector<int> order;
  for (int row = next(); row >= 0; row = next()) order.push_back(row);
  frame_ = frame_.select(order);
  for (int& row : order) row = number(row);
  numbers_ = std::move(order);
  count_left_ = frame_.rows();
  weigh();
}

int SortedRows::next() {
  if (groups_.empty() && !gather_lightest()) return -1;
  while (split_top()) {
  }
  Group& top = groups_.back();
  auto& [word, mask] = stack_.back();
  const int row = word * word_bits + std::countr_zero(mask);
  mask &= mask - 1;
  if (mask == 0) {
    stack_.pop_back();
    if (--top.words == 0) groups_.pop_back();
  }
  return row;
}

/// Replaces the group on top by its ones and, on top of them, its zeros. False for a group that is
/// in order: a single row, or rows that have had the same weight at all sorts.
bool SortedRows::split_top() {
  Group& top = groups_.back();
  const ColumnsView rows = ColumnsView(stack_).last(top.words);
  if (is_single(rows)) return false;
  const Word* digit = past_.data() + past_.size() - top.level * left_.size();
  do {
    if (digit == past_.data()) return false;
    digit -= left_.size();
    ++top.level;
    work_ += top.words;
  } while (!tells_apart(digit, rows));

  zeros_.clear();
  const std::size_t first = stack_.size() - top.words;
  std::size_t end = first;
  for (std::size_t k = first; k < stack_.size(); ++k) {
    const auto [word, mask] = stack_[k];
    if (const Word clear = mask & ~digit[word]) zeros_.push_back({word, clear});
    if (const Word set = mask & digit[word]) stack_[end++] = {word, set};
  }
  stack_.resize(end);
  stack_.insert(stack_.end(), zeros_.begin(), zeros_.end());
  top.words = end - first;
  groups_.push_back({top.level, zeros_.size()});
  return true;
}

void SortedRows::erase(int row) {
  left_[static_cast<std::size_t>(row / word_bits)] &= ~(Word{1} << (row % word_bits));
  --count_left_;
}

void SortedRows::remember(const Word* digit) {
  past_.insert(past_.end(), digit, digit + left_.size());
}

/// After a single move, whether a weight went up or down tells as much as the weight before.
void SortedRows::play(std::span<const Move> moves, std::vector<structures::Gate>& circuit) {
  const bool is_only = moves.size() == 1;
  for (int k = 0; k < weights_.rows() && !is_only; ++k) remember(weights_.row(k));
  for (const Move& move : moves) play(move, is_only, circuit);
}

void SortedRows::play(const Move& move, bool is_only, std::vector<structures::Gate>& circuit) {
  const auto& [control, target, control_basis, target_basis] = move;
  bring_to_z(frame_, control, control_basis, circuit);
  bring_to_z(frame_, target, target_basis, circuit);
  weight_changes(frame_.x(control), frame_.z(control), frame_.x(target), frame_.z(target),
                 up_.data(), down_.data(), frame_.words());
  apply_cnot(frame_, control, target, circuit);
  if (is_only) {
    // The rows that went up were the lighter ones, those that went down the heavier ones.
    remember(down_.data());
    for (const Word up : up_) past_.push_back(~up);
  }
  for (int k = 0; k < weights_.rows(); ++k) {
    count_changes(weights_.row(k), up_.data(), down_.data(), frame_.words());
  }
}

}  // namespace zelt::braidwerk::internal
