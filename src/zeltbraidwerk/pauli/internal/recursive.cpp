#include "zeltbraidwerk/pauli/internal/recursive.h"

#include <algorithm>
#include <array>
#include <numeric>

#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {
namespace {

/// How many of the rows hold each letter, x and z being the planes of a qubit.
inline void count_letters(ColumnsView rows, const Word* x, const Word* z, int* counts) {
  for (int k = 0; k < 4; ++k) counts[k] = 0;
  for (const auto& [w, mask] : rows) {
    const Word has_x = x[w] & mask;
    const Word has_z = z[w] & mask;
    const int ys = std::popcount(has_x & has_z);
    counts[1] += std::popcount(has_x) - ys;
    counts[2] += ys;
    counts[3] += std::popcount(has_z) - ys;
    counts[0] += std::popcount(mask & ~(has_x | has_z));
  }
}

inline int largest(const int* counts) {
  int letter = 0;
  for (int k = 1; k < 4; ++k) {
    if (counts[k] > counts[letter]) letter = k;
  }
  return letter;
}

/// The first place in `cols` of those where the most rows agree.
ZELTBRAIDWERK_CLONES
std::size_t best_place(const BitMatrix& x, const BitMatrix& z, ColumnsView rows, const int* cols,
                       std::size_t size) {
  std::size_t best = 0;
  int most = 0;
  for (std::size_t k = 0; k < size; ++k) {
    int counts[4];
    count_letters(rows, x.row(cols[k]), z.row(cols[k]), counts);
    const int agree = counts[largest(counts)];
    if (agree > most) best = k;
    most = agree > most ? agree : most;
  }
  return best;
}

ZELTBRAIDWERK_CLONES
int next_letter(ColumnsView rows, const Word* x, const Word* z) {
  int counts[4];
  count_letters(rows, x, z, counts);
  return counts[0] != 0 ? 0 : largest(counts);
}

/// Moves the rows with the letter from one set to the result.
RowSet take_rows(RowSet& rows, const PauliFrame& frame, int q, int letter) {
  const Word flip_x = letter_has_x(static_cast<unsigned char>(letter)) ? 0 : ~Word{0};
  const Word flip_z = letter_has_z(static_cast<unsigned char>(letter)) ? 0 : ~Word{0};
  RowSet taken;
  for (auto& [w, mask] : rows) {
    const Word match = mask & (frame.x(q)[w] ^ flip_x) & (frame.z(q)[w] ^ flip_z);
    if (match != 0) taken.push_back({w, match});
    mask &= ~match;
  }
  std::erase_if(rows, [](const ColumnWord& word) { return word.mask == 0; });
  return taken;
}

/// The letter that all rows have on a qubit; 0 if they differ.
int shared_letter(const PauliFrame& frame, int q, ColumnsView rows) {
  const int first = rows[0].word * word_bits + std::countr_zero(rows[0].mask);
  const unsigned char letter = frame.letter(first, q);
  if (letter == 0) return 0;
  const Word flip_x = letter_has_x(letter) ? ~Word{0} : 0;
  const Word flip_z = letter_has_z(letter) ? ~Word{0} : 0;
  for (const auto& [w, mask] : rows) {
    if ((((frame.x(q)[w] ^ flip_x) | (frame.z(q)[w] ^ flip_z)) & mask) != 0) return 0;
  }
  return letter;
}

}  // namespace

void RecursiveSynthesis::run() {
  std::vector<int> all(static_cast<std::size_t>(frame.qubits()));
  std::iota(all.begin(), all.end(), 0);
  // Identity strings take part in the first pass, as any row does, and are served by it.
  for (RowSet left = all_columns(frame.rows()); !left.empty(); left = rows_left()) {
    RowSet rest;
    for_each_column(left, [&](int r) {
      const int q = lone_qubit(frame, r);
      if (q >= 0) return emit(r, q, "RZ");
      if (rest.empty() || rest.back().word != r / word_bits) rest.push_back({r / word_bits, 0});
      rest.back().mask |= Word{1} << (r % word_bits);
    });
    serve(-1, rest, all);
  }
}

/// The rows not done, without identity strings.
RowSet RecursiveSynthesis::rows_left() const {
  RowSet left;
  for (int w = 0; w < frame.words(); ++w) {
    Word letters = 0;
    for (int q = 0; q < frame.qubits(); ++q) letters |= frame.x(q)[w] | frame.z(q)[w];
    const Word mask = letters & ~done[static_cast<std::size_t>(w)];
    if (mask != 0) left.push_back({w, mask});
  }
  return left;
}

void RecursiveSynthesis::serve(int target, const RowSet& rows, const std::vector<int>& cols) {
  if (rows.empty()) return;
  stop_point();
  if (target >= 0) fold(target, rows);
  if (cols.empty()) return;
  const std::size_t place =
      best_place(frame.x_planes(), frame.z_planes(), rows, cols.data(), cols.size());
  const int branch = cols[place];
  std::vector<int> rest = cols;
  rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(place));

  // Each group rewrites the rows of the groups to come, hence the fresh count for each.
  RowSet left = rows;
  serve(target, take_rows(left, frame, branch, 0), rest);
  while (!left.empty()) {
    const int letter = next_letter(left, frame.x(branch), frame.z(branch));
    const RowSet group = take_rows(left, frame, branch, letter);
    serve(letter != 0 && target < 0 ? branch : target, group, rest);
  }
}

/// Each fold clears a qubit of the first row for good, so one way up finds them all.
void RecursiveSynthesis::fold(int target, const RowSet& rows) {
  const int first = rows[0].word * word_bits + std::countr_zero(rows[0].mask);
  for (int q = 0; q < frame.qubits(); ++q) {
    const int letter = q == target ? 0 : shared_letter(frame, q, rows);
    if (letter == 0) continue;
    const int at_target = frame.letter(first, target);
    if (at_target == 0) return;
    if (letter == 1 && at_target == 1) {
      apply_cnot(frame, target, q, circuit);
    } else {
      bring_to_z(frame, target, at_target, circuit);
      bring_to_z(frame, q, letter, circuit);
      apply_cnot(frame, q, target, circuit);
    }
    emit_lone_rows(rows);
  }
}

void RecursiveSynthesis::emit_lone_rows(const RowSet& rows) {
  for (const auto& [w, mask] : rows) {
    Word once = 0;
    Word twice = done[static_cast<std::size_t>(w)];
    for (int q = 0; q < frame.qubits() && (mask & ~twice) != 0; ++q) {
      const Word letters = frame.x(q)[w] | frame.z(q)[w];
      twice |= once & letters;
      once |= letters;
    }
    const Word lone = once & ~twice & mask;
    for_each_bit(&lone, 1, [&, first = w * word_bits](int bit) {
      emit(first + bit, lone_qubit(frame, first + bit), "PH");
    });
  }
}

void RecursiveSynthesis::emit(int row, int q, const char* z_name) {
  done[static_cast<std::size_t>(row / word_bits)] |= Word{1} << (row % word_bits);
  circuit.push_back(rotation_gate(frame, row, q, params[static_cast<std::size_t>(row)], z_name));
}

}  // namespace zelt::braidwerk::internal
