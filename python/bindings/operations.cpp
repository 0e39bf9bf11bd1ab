#include "operations.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "zeltbraidwerk/foundations/internal/turns.h"

namespace zelt::braidwerk::python {
namespace {

constexpr const char* names[] = {"CNOT", "CSIGN", "H", "X", "Y", "Z", "RX", "RY", "RZ", "PH"};

int name_index(const std::string& name) {
  const auto found = std::ranges::find_if(names, [&](const char* each) { return name == each; });
  return static_cast<int>(found - std::begin(names));
}

}  // namespace

const char* gate_name(int index) {
  return index < static_cast<int>(std::size(names)) ? names[index] : nullptr;
}

Operations to_operations(const std::vector<structures::Gate>& gates) {
  return to_operations(gates, {});
}

Operations to_operations(const std::vector<structures::Gate>& gates, const std::vector<int>& rows) {
  constexpr std::size_t columns = 5;
  auto* data = new std::int32_t[gates.size() * columns + 1];
  const nb::capsule owner(data, [](void* p) noexcept { delete[] static_cast<std::int32_t*>(p); });
  std::int32_t* out = data;
  for (std::size_t k = 0; k < gates.size(); ++k, out += columns) {
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
  }
  return Operations(data, {gates.size(), columns}, owner);
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

ByteArray2 to_numpy(const std::vector<std::vector<unsigned char>>& strings, int qubits) {
  const auto columns = static_cast<std::size_t>(qubits);
  auto* data = new unsigned char[strings.size() * columns + 1];
  const nb::capsule owner(data, [](void* p) noexcept { delete[] static_cast<unsigned char*>(p); });
  unsigned char* row = data;
  for (const auto& string : strings) row = std::copy_n(string.begin(), columns, row);
  return ByteArray2(data, {strings.size(), columns}, owner);
}

}  // namespace zelt::braidwerk::python
