#include "core/StructMng.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

namespace velloran {
namespace {

TEST(StructMng, IsAddressedFromOne) {
    CStructMng<int> numbers;
    EXPECT_EQ(numbers.GetCount(), 0);
    EXPECT_EQ(numbers.Add(70), 1);
    EXPECT_EQ(numbers.Add(80), 2);
    EXPECT_EQ(numbers.Get(1), 70);
    EXPECT_EQ(numbers.Get(2), 80);
}

TEST(StructMng, IndexZeroIsNoEntry) {
    CStructMng<int> numbers;
    numbers.Add(7);
    EXPECT_FALSE(numbers.IsIndex(0));
    EXPECT_TRUE(numbers.IsIndex(1));
    EXPECT_FALSE(numbers.IsIndex(2));
    EXPECT_FALSE(numbers.IsIndex(-1));
    EXPECT_THROW(numbers.Get(0), std::out_of_range);
    EXPECT_THROW(numbers.Get(2), std::out_of_range);
    EXPECT_THROW(std::as_const(numbers).Get(-1), std::out_of_range);
}

TEST(StructMng, InsertAndDeleteMoveThoseBehind) {
    CStructMng<int> numbers;
    EXPECT_TRUE(numbers.Insert(1, 20));
    EXPECT_TRUE(numbers.Insert(1, 10));
    EXPECT_TRUE(numbers.Insert(3, 30));
    EXPECT_FALSE(numbers.Insert(5, 99));
    EXPECT_FALSE(numbers.Insert(0, 99));
    EXPECT_TRUE(numbers.Delete(2));
    EXPECT_FALSE(numbers.Delete(3));
    EXPECT_FALSE(numbers.Delete(0));
    ASSERT_EQ(numbers.GetCount(), 2);
    EXPECT_EQ(numbers.Get(1), 10);
    EXPECT_EQ(numbers.Get(2), 30);
    numbers.Clear();
    EXPECT_EQ(numbers.GetCount(), 0);
}

TEST(StructMng, SortKeepsTheOrderOfEqualRecords) {
    CStructMng<std::pair<int, char>> records;
    for (const auto& record : {std::pair{2, 'a'}, {1, 'b'}, {2, 'c'}, {1, 'd'}})
        records.Add(record);
    records.Sort([](const auto& a, const auto& b) { return a.first < b.first; });
    std::string letters;
    for (const auto& record : records)
        letters += record.second;
    EXPECT_EQ(letters, "bdac");
}

TEST(StructMng, FindGivesTheFirstIndexAndZeroForNone) {
    CStrMng names;
    names.Add("a.jpg");
    names.Add("b\xFF.jpg");  // no text, a name all the same
    names.Add("b\xFF.jpg");
    EXPECT_EQ(names.Find("b\xFF.jpg"), 2);
    EXPECT_EQ(names.Find("c.jpg"), 0);
}

}  // namespace
}  // namespace velloran
