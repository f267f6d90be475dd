#include "link/reply_text.h"

#include <gtest/gtest.h>

#include <string>

#include "link/register_bits.h"

namespace quarvelo::link {
namespace {

struct CleanCase {
  std::string raw;
  std::string expected;
};

class CleanReplyTest : public testing::TestWithParam<CleanCase> {};

TEST_P(CleanReplyTest, RemovesControlCharactersCutsAndTrims) {
  EXPECT_EQ(CleanReply(GetParam().raw), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Replies, CleanReplyTest,
    testing::Values(CleanCase{"ABC\r\n", "ABC"}, CleanCase{"A\tB\n", "AB"},
                    CleanCase{std::string("X\0Y", 3), "XY"}, CleanCase{"  +1.0E+00 \n", "+1.0E+00"},
                    CleanCase{"\x1f\x01\n", ""}, CleanCase{"   ", ""},
                    CleanCase{"\"label\"\n", "\"label\""},
                    CleanCase{"a b~\x7f\xe9", "a b~\x7f\xe9"},  // code 32 and up is kept
                    // The cut comes before the trim: 256 characters of which the last are blanks.
                    CleanCase{std::string(250, 'a') + std::string(10, ' ') + "tail",
                              std::string(250, 'a')},
                    CleanCase{std::string(300, 'z') + "\n", std::string(256, 'z')}));

struct BitsCase {
  double value;
  int width;
  std::vector<int> set_elements;  // elements expected to be 1
};

class SplitRegisterBitsTest : public testing::TestWithParam<BitsCase> {};

TEST_P(SplitRegisterBitsTest, ElementKIsBitKMinusOne) {
  const BitsCase& c = GetParam();
  std::vector<int> expected(c.width + 1, 0);
  for (int k : c.set_elements) expected[k] = 1;
  EXPECT_EQ(SplitRegisterBits(c.value, c.width), expected) << c.value;
}

INSTANTIATE_TEST_SUITE_P(Registers, SplitRegisterBitsTest,
                         testing::Values(BitsCase{0, 8, {}}, BitsCase{64, 8, {kUserRequestElement}},
                                         BitsCase{255, 8, {1, 2, 3, 4, 5, 6, 7, 8}},
                                         BitsCase{8, 15, {kRunElement}}, BitsCase{40, 15, {4, 6}},
                                         // Bit 15 is beyond the register's 15 bits and is lost.
                                         BitsCase{32768, 15, {}},
                                         BitsCase{32776, 15, {kRunElement}},
                                         // Rounded to the nearest integer, halves to even.
                                         BitsCase{7.6, 8, {4}}, BitsCase{8.5, 8, {4}},
                                         BitsCase{9.5, 8, {2, 4}}, BitsCase{-8, 15, {}},
                                         BitsCase{9.9e37, 15, {}}));

}  // namespace
}  // namespace quarvelo::link
