#include "zeltbraidwerk/pauli/pauli_table.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <ostream>
#include <stdexcept>
#include <string>

#include "zeltbraidwerk/foundations/internal/engine_draw.h"

using structures::Gate;
using structures::Parameter;

namespace {

using Letters = std::vector<unsigned char>;

/// The new code, the angle flipped where a minus comes with it.
unsigned char conjugated(const ConjugationTable& table, int key, Parameter& param) {
  const auto entry = table.find(static_cast<unsigned char>(key));
  if (key > 15 || entry == table.end()) throw std::out_of_range("map::at:  key not found");
  const auto [negative, image] = entry->second;
  if (negative) param = param.flip_sign();
  return image;
}

void conjugate(const ConjugationTable& table, int qubit, Letters& row, Parameter& param) {
  unsigned char& letter = row[static_cast<std::size_t>(qubit)];
  letter = conjugated(table, letter, param);
}

void conjugate(const ConjugationTable& table, int a, int b, Letters& row, Parameter& param) {
  unsigned char& first = row[static_cast<std::size_t>(a)];
  unsigned char& second = row[static_cast<std::size_t>(b)];
  // A code above 3 on the second qubit must not pass for another pair.
  const int key = second > 3 ? 16 : 4 * first + second;
  const unsigned char image = conjugated(table, key, param);
  first = image / 4;
  second = image % 4;
}

bool is_quarter_turn(const Gate& gate) {
  return std::abs(gate.params[0].get_numeric_value() - 1.5707963267948966) < 1e-5;
}

std::size_t weight_of(const Letters& row) {
  return static_cast<std::size_t>(std::count_if(row.begin(), row.end(), is_non_zero));
}

/// The first place, of those that a has, where the two differ; the length of a when none does.
std::size_t first_difference(const Letters& a, const Letters& b) {
  return static_cast<std::size_t>(std::mismatch(a.begin(), a.end(), b.begin()).first - a.begin());
}

std::vector<std::size_t> indices_of(const PauliTable& table) {
  std::vector<std::size_t> order(table.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  return order;
}

void reorder(PauliTable& table, std::vector<Parameter>& params,
             const std::vector<std::size_t>& order) {
  PauliTable new_table;
  std::vector<Parameter> new_params;
  for (const std::size_t r : order) {
    new_table.push_back(std::move(table[r]));
    new_params.push_back(std::move(params[r]));
  }
  table = std::move(new_table);
  params = std::move(new_params);
}

template <typename Values>
std::ostream& print(std::ostream& out, const Values& values) {
  for (const unsigned int value : values) out << value << ' ';
  return out;
}

}  // namespace

bool commute(const Letters& a, const Letters& b) {
  bool commute = true;
  for (std::size_t q = 0; q < a.size(); ++q) commute ^= a[q] != 0 && b[q] != 0 && a[q] != b[q];
  return commute;
}

int find_common_pauli(const PauliTable& table, int qubit) {
  int common = -1;
  for (const Letters& row : table) {
    const int letter = row[static_cast<std::size_t>(qubit)];
    if (letter == 0 || letter == common) continue;
    if (common != -1) return -1;
    common = letter;
  }
  return common;
}

void bring_to_z(PauliTable& table, std::vector<Parameter>& params, int qubit, int code,
                std::vector<Gate>& circuit) {
  if (code != 1 && code != 2) return;
  circuit.push_back(code == 1 ? Gate::H(qubit) : Gate::RXP(qubit));
  for (std::size_t r = 0; r < table.size(); ++r) {
    conjugate(code == 1 ? H_CONJ : RXP_CONJ, qubit, table[r], params[r]);
  }
}

void apply_cnot(PauliTable& table, std::vector<Parameter>& params, int control, int target,
                std::vector<Gate>& circuit) {
  circuit.push_back(Gate::CNOT(control, target));
  for (std::size_t r = 0; r < table.size(); ++r) {
    conjugate(CNOT_CONJ, control, target, table[r], params[r]);
  }
}

void conjugate_parity_with_gate(Gate& gate, Letters& parity, Parameter& param) {
  const std::vector<int>& q = gate.qbits;
  if (gate.name == "H") return conjugate(H_CONJ, q[0], parity, param);
  if (gate.name == "RZ") {
    return conjugate(is_quarter_turn(gate) ? S_CONJ : SD_CONJ, q[0], parity, param);
  }
  if (gate.name == "RX") {
    return conjugate(is_quarter_turn(gate) ? RXP_CONJ : RXM_CONJ, q[0], parity, param);
  }
  if (gate.name == "CNOT") return conjugate(CNOT_CONJ, q[0], q[1], parity, param);
  if (gate.name == "CZ" || gate.name == "CSIGN") {
    return conjugate(CZ_CONJ, q[0], q[1], parity, param);
  }
  throw std::runtime_error("Uknown clifford gate: " + gate.name);
}

void conjugate_table_with_circuit(std::vector<Gate>& circuit, PauliTable& table,
                                  std::vector<Parameter>& params) {
  for (Gate& gate : circuit) {
    for (std::size_t r = 0; r < table.size(); ++r) {
      conjugate_parity_with_gate(gate, table[r], params[r]);
    }
  }
}

void build_table(PauliRotationMap& rotations, PauliTable& table, std::vector<Parameter>& params) {
  for (const auto& [letters, param] : rotations) {
    table.push_back(letters);
    params.push_back(param);
  }
}

bool lexico_vector(const Letters& a, const Letters& b) {
  const std::size_t q = first_difference(a, b);
  return q < a.size() && a[q] < b[q];
}

bool is_non_zero(unsigned char code) {
  return code != 0;
}

void shuffle(PauliTable& table, std::vector<Parameter>& params) {
  using namespace zelt::braidwerk::internal;
  const Draw draw = device_draw<std::minstd_rand>();
  std::vector<std::size_t> order = indices_of(table);
  for (std::size_t i = 0; i < order.size(); ++i) shuffle_step(order, i, draw);
  reorder(table, params, order);
}

void weight_sort(PauliTable& table, std::vector<Parameter>& params) {
  std::vector<std::size_t> weights;
  for (const Letters& row : table) weights.push_back(weight_of(row));
  std::vector<std::size_t> order = indices_of(table);
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return weights[a] < weights[b]; });
  reorder(table, params, order);
}

void sort_lexico(PauliTable& table, std::vector<Parameter>& params) {
  std::vector<std::size_t> order = indices_of(table);
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return lexico_vector(table[b], table[a]); });
  reorder(table, params, order);
}

BoolRow& operator^=(BoolRow& a, const BoolRow& b) {
  for (std::size_t i = 0; i < a.size(); ++i) a[i] = a[i] != b[i];
  return a;
}

std::ostream& operator<<(std::ostream& out, const PauliTable& table) {
  const std::size_t qubits = table.empty() ? 0 : table[0].size();
  for (std::size_t q = 0; q < qubits; ++q) {
    for (const Letters& row : table) {
      if (row[q] <= 3) out << "IXYZ"[row[q]] << "& ";
    }
    out << "\\\\" << std::endl;
  }
  return out;
}

std::ostream& operator<<(std::ostream& out, const std::vector<unsigned int>& values) {
  return print(out, values);
}

std::ostream& operator<<(std::ostream& out, const std::vector<unsigned char>& values) {
  return print(out, values);
}

std::ostream& operator<<(std::ostream& out, const BoolRow& row) {
  return print(out, row);
}

std::ostream& operator<<(std::ostream& out, const BoolMatrix& matrix) {
  for (const BoolRow& row : matrix) print(out, row) << std::endl;
  return out;
}
