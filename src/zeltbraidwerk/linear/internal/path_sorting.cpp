#include "zeltbraidwerk/linear/internal/path_sorting.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <utility>

namespace zelt::braidwerk::internal {
namespace {

using Row = std::vector<Word>;

/// The span of rows, as rows of different leading columns.
class Span {
 public:
  enum class Lead { first, last };

  Span(int n, Lead lead) : lead_(lead), rows_(static_cast<std::size_t>(n)) {}

  /// The leading column that is farthest from that end, of the sums of the row, which is not in the
  /// span, and rows of the span.
  int level(Row row) const { return reduce(row); }
  void add(Row row) {
    const int lead = reduce(row);
    rows_[static_cast<std::size_t>(lead)] = std::move(row);
  }

 private:
  int reduce(Row& row) const {
    for (;;) {
      const int lead = leading(row);
      const Row& known = rows_[static_cast<std::size_t>(lead)];
      if (known.empty()) return lead;
      for (std::size_t w = 0; w < row.size(); ++w) row[w] ^= known[w];
    }
  }
  int leading(const Row& row) const {
    if (lead_ == Lead::first) {
      const auto word = std::ranges::find_if(row, [](Word each) { return each != 0; });
      return static_cast<int>(word - row.begin()) * word_bits + std::countr_zero(*word);
    }
    auto word = row.end() - 1;
    while (*word == 0) --word;
    return static_cast<int>(word - row.begin()) * word_bits + word_bits - 1 -
           std::countl_zero(*word);
  }

  Lead lead_;
  std::vector<Row> rows_;  // by leading column; empty: none
};

class PathSorting {
 public:
  PathSorting(const BitMatrix& m, const std::vector<int>& path, int first)
      : n_(m.rows()), path_(path), first_(first), circuit_(n_) {
    for (const int wire : path) {
      Row row(static_cast<std::size_t>(words_for(n_)));
      for (int k = 0; k < n_; ++k) {
        if (m.get(wire, path[static_cast<std::size_t>(k)])) row[at(k / word_bits)] |= bit(k);
      }
      rows_.push_back(std::move(row));
    }
  }

  bool run(const Control& control) {
    // Sorted after n rounds, whatever the place of the first comparator.
    for (int round = 0; round < 2 * n_; ++round) {
      if (control.stop_requested()) return false;
      const auto lead = round < n_ ? Span::Lead::last : Span::Lead::first;
      Span below(n_, lead);
      for (int p = n_ - 1; p >= 0; --p) {
        if (p == 0 || (p - 1 - first_ - round) % 2 != 0) {
          below.add(rows_[at(p)]);
          continue;
        }
        --p;
        if (lead == Span::Lead::last) {
          sort(p, below);
        } else {
          cross(p, below);
        }
        below.add(rows_[at(p + 1)]);
        below.add(rows_[at(p)]);
      }
    }
    return true;
  }

  structures::CnotCircuit circuit() && { return std::move(circuit_); }

 private:
  static std::size_t at(int place) { return static_cast<std::size_t>(place); }
  static Word bit(int column) { return Word{1} << (column % word_bits); }

  Row sum(int p) const {
    Row row = rows_[at(p)];
    for (std::size_t w = 0; w < row.size(); ++w) row[w] ^= rows_[at(p + 1)][w];
    return row;
  }

  /// The row of rows p and p + 1 and their sum that has the earliest last column goes down, in two
  /// gates at most.
  void sort(int p, const Span& below) {
    const int upper = below.level(rows_[at(p)]);
    const int lower = below.level(rows_[at(p + 1)]);
    if (upper > lower) return;
    if (upper < lower) add(p + 1, p);
    add(p, p + 1);
  }

  /// Row p + 1 goes up. Of row p and the sum of both, the one with the latest first column goes
  /// down.
  void cross(int p, const Span& below) {
    if (below.level(rows_[at(p)]) > below.level(sum(p))) add(p + 1, p);
    add(p, p + 1);
    add(p + 1, p);
  }

  void add(int from, int to) {
    rows_[at(to)] = from < to ? sum(from) : sum(to);
    circuit_.gates.emplace_back(path_[at(from)], path_[at(to)]);
  }

  int n_;
  const std::vector<int>& path_;
  int first_;
  std::vector<Row> rows_;  // by place on the path, and so are their columns
  structures::CnotCircuit circuit_;
};

}  // namespace

std::optional<structures::CnotCircuit> sort_along_path(const BitMatrix& m,
                                                       const std::vector<int>& path, int first,
                                                       const Control& control) {
  PathSorting sorting(m, path, first);
  if (!sorting.run(control)) return std::nullopt;
  return std::move(sorting).circuit();
}

}  // namespace zelt::braidwerk::internal
