#include "zeltbraidwerk/foundations/internal/linear_angle.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/angles.h"

namespace {

using structures::Parameter;
using testing::ElementsAre;
using zelt::braidwerk::internal::LinearAngle;

TEST(LinearAngle, ReadsPrefixNotationAndTakesOtherTextForAName) {
  const struct {
    Parameter angle;
    double constant;
    std::map<std::string, double> coefficients;
  } cases[] = {
      {0.75, 0.75, {}},
      {{"a"}, 0, {{"a", 1}}},
      {{"UMINUS a"}, 0, {{"a", -1}}},
      {{"+ a a"}, 0, {{"a", 2}}},
      {{"+ a UMINUS a"}, 0, {}},
      {{"UMINUS + a UMINUS + 0.250000 b"}, 0.25, {{"a", -1}, {"b", 1}}},
      {{"+ -1.500000 + 0.500000 inf"}, -1, {{"inf", 1}}},
      // No prefix notation: operands are too many, too few, or empty.
      {{"a b"}, 0, {{"a b", 1}}},
      {{"+ 0.5 a b"}, 0, {{"+ 0.5 a b", 1}}},
      {{"+ 0.5"}, 0, {{"+ 0.5", 1}}},
      {{"+ 0.5  a"}, 0, {{"+ 0.5  a", 1}}},
      {{"2*a"}, 0, {{"2*a", 1}}},
      {{""}, 0, {{"", 1}}},
  };
  for (const auto& [angle, constant, coefficients] : cases) {
    const LinearAngle read(angle);
    EXPECT_EQ(read.constant, constant) << angle.expression;
    EXPECT_EQ(read.coefficients, coefficients) << angle.expression;
    EXPECT_EQ(read.is_number(), coefficients.empty());
  }
}

TEST(LinearAngle, AddsTermByTermAndKeepsAllDigits) {
  LinearAngle sum(Parameter("+ a b"));
  sum.add(LinearAngle(Parameter("a")), 1);
  sum.add(LinearAngle(Parameter("b")), -1);
  EXPECT_THAT(sum.parameters(), ElementsAre(Parameter("+ a a")));
  sum.add(LinearAngle(Parameter(0.1234567891)), -1);  // text would cut it after six decimals
  EXPECT_THAT(sum.parameters(), ElementsAre(Parameter("+ a a"), Parameter(-0.1234567891)));
  sum.add(LinearAngle(Parameter(0.1234567891)), 1);
  sum.add(LinearAngle(Parameter(0.25)), 1);
  sum.add(LinearAngle(Parameter("+ c + a a")), -1);
  const std::vector<Parameter> one = sum.parameters();
  ASSERT_EQ(one.size(), 1);
  EXPECT_TRUE(one[0].is_abstract);
  EXPECT_EQ(support::value_of(one[0], {{"c", 7}}), 0.25 - 7);
  sum.add(LinearAngle(Parameter("c")), 1);
  EXPECT_THAT(sum.parameters(), ElementsAre(Parameter(0.25)));
}

}  // namespace
