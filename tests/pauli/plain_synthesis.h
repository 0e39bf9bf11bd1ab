#pragma once

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "support/pauli.h"
#include "zeltbraidwerk/graphs/blossom.h"
#include "zeltbraidwerk/linear/pmh.h"
#include "zeltbraidwerk/pauli/commute_pauli_synth.h"
#include "zeltbraidwerk/pauli/commuting.h"
#include "zeltbraidwerk/pauli/graph_state_codiag.h"
#include "zeltbraidwerk/pauli/greedy_pauli_synth.h"
#include "zeltbraidwerk/pauli/pauli_synth.h"
#include "zeltbraidwerk/phase/gray_synth.h"

/// \file
/// The syntheses as they read, on plain tables: what the packed ones must give gate for gate.

namespace plain {

using structures::Gate;
using structures::OperatorTableau;
using structures::Parameter;

struct Synthesis {
  int n;
  PauliTable table;
  std::vector<Parameter> params;
  std::vector<Gate> circuit;
  std::vector<bool> done;

  Synthesis(PauliRotationMap rotations, int qubits) : n(qubits) {
    build_table(rotations, table, params);
    done.resize(table.size());
  }

  unsigned char& letter(int row, int q) {
    return table[static_cast<std::size_t>(row)][static_cast<std::size_t>(q)];
  }
  /// The qubit of the only letter, or -1.
  int lone(int row) {
    const auto& letters = table[static_cast<std::size_t>(row)];
    if (std::count(letters.begin(), letters.end(), 0) != n - 1) return -1;
    return static_cast<int>(std::find_if(letters.begin(), letters.end(), is_non_zero) -
                            letters.begin());
  }
  bool emit(int row, const char* z_name) {
    const int q = lone(row);
    if (q < 0) return false;
    done[static_cast<std::size_t>(row)] = true;
    const char* names[] = {"", "RX", "RY", z_name};
    circuit.emplace_back(names[letter(row, q)], std::vector{q},
                         std::vector{params[static_cast<std::size_t>(row)]}, letter(row, q) == 3);
    return true;
  }
  void play(const Move& move) {
    bring_to_z(table, params, move.control, move.control_basis, circuit);
    bring_to_z(table, params, move.target, move.target_basis, circuit);
    apply_cnot(table, params, move.control, move.target, circuit);
  }

  // Recursively.

  std::map<int, int> counts(const std::set<int>& rows, int q) {
    std::map<int, int> counts;
    for (const int r : rows) ++counts[letter(r, q)];
    return counts;
  }

  std::optional<int> shared_qubit(int target, const std::set<int>& rows) {
    for (int q = 0; q < n; ++q) {
      const auto letters = counts(rows, q);
      if (q != target && letters.size() == 1 && letters.begin()->first != 0) return q;
    }
    return {};
  }

  void serve(int target, const std::set<int>& rows, const std::vector<int>& cols) {
    if (rows.empty()) return;
    while (target >= 0) {
      const auto q = shared_qubit(target, rows);
      const unsigned char at_target = letter(*rows.begin(), target);
      if (!q || at_target == 0) break;
      const unsigned char at_q = letter(*rows.begin(), *q);
      if (at_q == 1 && at_target == 1) {
        apply_cnot(table, params, target, *q, circuit);
      } else {
        bring_to_z(table, params, target, at_target, circuit);
        bring_to_z(table, params, *q, at_q, circuit);
        apply_cnot(table, params, *q, target, circuit);
      }
      for (const int r : rows) {
        if (!done[static_cast<std::size_t>(r)]) emit(r, "PH");
      }
    }
    const auto most = [&](const std::map<int, int>& letters) {
      return std::max_element(letters.begin(), letters.end(),
                              [](auto& a, auto& b) { return a.second < b.second; });
    };
    int b = -1;
    int best = 0;
    for (const int c : cols) {
      const auto letters = counts(rows, c);
      if (most(letters)->second > best) b = c;
      best = std::max(best, most(letters)->second);
    }
    if (b < 0) return;
    std::vector<int> rest = cols;
    std::erase(rest, b);
    std::set<int> left = rows;
    std::set<int> group;
    get_I_cols(left, group, b, table);
    serve(target, group, rest);
    while (!left.empty()) {
      const auto letters = counts(left, b);
      const int p = letters.count(0) != 0 ? 0 : most(letters)->first;
      group.clear();
      get_pauli_cols(left, group, b, table, static_cast<unsigned char>(p));
      serve(p != 0 && target < 0 ? b : target, group, rest);
    }
  }

  std::vector<Gate> recursive() {
    std::vector<int> cols;
    for (int q = 0; q < n; ++q) cols.push_back(q);
    for (bool is_first = true;; is_first = false) {
      std::set<int> rest;
      for (int r = 0; r < static_cast<int>(table.size()); ++r) {
        const auto& row = table[static_cast<std::size_t>(r)];
        if (done[static_cast<std::size_t>(r)] || emit(r, "RZ")) continue;
        if (is_first || std::any_of(row.begin(), row.end(), is_non_zero)) rest.insert(r);
      }
      if (rest.empty()) return circuit;
      serve(-1, rest, cols);
    }
  }

