#include "spectrum/bit_index.h"

#include <gtest/gtest.h>

namespace quarvelo::spectrum {
namespace {

TEST(BitIndexTest, IsPowerOf2) {
  for (const std::int64_t x : {2, 4, 8, 1024, 65536, 1 << 30}) EXPECT_TRUE(IsPowerOf2(x)) << x;
  for (const std::int64_t x : {-4, -1, 0, 1, 3, 6, 1000, 65535}) EXPECT_FALSE(IsPowerOf2(x)) << x;
}

TEST(BitIndexTest, LowestBitIndex) {
  const std::pair<std::int64_t, int> cases[] = {
      {1, 0}, {2, 1}, {8, 3}, {12, 2}, {0, 0}, {1 << 19, 19}, {1LL << 32, 32}, {1LL << 33, 0}};
  for (const auto& [x, expected] : cases) EXPECT_EQ(LowestBitIndex(x), expected) << x;
}

TEST(BitIndexTest, ReverseIndexBits) {
  EXPECT_EQ(ReverseIndexBits(1, 3), 4);
  EXPECT_EQ(ReverseIndexBits(6, 3), 3);
  EXPECT_EQ(ReverseIndexBits(5, 0), 0);
  EXPECT_EQ(ReverseIndexBits(0b1011, 2), 0b11);  // only the low bits count
  EXPECT_EQ(ReverseIndexBits(1, 19), 1 << 18);
  // Reversal is its own inverse over the whole range.
  for (int i = 0; i < 1024; ++i) EXPECT_EQ(ReverseIndexBits(ReverseIndexBits(i, 10), 10), i);
}

}  // namespace
}  // namespace quarvelo::spectrum
