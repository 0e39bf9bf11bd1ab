#include "zeltbraidwerk/pauli/search/internal/network_run.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "zeltbraidwerk/pauli/search/internal/tuning.h"

namespace zelt::braidwerk::internal {
namespace {

/// Those that turn anything.
std::vector<int> rows_of(const PauliFrame& frame) {
  std::vector<int> rows;
  for (int row = 0; row < frame.rows(); ++row) {
    if (frame.weight(row) != 0) rows.push_back(row);
  }
  return rows;
}

std::vector<int> rows_by_letters(const PauliFrame& frame) {
  std::vector<int> rows = rows_of(frame);
  std::vector<PauliLetters> letters;
  for (int row = 0; row < frame.rows(); ++row) letters.push_back(frame.letters(row));
  std::ranges::stable_sort(rows, [&](int a, int b) {
    return letters[static_cast<std::size_t>(a)] < letters[static_cast<std::size_t>(b)];
  });
  return rows;
}

}  // namespace

NetworkInput::NetworkInput(const Rotations& all, bool in_order)
    : rotations(all),
      given(all.frame, rows_of(all.frame)),
      sorted(all.frame, rows_by_letters(all.frame)),
      blocks(given, in_order) {}

bool NetworkInput::is_long() const {
  return given.count() >= network_tuning.long_list;
}

bool NetworkInput::is_slow(const Task& task) const {
  return task.device != nullptr &&
         network_tuning.seconds_on_device * given.count() * qubits() * qubits() > 1;
}

}  // namespace zelt::braidwerk::internal
