#include "zeltbraidwerk/pauli/internal/moves.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <tuple>

namespace zelt::braidwerk::internal {

void Head::clear() {
  rows_ = 0;
  words_.clear();
}

void Head::push_back(int row) {
  const auto qubits = static_cast<std::size_t>(frame_.qubits());
  const int place = rows_++ % word_bits;
  if (place == 0) words_.resize(words_.size() + qubits);
  Letters* letters = words_.data() + words_.size() - qubits;
  for (int q = 0; q < frame_.qubits(); ++q, ++letters) {
    letters->x |= Word{frame_.x_planes().get(q, row)} << place;
    letters->z |= Word{frame_.z_planes().get(q, row)} << place;
  }
}

bool Head::fetch() {
  constexpr int some = 4;
  for (int k = 0; k < some; ++k) {
    const int row = next_();
    if (row < 0) return k > 0;
    push_back(row);
  }
  return true;
}

/// The first row in the set, or how many rows there are; set(w) is word w of it.
template <class Set>
int Head::first_row(Set&& set) {
  for (int row = 0;;) {
    if (row == rows_ && !fetch()) return row;
    const int w = row / word_bits;
    const Word found = set(static_cast<std::size_t>(w)) >> (row % word_bits);
    if (found != 0) return row + std::countr_zero(found);
    row = std::min(rows_, (w + 1) * word_bits);
  }
}

/// The letters on a qubit once bring_to_z has been at work with the code.
inline Head::Letters Head::in_basis(int q, int code, std::size_t w) const {
  const auto [x, z] =
      words_[w * static_cast<std::size_t>(frame_.qubits()) + static_cast<std::size_t>(q)];
  return code == 1 ? Letters{z, x} : code == 2 ? Letters{x ^ z, z} : Letters{x, z};
}

int Head::lead(int q) {
  return first_row([&](std::size_t w) {
    const auto [x, z] = in_basis(q, 0, w);
    return x | z;
  });
}

int Head::score(const Move& m, int lead_before) {
  const int at_control = first_row([&](std::size_t w) {
    const auto [x, z] = in_basis(m.control, m.control_basis, w);
    return x | (z ^ in_basis(m.target, m.target_basis, w).z);
  });
  const int at_target = first_row([&](std::size_t w) {
    const auto [x, z] = in_basis(m.target, m.target_basis, w);
    return (x ^ in_basis(m.control, m.control_basis, w).x) | z;
  });
  return at_control + at_target - lead_before;
}

int Head::score(const Move& move) {
  return score(move, lead(move.control) + lead(move.target));
}

Move Head::best_move(std::span<const int> qubits) {
  Move best{};
  int most = 0;
  for (unsigned char p1 = 1; p1 <= 3; ++p1) {
    for (unsigned char p2 = 1; p2 <= 3; ++p2) {
      for (const int a : qubits) {
        for (const int b : qubits) {
          if (a == b) continue;
          const Move move{a, b, p1, p2};
          const int reached = score(move, 0);
          if (reached < most) continue;
          best = move;
          most = reached;
        }
      }
    }
  }
  return best;
}

std::vector<Move> Head::best_matching(Matcher& matcher, bool only_gains) {
  const int n = matcher.size();
  std::vector<int> leads;
  for (int q = 0; q < n; ++q) leads.push_back(lead(q));
  std::vector<Move> moves;  // one an edge of the matcher
  auto most = matcher.weights().begin();
  for (int i = 0; i < n; ++i, ++most) {
    *most = 0;
    moves.push_back({i, i, 0, 0});
    for (int j = i + 1; j < n; ++j) {
      *++most = std::numeric_limits<int>::min();
      Move& best = moves.emplace_back();
      const int before = leads[static_cast<std::size_t>(i)] + leads[static_cast<std::size_t>(j)];
      for (unsigned char p1 = 1; p1 <= 3; ++p1) {
        for (unsigned char p2 = 1; p2 <= 3; ++p2) {
          for (const Move& move : {Move{i, j, p1, p2}, Move{j, i, p1, p2}}) {
            const int reached = score(move, before);
            if (reached < *most) continue;
            best = move;
            *most = reached;
          }
        }
      }
    }
  }
  std::vector<std::tuple<int, int>> pairs;
  matcher.run(pairs);
  std::vector<Move> chosen;
  for (const auto& [i, j] : pairs) {
    // Edges before those of i: n, n - 1, ... of them a vertex.
    const auto edge = static_cast<std::size_t>(i * n - i * (i - 1) / 2 + (j - i));
    if (!only_gains || matcher.weights()[edge] >= 1) chosen.push_back(moves[edge]);
  }
  return chosen;
}

}  // namespace zelt::braidwerk::internal
