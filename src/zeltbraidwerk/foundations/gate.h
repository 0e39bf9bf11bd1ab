#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/parameter.h"

namespace structures {

/// One named gate on a list of qubits. A general circuit is a vector of gates in time order.
///
/// Names that the library builds: "CNOT" (control, target), "CSIGN" (controlled Z), "H", the
/// rotations exp(-i theta P / 2) "RX", "RY", "RZ", the phase rotation "PH" (treated as "RZ"), and
/// "XX" (a two-qubit XX rotation on every pair of the list; parameters pi/2 and the number of
/// qubits). It accepts as well: "CZ" (as "CSIGN"), "S" and "D-S" ("RZ" by pi/2 and -pi/2), "X",
/// "Y", "Z", "I" and "S*". Nothing is validated when a gate is built.
struct ZELTBRAIDWERK_EXPORT Gate {
  std::string name;               ///< one of the above
  std::vector<int> qbits;         ///< in the order that the name requires
  bool diag = false;              ///< marks a rotation about Z, for the caller; nothing reads it
  std::vector<Parameter> params;  ///< empty for gates without an angle

  Gate() = default;
  /// Each takes its fields from the arguments.
  /// @{
  Gate(const std::string& name, const std::vector<int>& qbits);
  Gate(const std::string& name, const std::vector<int>& qbits, bool diag);
  Gate(const std::string& name, const std::vector<int>& qbits, const std::vector<Parameter>& params,
       bool diag);
  /// @}

  static Gate CNOT(int control, int target);  ///< "CNOT"
  static Gate CZ(int a, int b);               ///< "CSIGN"
  static Gate H(int q);                       ///< "H"
  static Gate RXP(int q);                     ///< "RX" by pi/2
  static Gate S(int q);                       ///< "RZ" by pi/2, diag

  std::string to_string() const;  ///< the text of operator<<

  bool operator==(const Gate&) const = default;
};

/// `name [q0 q1 ]`, then the first parameter and a blank if there is one, then "(diag)" if marked:
/// `RZ [2 ]1.5708 (diag)`. No line end.
ZELTBRAIDWERK_EXPORT std::ostream& operator<<(std::ostream& out, const Gate& gate);

/// Each gate followed by a line end and a flush.
ZELTBRAIDWERK_EXPORT std::ostream& operator<<(std::ostream& out, const std::vector<Gate>& gates);

}  // namespace structures
