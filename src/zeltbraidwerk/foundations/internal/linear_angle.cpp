#include "zeltbraidwerk/foundations/internal/linear_angle.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <sstream>
#include <string_view>
#include <vector>

namespace zelt::braidwerk::internal {
namespace {

constexpr double cancels = 1e-12;  // of the larger one of two summands

/// Of the whole token; names such as "inf" are no numbers.
std::optional<double> number_in(std::string_view token) {
  if (token.starts_with('+')) token.remove_prefix(1);
  const std::size_t first = token.starts_with('-') ? 1 : 0;
  if (token.find_first_of("0123456789.", first) != first) return std::nullopt;
  double value = 0;
  const char* end = token.data() + token.size();
  const auto [stop, error] = std::from_chars(token.data(), end, value);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

/// The shortest text that reads as the same number.
std::string text_of(double value) {
  std::array<char, 32> text{};
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

void add_term(LinearAngle& angle, const std::string& name, double coefficient) {
  const auto [place, is_new] = angle.coefficients.try_emplace(name, 0);
  const double size = std::max(std::abs(place->second), std::abs(coefficient));
  place->second += coefficient;
  if (std::abs(place->second) <= cancels * size) angle.coefficients.erase(place);
}

void add_operand(LinearAngle& angle, const std::string& token, double sign) {
  if (const std::optional<double> value = number_in(token)) {
    angle.constant += sign * *value;
    return;
  }
  const std::size_t star = token.find('*');
  const std::optional<double> factor =
      star == std::string::npos ? std::nullopt : number_in(std::string_view(token).substr(0, star));
  if (factor && star + 1 < token.size()) {
    add_term(angle, token.substr(star + 1), sign * *factor);
  } else {
    add_term(angle, token, sign);
  }
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
    } else {
      add_operand(angle, token, sign);
    }
  }
  return signs.empty();
}

std::string term_text(const std::string& name, double coefficient) {
  if (coefficient == 1) return name;
  if (coefficient == -1) return "UMINUS " + name;
  return text_of(coefficient) + "*" + name;
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

structures::Parameter LinearAngle::parameter() const {
  if (is_number()) return constant;
  std::vector<std::string> terms;
  for (const auto& [name, coefficient] : coefficients) {
    terms.push_back(term_text(name, coefficient));
  }
  if (constant != 0) terms.push_back(text_of(constant));
  std::string text;
  for (std::size_t k = 0; k + 1 < terms.size(); ++k) text += "+ " + terms[k] + " ";
  return text + terms.back();
}

}  // namespace zelt::braidwerk::internal
