#pragma once

#include "zeltbraidwerk/circuit/two_wire/internal/weyl_form.h"

namespace zelt::braidwerk::internal {

/// The interactions that circuits are known for, by their CNOTs.
enum class CoreKind {
  none,
  one,    ///< exp(i pi/4 XX)
  two,    ///< exp(i (x XX + z ZZ))
  iswap,  ///< exp(i pi/4 (XX + ZZ)): two CNOTs with no gate between
  three,  ///< exp(i (x XX + y YY + z ZZ))
};
/// For coefficients in order, 0 and pi/4 exact.
CoreKind core_kind(const std::array<double, 3>& c);

/// The gates that a core has before its first and after its last CNOT, whatever the coefficients.
struct CoreEnds {
  std::array<Quaternion, 2> first{Quaternion::Identity(), Quaternion::Identity()};
  std::array<Quaternion, 2> last{Quaternion::Identity(), Quaternion::Identity()};
};
CoreEnds core_ends(CoreKind kind);

/// An operator written so that a core fits its coefficients, which need not be in order.
/// `mirrored`: with places 0 and 1 exchanged.
struct FramedForm {
  WeylForm form;
  bool mirrored = false;
};

/// Of the ways to write an operator that differ by Clifford gates around the interaction, one with
/// at most `enough` one-wire gates, or else one with the fewest.
FramedForm framed(const WeylForm& form, CoreKind kind, int enough);

}  // namespace zelt::braidwerk::internal
