#include "zeltbraidwerk/foundations/internal/linear_angle.h"

#include <cmath>
#include <locale>
#include <optional>
#include <sstream>
#include <vector>

namespace zelt::braidwerk::internal {
namespace {

std::optional<double> number_in(const std::string& token) {
  std::istringstream in(token);
  in.imbue(std::locale::classic());
  double value = 0;
  if (in >> value && in.peek() == std::istringstream::traits_type::eof()) return value;
  return std::nullopt;
}

void add_term(LinearAngle& angle, const std::string& name, double coefficient) {
  const auto place = angle.coefficients.try_emplace(name, 0).first;
  place->second += coefficient;
  if (place->second == 0) angle.coefficients.erase(place);
}

/// False for text that is not in prefix notation.
bool read_into(LinearAngle& angle, const std::string& text) {
  std::vector<double> signs{1};  // of the operands that are still to come, the next one last
  std::istringstream in(text);
  for (std::string token; std::getline(in, token, ' ');) {
    if (token.empty() || signs.empty()) return false;
    const double sign = signs.back();
    signs.pop_back();
    if (token == "+") {
      signs.insert(signs.end(), {sign, sign});
    } else if (token == "UMINUS") {
      signs.push_back(-sign);
    } else if (const std::optional<double> value = number_in(token)) {
      angle.constant += sign * *value;
    } else {
      add_term(angle, token, sign);
    }
  }
  return signs.empty();
}

}  // namespace

LinearAngle::LinearAngle(const structures::Parameter& angle) {
  if (!angle.is_abstract) {
    constant = angle.value;
  } else if (!read_into(*this, angle.expression)) {
    constant = 0;
    coefficients = {{angle.expression, 1.0}};
  }
}

void LinearAngle::add(const LinearAngle& other, double times) {
  constant += times * other.constant;
  for (const auto& [name, coefficient] : other.coefficients) {
    add_term(*this, name, times * coefficient);
  }
}

std::vector<structures::Parameter> LinearAngle::parameters() const {
  if (is_number()) return {constant};
  std::optional<structures::Parameter> sum;
  const auto append = [&](const structures::Parameter& term) {
    sum ? * sum += term : sum.emplace(term);
  };
  for (const auto& [name, coefficient] : coefficients) {
    const structures::Parameter symbol(name);
    const auto terms = std::lround(std::abs(coefficient));
    for (long k = 0; k < terms; ++k) append(coefficient < 0 ? symbol.flip_sign() : symbol);
  }
  if (constant == 0) return {*sum};
  if (number_in(std::to_string(constant)) != constant) return {*sum, constant};
  *sum += structures::Parameter(constant);
  return {*sum};
}

}  // namespace zelt::braidwerk::internal
