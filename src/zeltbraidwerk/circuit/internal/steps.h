#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/internal/linear_angle.h"
#include "zeltbraidwerk/foundations/internal/preimages.h"

namespace zelt::braidwerk::internal {

enum class StepKind : std::uint8_t {
  cnot,  ///< a is the control
  cz,
  h,         ///< on a, as what follows
  turn,      ///< the rotation about a letter by so many times pi/2, 1 to 3
  rotation,  ///< about a letter, by an angle that is kept elsewhere
};

/// One gate of a circuit that is taken apart.
struct Step {
  StepKind kind;
  std::uint8_t letter = 0;  ///< 1 = X, 2 = Y, 3 = Z
  std::uint8_t quarters = 0;
  bool negative = false;  ///< a rotation turns backward
  int a = 0;
  int b = -1;
  int row = -1;  ///< of a rotation: its angle

  bool is_pair() const { return kind == StepKind::cnot || kind == StepKind::cz; }
  bool is_clifford() const { return kind != StepKind::rotation; }
  bool operator==(const Step&) const = default;
};

/// A circuit of Clifford gates and rotations.
struct StepCircuit {
  int qubits = 0;
  std::vector<Step> steps;
  std::vector<LinearAngle> angles;
  /// The farthest that an angle that counts as a multiple of pi/2 was from it.
  double rounding = 0;
  /// The operator that was read is exp(i pi/4 eighths) times that of the steps.
  int eighths = 0;
};

/// Angles this near to a multiple of pi/2 count as such.
inline constexpr double clifford_tolerance = 1e-9;

/// Times pi/2, 0 to 3, of an angle that counts as a multiple of it; else -1.
int quarters_of(const LinearAngle& angle);
/// Of an angle that counts as a multiple of pi/2, the sign against its rotation by quarters_of:
/// 0, or 4 (eighths of a turn of the phase) for -1.
int sign_of_turns(const LinearAngle& angle);
/// How far it is from it.
double rounding_of(const LinearAngle& angle);

/// The rotation about a letter by so many times pi/2.
Step turn(int letter, int q, int quarters);

/// Reads gate after gate.
class StepReader {
 public:
  explicit StepReader(int qubits) { circuit_.qubits = qubits; }

  /// Throws std::invalid_argument for a gate that is no Clifford gate and no rotation, for one that
  /// lacks its angle, and for qubits outside the circuit; the text names the gate and its place.
  void read(const structures::Gate& gate);
  /// What was read.
  StepCircuit take() { return std::move(circuit_); }

 private:
  void rotate(int letter, int q, const LinearAngle& angle);
  void read_global(const structures::Gate& gate);
  void append(const Step& step) { circuit_.steps.push_back(step); }
  void check_qubits(const structures::Gate& gate) const;
  void check_size(const structures::Gate& gate, std::size_t size) const;
  [[noreturn]] void fail(const structures::Gate& gate, const std::string& wanted) const;

  StepCircuit circuit_;
  std::size_t place_ = 0;  // of the gate that is read
};

/// All of them.
StepCircuit read_steps(int qubits, const std::vector<structures::Gate>& gates);

/// "CNOT", "CSIGN", "H", "X", "Y", "Z", "S", "D-S" and rotations.
std::vector<structures::Gate> written(const StepCircuit& circuit);

/// Numbers rotations and angles in the order of the steps.
void renumber(StepCircuit& circuit);

/// The steps of the inverse circuit. Rows are numbered backward.
std::vector<Step> inverted(const std::vector<Step>& steps, int rows);

/// Plays a Clifford step.
void play(Preimages& frame, const Step& step);

}  // namespace zelt::braidwerk::internal
