#include "operations.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string>
#include <utility>

#include "zeltbraidwerk/foundations/internal/turns.h"

namespace zelt::braidwerk::python {
namespace {

constexpr const char* names[] = {"CNOT", "CSIGN", "H", "X", "Y", "Z", "RX", "RY", "RZ", "PH"};

int name_index(const std::string& name) {
  const auto found = std::ranges::find_if(names, [&](const char* each) { return name == each; });
  return static_cast<int>(found - std::begin(names));
}

/// One row per gate; `fill(k, row)` writes one.
template <class Fill>
Operations filled(std::size_t gates, Fill&& fill) {
  constexpr std::size_t columns = 5;
  auto* data = new std::int32_t[gates * columns + 1];
  const nb::capsule owner(data, [](void* p) noexcept { delete[] static_cast<std::int32_t*>(p); });
  for (std::size_t k = 0; k < gates; ++k) fill(k, data + k * columns);
  return Operations(data, {gates, columns}, owner);
}

}  // namespace

const char* gate_name(int index) {
  return index < static_cast<int>(std::size(names)) ? names[index] : nullptr;
}

Operations to_operations(const std::vector<structures::Gate>& gates) {
  return to_operations(gates, {});
}

Operations to_operations(const std::vector<internal::CliffordGate>& gates) {
  constexpr int cnot = 0, cz = 1, h = 2, x = 3, y = 4, z = 5, rx = 6, rz = 8;
  // By kind, with the quarter turns.
  constexpr std::array<std::pair<int, int>, 10> rows{
      {{cnot, 0}, {cz, 0}, {h, 0}, {rz, 1}, {rz, -1}, {rx, 1}, {rx, -1}, {x, 0}, {y, 0}, {z, 0}}};
  return filled(gates.size(), [&](std::size_t k, std::int32_t* out) {
    const internal::CliffordGate& gate = gates[k];
    const auto [name, turns] = rows[static_cast<std::size_t>(gate.kind)];
    out[0] = name;
    out[1] = gate.a;
    out[2] = gate.b;
    out[3] = -1;
    out[4] = turns;
  });
}

Operations to_operations(const std::vector<structures::Gate>& gates, const std::vector<int>& rows) {
  return filled(gates.size(), [&](std::size_t k, std::int32_t* out) {
    const structures::Gate& gate = gates[k];
    out[0] = name_index(gate.name);
    out[1] = gate.qbits[0];
    out[2] = gate.qbits.size() > 1 ? gate.qbits[1] : -1;
    out[3] = -1;
    out[4] = 0;
    if (k < rows.size() && rows[k] >= 0) {
      out[3] = rows[k];
      out[4] = gate.params[0].value < 0 ? -1 : 1;
    } else if (!gate.params.empty()) {
      out[4] =
          static_cast<std::int32_t>(std::lround(gate.params[0].value / internal::quarter_turn));
    }
  });
}

std::vector<std::vector<unsigned char>> to_strings(const Letters& letters) {
  std::vector<std::vector<unsigned char>> strings(letters.shape(0));
  for (std::size_t r = 0; r < strings.size(); ++r) {
    const std::uint8_t* row = letters.data() + r * letters.shape(1);
    strings[r].assign(row, row + letters.shape(1));
    for (const unsigned char letter : strings[r]) {
      if (letter > 3) raise_value_error("got the code %d, wanted 0 to 3", letter);
    }
  }
  return strings;
}

internal::PauliFrame to_frame(const Letters& letters) {
  const auto rows = static_cast<int>(letters.shape(0));
  const auto qubits = static_cast<int>(letters.shape(1));
  BitMatrix x(rows, qubits);
  BitMatrix z(rows, qubits);
  const std::uint8_t* letter = letters.data();
  unsigned seen = 0;
  for (int r = 0; r < rows; ++r) {
    internal::each_word(qubits, [&](std::size_t first, int width) {
      internal::Word has_x = 0;
      internal::Word has_z = 0;
      for (int k = 0; k < width; ++k, ++letter) {
        seen |= *letter;
        has_x |= internal::Word{internal::letter_has_x(*letter)} << k;
        has_z |= internal::Word{internal::letter_has_z(*letter)} << k;
      }
      x.row(r)[first / internal::word_bits] = has_x;
      z.row(r)[first / internal::word_bits] = has_z;
    });
  }
  if (seen > 3) raise_value_error("got a code of letters above 3, wanted 0 to 3");
  return internal::PauliFrame(x.transposed(), z.transposed());
}

ByteArray2 to_numpy(const std::vector<std::vector<unsigned char>>& strings, int qubits) {
  const auto columns = static_cast<std::size_t>(qubits);
  auto* data = new unsigned char[strings.size() * columns + 1];
  const nb::capsule owner(data, [](void* p) noexcept { delete[] static_cast<unsigned char*>(p); });
  unsigned char* row = data;
  for (const auto& string : strings) row = std::copy_n(string.begin(), columns, row);
  return ByteArray2(data, {strings.size(), columns}, owner);
}

}  // namespace zelt::braidwerk::python