  // Greedily.

  static unsigned char in_basis(unsigned char letter, unsigned char code) {
    return code == 1 ? H_CONJ.at(letter).second : code == 2 ? RXP_CONJ.at(letter).second : letter;
  }

  /// Rows before the first with a letter on the control, and on the target, once the move is
  /// played.
  int score(const Move& move) {
    const int rows = static_cast<int>(table.size());
    int leads[4] = {rows, rows, rows, rows};
    for (int r = rows; r-- > 0;) {
      const unsigned char a = letter(r, move.control);
      const unsigned char b = letter(r, move.target);
      const int image = CNOT_CONJ
                            .at(static_cast<unsigned char>(4 * in_basis(a, move.control_basis) +
                                                           in_basis(b, move.target_basis)))
                            .second;
      const int letters[4] = {image / 4, image % 4, a, b};
      for (int k = 0; k < 4; ++k) leads[k] = letters[k] != 0 ? r : leads[k];
    }
    return leads[0] + leads[1] - leads[2] - leads[3];
  }

  Move best_move() {
    Move best{};
    int most = 0;
    for (unsigned char p1 = 1; p1 <= 3; ++p1) {
      for (unsigned char p2 = 1; p2 <= 3; ++p2) {
        for (int a = 0; a < n; ++a) {
          for (int b = 0; b < n; ++b) {
            if (a == b || letter(0, a) == 0 || letter(0, b) == 0) continue;
            const int reached = score({a, b, p1, p2});
            if (reached >= most) best = {a, b, p1, p2};
            most = std::max(most, reached);
          }
        }
      }
    }
    return best;
  }

  std::vector<Move> best_matching() {
    const auto size = static_cast<std::size_t>(n);
    std::vector<std::vector<int>> scores(size, std::vector<int>(size));
    std::map<std::pair<int, int>, Move> best;
    for (int i = 0; i < n; ++i) {
      for (int j = i + 1; j < n; ++j) {
        int most = -static_cast<int>(table.size());
        for (unsigned char p1 = 1; p1 <= 3; ++p1) {
          for (unsigned char p2 = 1; p2 <= 3; ++p2) {
            for (const Move& move : {Move{i, j, p1, p2}, Move{j, i, p1, p2}}) {
              const int reached = score(move);
              if (reached >= most) best[{i, j}] = move;
              most = std::max(most, reached);
            }
          }
        }
        scores[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] = most;
        scores[static_cast<std::size_t>(j)][static_cast<std::size_t>(i)] = most;
      }
    }
    std::vector<std::tuple<int, int>> pairs;
    BlossomAlgorithm(scores, n, pairs);
    std::vector<Move> moves;
    for (const auto& [i, j] : pairs) moves.push_back(best[{i, j}]);
    return moves;
  }

  /// No row is the identity.
  std::vector<Gate> greedy(bool in_matchings) {
    while (true) {
      weight_sort(table, params);
      while (!table.empty() && emit(0, "RZ")) {
        table.erase(table.begin());
        params.erase(params.begin());
      }
      if (table.empty()) return circuit;
      if (!in_matchings) {
        play(best_move());
        continue;
      }
      for (const Move& move : best_matching()) {
        if (score(move) >= 1) play(move);
      }
    }
  }
};

/// Commuting sets, closed, or with the Clifford operator kept in a tableau.
inline std::vector<Gate> sets(PauliRotationMap rotations, int n, int method,
                              OperatorTableau* tableau) {
  Synthesis all(std::move(rotations), n);
  std::vector<Gate> circuit;
  const auto append = [&](const std::vector<Gate>& gates) {
    circuit.insert(circuit.end(), gates.begin(), gates.end());
    for (const Gate& gate : gates) {
      if (tableau != nullptr) tableau->apply_left(gate);
    }
  };
  if (tableau != nullptr) *tableau = OperatorTableau(n);
  for (auto& [table, params] : split_commuting(all.table, all.params)) {
    for (std::size_t r = 0; tableau != nullptr && r < table.size(); ++r) {
      const auto [negative, letters] = support::carried(support::text(table[r]), *tableau);
      table[r] = support::rows({letters})[0];
      if (negative) params[r] = params[r].flip_sign();
    }
    int failures = 0;
    const std::vector<Gate> change = generate_basis_change(table, params, method, failures);
    PhasePolynomial poly;
    for (std::size_t r = 0; r < table.size(); ++r) {
      BoolRow key;
      for (const unsigned char letter : table[r]) key.push_back(letter != 0);
      if (std::find(key.begin(), key.end(), true) != key.end()) poly[key] = params[r];
    }
    structures::Table map(n);
    append(change);
    append(gray_synth(poly, map));
    if (tableau != nullptr) continue;
    append(synthesis::optimized_PMH_Algorithm(map.n, map.to_bool_bool()).to_circuit());
    std::vector<Gate> back;
    extend_rev(back, change);
    for (Gate& gate : back) {
      for (Parameter& angle : gate.params) angle = angle.flip_sign();
    }
    append(back);
  }
  return circuit;
}

}  // namespace plain
