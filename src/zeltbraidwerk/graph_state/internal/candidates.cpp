#include "zeltbraidwerk/graph_state/internal/candidates.h"

#include <bit>
#include <utility>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/graph_state/internal/action.h"

namespace zelt::braidwerk::internal {
namespace {

/// No circuit has more: three groups a qubit at the start and at each CNOT, four at each CZ.
int most_candidates(const TripleCircuit& circuit, int n) {
  int count = 3 * n;
  for (const auto& [code, a, b] : circuit) {
    if (code == code_cz) count += 4;
    if (code == code_cnot) count += 3 * n;
  }
  return count;
}

class Recorder {
 public:
  Recorder(const TripleCircuit& circuit, BitMatrix graph, const Word* target)
      : graph_(std::move(graph)), n_(graph_.rows()) {
    found_.problem = BitMatrix(n_, 1 + most_candidates(circuit, n_));
    write_column(target, 0);
  }

  Candidates run(const TripleCircuit& circuit) {
    for (int k = 0; k < n_; ++k) {
      record(group_cz, k);
      record_row(k);
    }
    for (const GateTriple& gate : circuit) {
      stop_point();
      ++position_;
      follow(gate);
    }
    found_.problem = found_.problem.block(0, 0, n_, 1 + found_.size());
    return std::move(found_);
  }

 private:
  void follow(const GateTriple& gate) {
    const auto& [code, a, b] = gate;
    act(graph_, gate);
    if (code == code_cz) {
      for (const GroupCode group : {group_cnot, group_s_cnot_s}) {
        record(group, a);
        record(group, b);
      }
    } else if (code == code_cnot) {
      found_.problem.add_row(b, a);
      record_row(a);
      for (int k = 0; k < n_; ++k) {
        if (k != a && graph_.get(k, b)) record_row(k);
        record(group_cz, k);
      }
    }
  }

  void record_row(int k) {
    record(group_cnot, k);
    record(group_s_cnot_s, k);
  }

  void record(GroupCode group, int k) {
    const int column = 1 + found_.size();
    if (group == group_cz) {
      found_.problem.set(k, column);
    } else {
      write_column(graph_.row(k), column);
      if (group == group_s_cnot_s) found_.problem.flip(k, column);
    }
    found_.positions.push_back(position_);
    found_.qubits.push_back(k);
    found_.codes.push_back(group);
  }

  void write_column(const Word* bits, int column) {
    for (int w = 0; w < words_for(n_); ++w) {
      for (Word rest = bits[w]; rest != 0; rest &= rest - 1) {
        found_.problem.set(w * word_bits + std::countr_zero(rest), column);
      }
    }
  }

  BitMatrix graph_;
  int n_;
  int position_ = 0;
  Candidates found_;
};

}  // namespace

Candidates find_candidates(const TripleCircuit& circuit, BitMatrix graph, const Word* target) {
  return Recorder(circuit, std::move(graph), target).run(circuit);
}

void insert_groups(TripleCircuit& circuit, const std::vector<int>& chosen,
                   const std::vector<int>& positions, const std::vector<int>& qubits,
                   const std::vector<int>& codes, int new_qubit) {
  // From the last to the first, so that the positions yet to come stay valid.
  for (auto j = chosen.rbegin(); j != chosen.rend(); ++j) {
    const auto candidate = static_cast<std::size_t>(*j);
    const int k = qubits[candidate];
    const auto place = circuit.begin() + positions[candidate];
    switch (codes[candidate]) {
      case group_cnot:
        circuit.insert(place, {code_cnot, new_qubit, k});
        break;
      case group_cz:
        circuit.insert(place, {code_cz, new_qubit, k});
        break;
      case group_s_cnot_s:
        circuit.insert(place, {{code_s, k, 0}, {code_cnot, new_qubit, k}, {code_s, k, 0}});
        break;
      default:
        break;
    }
  }
}

}  // namespace zelt::braidwerk::internal
