#include "zeltbraidwerk/pauli/search/internal/known_network.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <numbers>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/foundations/internal/linear_angle.h"
#include "zeltbraidwerk/foundations/internal/preimages.h"
#include "zeltbraidwerk/foundations/internal/turns.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/pauli/search/internal/network_emission.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr double tolerance = 1e-9;  // of angles, in radians

constexpr int label_of_letter(int letter) {
  return (letter != 3 ? label_x : 0) | (letter != 1 ? label_z : 0);
}

struct Turn {
  std::string_view name;
  int letter;  // 1 = X, 2 = Y, 3 = Z
  int quarters;
};
constexpr Turn turns[] = {{"I", 3, 0}, {"S", 3, 1}, {"D-S", 3, 3},
                          {"X", 1, 2}, {"Y", 2, 2}, {"Z", 3, 2}};
constexpr Turn rotations[] = {{"RX", 1, 0}, {"RY", 2, 0}, {"RZ", 3, 0}, {"PH", 3, 0}};

const Turn* named(const auto& table, const std::string& name) {
  const auto found = std::ranges::find(table, name, &Turn::name);
  return found == std::end(table) ? nullptr : &*found;
}

/// Reads the gates of a circuit one after the other.
class NetworkReader {
 public:
  NetworkReader(const PauliFrame& rows, const std::vector<structures::Parameter>& angles,
                bool in_order)
      : rows_(rows), in_order_(in_order), labels_(rows.qubits()), before_(rows.qubits()) {
    for (int row = 0; row < rows.rows(); ++row) {
      angles_.emplace_back(angles[static_cast<std::size_t>(row)]);
      if (rows.weight(row) != 0) waiting_[string_of(row)].push_back(row);
    }
    waits_.resize(angles_.size());
    for (const auto& [string, of_string] : waiting_) {
      for (const int row : of_string) waits_[static_cast<std::size_t>(row)] = true;
    }
  }

  /// False for a rotation that is none of the rows, or comes before one that it has to follow.
  bool read(const structures::Gate& gate) {
    const int q = gate.qbits[0];
    if (gate.name == "CNOT") {
      const int target = gate.qbits[1];
      events_.push_back({{labels_.origin(q, label_z), labels_.origin(target, label_x)}, -1});
      before_.cnot(q, target);
    } else if (gate.name == "H") {
      labels_.exchange_others(q, label_y);
      before_.h(q);
    } else if (const Turn* turn = named(turns, gate.name)) {
      turn_by(turn->quarters, turn->letter, q);
    } else if (const Turn* rotation = named(rotations, gate.name);
               rotation != nullptr && !gate.params.empty()) {
      return rotate(rotation->letter, q, LinearAngle(gate.params[0]));
    } else {
      throw std::invalid_argument("gates: got " + gate.to_string());
    }
    return true;
  }

  bool has_all() const { return std::ranges::none_of(waits_, std::identity()); }
  std::vector<NetworkEvent> events() && { return std::move(events_); }

  /// Whether the Clifford gates turn X and Z on qubit q, on wire wires[q], into what a target does.
  bool ends_as(const CliffordTarget* target, const std::vector<int>& wires) const {
    const int n = rows_.qubits();
    PauliFrame wanted = target == nullptr ? identity_images(n) : target->preimages;
    std::vector<Word> string(2 * static_cast<std::size_t>(before_.words()));
    for (int r = 0; r < 2 * n; ++r) {
      const int wire = wires[static_cast<std::size_t>(r % n)];
      if (before_.read(r < n ? 1 : 3, wire, string.data()) != wanted.is_negative(r)) return false;
      if (string != string_of(wanted, r)) return false;
    }
    return true;
  }

 private:
  using String = std::vector<Word>;

  /// X words before Z words.
  static String string_of(const PauliFrame& rows, int row) {
    const auto words = static_cast<std::size_t>((rows.qubits() + word_bits - 1) / word_bits);
    String string(2 * words);
    for (int q = 0; q < rows.qubits(); ++q) {
      const auto at = static_cast<std::size_t>(q / word_bits);
      const unsigned char letter = rows.letter(row, q);
      string[at] |= Word{letter_has_x(letter)} << (q % word_bits);
      string[words + at] |= Word{letter_has_z(letter)} << (q % word_bits);
    }
    return string;
  }
  String string_of(int row) const { return string_of(rows_, row); }

  void turn_by(int quarters, int letter, int q) {
    if (quarters % 2 != 0) labels_.exchange_others(q, label_of_letter(letter));
    if (quarters != 0) before_.turn(letter, q, quarters);
  }

  bool rotate(int letter, int q, const LinearAngle& angle) {
    String string(2 * static_cast<std::size_t>(before_.words()));
    const bool negative = before_.read(letter, q, string.data());
    if (const auto found = waiting_.find(string); found != waiting_.end()) {
      std::vector<int>& rows = found->second;
      const auto row = std::ranges::find_if(rows, [&](int r) {
        return are_equal(angle, angles_[static_cast<std::size_t>(r)],
                         negative != rows_.is_negative(r));
      });
      if (row != rows.end()) {
        const End end = labels_.origin(q, label_of_letter(letter));
        events_.push_back({{end, end}, *row});
        const bool may_come = !in_order_ || may_be_next(*row);
        waits_[static_cast<std::size_t>(*row)] = false;
        rows.erase(row);
        return may_come;
      }
    }
    const double quarters = angle.constant / quarter_turn;
    if (!angle.is_number() || std::abs(std::remainder(quarters, 1.0)) > tolerance) return false;
    turn_by(static_cast<int>(std::lround(std::fmod(std::round(quarters), 4)) + 4) % 4, letter, q);
    return true;
  }

  static bool are_equal(LinearAngle angle, const LinearAngle& other, bool negative) {
    angle.add(other, negative ? 1 : -1);
    return angle.is_number() &&
           std::abs(std::remainder(angle.constant, 2 * std::numbers::pi)) <= tolerance;
  }

  bool may_be_next(int row) const {
    for (int r = 0; r < row; ++r) {
      if (waits_[static_cast<std::size_t>(r)] && !rows_.commute(r, row)) return false;
    }
    return true;
  }

  const PauliFrame& rows_;
  bool in_order_;
  std::vector<LinearAngle> angles_;
  std::map<String, std::vector<int>> waiting_;  // rows by their strings, ascending
  std::vector<bool> waits_;                     // by row
  WireLabels labels_;
  Preimages before_;
  std::vector<NetworkEvent> events_;
};

}  // namespace

std::optional<Network> known_network(const synthesis::KnownCircuit& known, const PauliFrame& rows,
                                     const std::vector<structures::Parameter>& angles,
                                     const NetworkTask& task) {
  const bool moves = !std::ranges::is_sorted(known.permutation);
  if (moves && task.outputs != Outputs::anywhere) return std::nullopt;
  NetworkReader reader(rows, angles, task.in_order);
  for (const structures::Gate& gate : known.gates) {
    const bool is_off_edges = task.device != nullptr && gate.name == "CNOT" &&
                              !task.device->joined(gate.qbits[0], gate.qbits[1]);
    if (is_off_edges || !reader.read(gate)) return std::nullopt;
  }
  if (!reader.has_all()) return std::nullopt;
  if (task.closes() && !reader.ends_as(task.target, known.permutation)) return std::nullopt;
  return network_of(std::move(reader).events(), known.permutation, task.closes());
}

}  // namespace zelt::braidwerk::internal
