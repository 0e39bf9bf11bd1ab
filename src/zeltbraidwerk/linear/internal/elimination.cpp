#include "zeltbraidwerk/linear/internal/elimination.h"

#include <algorithm>
#include <bit>
#include <stdexcept>
#include <vector>

#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {
namespace {

/// A matrix that is being reduced, and the row additions that have done so.
class Reduction {
 public:
  explicit Reduction(BitMatrix m) : m_(std::move(m)), circuit_(m_.rows()) {
    circuit_.gates.reserve(static_cast<std::size_t>(m_.weight()));
  }

  int size() const { return m_.rows(); }
  const BitMatrix& matrix() const { return m_; }

  void add_row(int from, int to, int first_col = 0) {
    circuit_.addGate(from, to);
    m_.add_row(from, to, first_col);
  }

  /// Clears column c above its diagonal, from the bottom up.
  void clear_above(int c) {
    for (int r = c - 1; r >= 0; --r) {
      if (m_.get(r, c)) add_row(c, r, c);
    }
  }

  structures::CnotCircuit take_circuit() { return std::move(circuit_); }

 private:
  BitMatrix m_;
  structures::CnotCircuit circuit_;
};

/// The first row met with each pattern of one section's columns, by open addressing: the table
/// grows with the rows and not with the width of the section. Nothing may change in these columns
/// of a row that stands in it.
class PatternTable {
 public:
  PatternTable(const BitMatrix& m, int first_col, int width)
      : m_(m), first_col_(first_col), width_(width) {
    const auto rows = static_cast<unsigned>(m.rows());
    bits_ = std::min(width, static_cast<int>(std::bit_width(rows)) + 1);
    first_row_.assign(std::size_t{1} << bits_, -1);
  }

  Word pattern(int r) const {
    return read_bits(m_.row(r), static_cast<std::size_t>(first_col_), width_);
  }

  /// The row that stands for the pattern of row r: an earlier one, or now r itself.
  int find_or_store(int r) {
    const Word wanted = pattern(r);
    std::size_t slot = (wanted * 0x9E3779B97F4A7C15u) >> (word_bits - bits_);
    while (first_row_[slot] >= 0 && pattern(first_row_[slot]) != wanted) {
      slot = (slot + 1) % first_row_.size();
    }
    if (first_row_[slot] < 0) first_row_[slot] = r;
    return first_row_[slot];
  }

 private:
  const BitMatrix& m_;
  int first_col_;
  int width_;
  int bits_;
  std::vector<int> first_row_;
};

/// Makes the section's columns zero below the diagonal. `repair` is set by a zero on the diagonal
/// and stays set, across columns and sections, until a row with a one has been found for it.
void clear_section_below(Reduction& reduction, int first, int last, bool& repair) {
  const BitMatrix& m = reduction.matrix();
  PatternTable patterns(m, first, last - first);
  for (int r = first; r < m.rows(); ++r) {
    const int twin = patterns.find_or_store(r);
    if (twin != r && patterns.pattern(r) != 0) reduction.add_row(twin, r);
  }
  for (int c = first; c < last; ++c) {
    if (!m.get(c, c)) repair = true;
    for (int r = c + 1; r < m.rows(); ++r) {
      if (!m.get(r, c)) continue;
      if (repair) reduction.add_row(r, c);
      reduction.add_row(c, r);
      repair = false;
    }
  }
}

/// Makes the section's columns zero above the diagonal; those to their right are so already.
void clear_section_above(Reduction& reduction, int first, int last) {
  PatternTable patterns(reduction.matrix(), first, last - first);
  for (int r = last - 1; r >= 0; --r) {
    const int twin = patterns.find_or_store(r);
    if (twin != r && patterns.pattern(r) != 0) reduction.add_row(twin, r, twin);
  }
  for (int c = last - 1; c >= first; --c) reduction.clear_above(c);
}

}  // namespace

structures::CnotCircuit eliminate_gauss(BitMatrix m) {
  Reduction reduction(std::move(m));
  const int n = reduction.size();
  for (int c = 0; c < n; ++c) {
    question_point();
    int r = c;
    while (r < n && !reduction.matrix().get(r, c)) ++r;
    if (r == n) continue;
    // Rows from c on are zero left of column c.
    if (r != c) reduction.add_row(r, c, c);
    for (r = c + 1; r < n; ++r) {
      if (reduction.matrix().get(r, c)) reduction.add_row(c, r, c);
    }
  }
  for (int c = n - 1; c > 0; --c) {
    question_point();
    reduction.clear_above(c);
  }
  return reduction.take_circuit();
}

structures::CnotCircuit pmh(BitMatrix m, int section) {
  const int n = m.rows();
  section = std::clamp(section, 1, std::max(n, 1));
  if (section > 30) throw std::length_error("PMH_Algorithm: a section of more than 30 columns");
  Reduction reduction(std::move(m));
  bool repair = false;
  for (int first = 0; first < n; first += section) {
    stop_point();
    clear_section_below(reduction, first, std::min(first + section, n), repair);
  }
  for (int last = n; last > 0; last -= section) {
    question_point();
    clear_section_above(reduction, std::max(last - section, 0), last);
  }
  return reduction.take_circuit();
}

structures::CnotCircuit optimized_pmh(const BitMatrix& m) {
  const int largest = static_cast<int>(std::bit_width(static_cast<unsigned>(m.rows()))) - 1;
  structures::CnotCircuit best;
  for (int section = 1; section <= largest; ++section) {
    structures::CnotCircuit circuit = pmh(m, section);
    if (section == 1 || circuit.gates.size() < best.gates.size()) best = std::move(circuit);
  }
  return best;
}

}  // namespace zelt::braidwerk::internal
