#include "zeltbraidwerk/phase/internal/gray_synth.h"

#include <list>

#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/phase/gray_synth.h"
#include "zeltbraidwerk/phase/internal/columns.h"

namespace zelt::braidwerk::internal {
namespace {

ZELTBRAIDWERK_CLONES
int best_of_rows(const BitMatrix& parities, const int* rows, std::size_t count,
                 ColumnsView columns) {
  BestSplit best{count_columns(columns)};
  for (std::size_t k = 0; k < count; ++k) {
    best.consider(rows[k], count_ones(columns, parities.row(rows[k])));
  }
  return best.row;
}

int best_split(const BitMatrix& parities, const std::set<int>& rows, ColumnsView columns) {
  const std::vector<int> listed(rows.begin(), rows.end());
  return best_of_rows(parities, listed.data(), listed.size(), columns);
}

/// Depth-first over pieces of work. The first piece is worked on; none is empty.
class GraySynth {
 public:
  explicit GraySynth(BitMatrix parities) : parities_(std::move(parities)) {
    for (int r = 0; r < parities_.rows(); ++r) all_rows_.insert(r);
  }

  std::vector<PhaseStep> run() {
    std::vector<int> cols;
    for (int c = 0; c < parities_.cols(); ++c) cols.push_back(c);
    if (!cols.empty()) work_.emplace_front(-1, all_rows_, cols);
    while (!work_.empty()) {
      stop_point();
      const Part2& part = work_.front();
      if (part.target != -1 && part.cols.size() == 1) {
        finish(part.target, part.cols.front());
        work_.pop_front();
      } else {
        split(work_.front());
      }
    }
    return std::move(steps_);
  }

 private:
  /// Gathers the column on the target, where it gets its phase.
  void finish(int target, int column) {
    for (int r = 0; r < parities_.rows(); ++r) {
      if (r == target || !parities_.get(r, column)) continue;
      steps_.push_back(PhaseStep::cnot(r, target));
      parities_.add_row(target, r);
    }
    steps_.push_back(PhaseStep::phase(target, column));
  }

  /// Splits the piece on one best row after the other, until one parts its columns: the piece keeps
  /// the ones, its zeros go in front of it. A single column ends with a target.
  void split(Part2& part) {
    const Columns columns = pack_columns(part.cols);
    const int count = count_columns(columns);
    int ones = 0;
    while (ones == 0 || (ones == count && count > 1)) {
      if (part.rows.empty()) part.rows = all_rows_;
      const int row = best_split(parities_, part.rows, columns);
      part.rows.erase(row);
      ones = count_ones(columns, parities_.row(row));
      if (ones > 0 && ones < count) part_columns(part, row);
      if (ones > 0 && part.target == -1) part.target = row;
    }
  }

  void part_columns(Part2& part, int row) {
    std::vector<int> zeros;
    std::vector<int> ones;
    for (const int c : part.cols) (parities_.get(row, c) ? ones : zeros).push_back(c);
    work_.emplace_front(part.target, part.rows, zeros);
    part.cols = std::move(ones);
  }

  BitMatrix parities_;
  std::set<int> all_rows_;
  std::list<Part2> work_;
  std::vector<PhaseStep> steps_;
};

}  // namespace

std::vector<PhaseStep> gray_synth(BitMatrix parities) {
  return GraySynth(std::move(parities)).run();
}

}  // namespace zelt::braidwerk::internal
