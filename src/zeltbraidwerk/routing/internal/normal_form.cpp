#include <algorithm>
#include <stdexcept>
#include <string>
#include <unordered_map>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/weyl.h"
#include "zeltbraidwerk/routing/internal/rotation_rows.h"

namespace zelt::braidwerk::internal {
namespace {

using structures::Gate;
using structures::OperatorTableau;
using structures::Parameter;

/// Appends the rotation of a gate, its axis read through the frame. The axis is a single letter, so
/// its image is one column of the frame, or a sum of two.
void append_rotation(const Gate& gate, const OperatorTableau& frame, RotationRows& rotations) {
  const bool about_x = gate.name == "RX" || gate.name == "RY";
  const bool about_z = gate.name != "RX";
  const int n = frame.nbqbits;
  const int q = gate.qbits.at(0);
  if (q < 0 || q >= n) throw std::out_of_range("A rotation outside the qubits");
  const std::size_t size = 2 * static_cast<std::size_t>(n) + 1;
  const std::vector<unsigned char>& letter =
      about_x ? (about_z ? structures::WY : structures::WX) : structures::WZ;
  const unsigned z_factor = letter[1];
  const unsigned x_factor = letter[2];
  const unsigned char* z_column = frame.data.data() + q + 1;
  const unsigned char* x_column = z_column + n;
  const auto exponent = [&](int position) {
    const std::size_t start = static_cast<std::size_t>(position) * size;
    return (z_factor * z_column[start] + x_factor * x_column[start]) & 3;
  };
  rotations.append(gate.params.at(0));
  const int r = rotations.count() - 1;
  bool negative = false;
  for (int k = 0; k < n; ++k) {
    const auto& [sign, code] = structures::SILUAP[4 * exponent(k + 1) + exponent(n + k + 1)];
    negative ^= sign != 0;
    rotations.set_letter(r, k, letter_has_x(code), letter_has_z(code));
  }
  if (negative) rotations.angles.back() = rotations.angles.back().flip_sign();
}

RotationRows collect(const std::vector<Gate>& circuit, OperatorTableau& frame) {
  RotationRows rotations(frame.nbqbits);
  for (const Gate& gate : circuit) {
    if (synthesis::is_clifford(gate)) {
      frame.apply_right(gate);
    } else if (std::ranges::count(synthesis::ROT, gate.name) != 0) {
      append_rotation(gate, frame, rotations);
    } else {
      throw std::logic_error("Neither a Clifford gate nor a rotation: " + gate.name);
    }
  }
  return rotations;
}

/// The longest runs that commute pairwise; equal strings in a run join the first of them.
std::vector<int> cut_commuting(RotationRows& rotations) {
  std::vector<int> first{0};
  std::vector<int> kept;
  std::unordered_map<std::string_view, int> in_block;
  for (int r = 0; r < rotations.count(); ++r) {
    stop_point();
    const auto same = in_block.find(rotations.bytes(r));
    if (same != in_block.end()) {  // commutes with all that its equal commutes with
      rotations.add_angle(same->second, r);
      continue;
    }
    const auto members = kept.begin() + first.back();
    if (!std::all_of(members, kept.end(), [&](int s) { return rotations.commute(r, s); })) {
      first.push_back(static_cast<int>(kept.size()));
      in_block.clear();
    }
    in_block.emplace(rotations.bytes(r), r);
    kept.push_back(r);
  }
  first.push_back(static_cast<int>(kept.size()));
  rotations.keep(kept);
  return first;
}

}  // namespace

std::vector<synthesis::RotationSequence> NormalForm::blocks() const {
  std::vector<synthesis::RotationSequence> blocks;
  for (std::size_t b = 0; b + 1 < first.size(); ++b) {
    blocks.push_back(rotations.unpack(first[b], first[b + 1]));
  }
  return blocks;
}

void merge_rotations(RotationRows& rotations) {
  std::vector<int> kept;
  std::unordered_map<std::string_view, std::size_t> latest;  // place in kept, by string
  for (int r = 0; r < rotations.count(); ++r) {
    stop_point();
    const auto same = latest.find(rotations.bytes(r));
    // One merge is all there can be: an equal string before the latest one is out of its reach.
    if (same != latest.end() &&
        std::all_of(kept.rbegin(), kept.rend() - static_cast<std::ptrdiff_t>(same->second) - 1,
                    [&](int s) { return rotations.commute(r, s); })) {
      rotations.add_angle(kept[same->second], r);
      continue;
    }
    latest[rotations.bytes(r)] = kept.size();
    kept.push_back(r);
  }
  rotations.keep(kept);
}

bool fold_cliffords(RotationRows& rotations, OperatorTableau& tableau) {
  RotationRows rest(rotations.qubits);
  rest.linear_sums = rotations.linear_sums;
  bool folded = false;
  bool is_identity = tableau == OperatorTableau(tableau.nbqbits);
  for (int r = 0; r < rotations.count(); ++r) {
    stop_point();
    const Parameter& angle = rotations.angles[static_cast<std::size_t>(r)];
    if (synthesis::is_clifford_angle(angle)) {
      std::pair rotation{rotations.letters(r), angle};
      synthesis::update_clifford(rotation, tableau);
      folded = true;
      is_identity = false;
    } else if (is_identity) {
      rest.append(angle);
      std::copy_n(rotations.row(r), 2 * rest.half, rest.row(rest.count() - 1));
    } else {
      structures::WeylOperator axis(rotations.letters(r));
      axis.conjugate_with(tableau);
      const auto [negative, letters] = axis.to_pauli();
      rest.append(letters, negative ? angle.flip_sign() : angle);
    }
  }
  rotations = std::move(rest);
  return folded;
}

NormalForm normal_form(const std::vector<Gate>& circuit, const OperatorTableau& start,
                       bool commuting_blocks, bool merge, bool linear_sums) {
  NormalForm form;
  form.clifford = start;
  form.rotations = collect(circuit, form.clifford);
  form.rotations.linear_sums = linear_sums;
  if (merge) {
    merge_rotations(form.rotations);
    OperatorTableau extra(start.nbqbits);
    fold_cliffords(form.rotations, extra);
    extra.multiply_right(form.clifford);
    form.clifford = std::move(extra);
  }
  if (commuting_blocks) {
    form.first = cut_commuting(form.rotations);
  } else {
    form.first.push_back(0);
    for (int r = 0; r <= form.rotations.count(); ++r) form.first.push_back(r);
  }
  return form;
}

}  // namespace zelt::braidwerk::internal
