#include "io/ByteSource.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "io/FailingSource.h"
#include "io/MemorySource.h"
#include "io/SourceReader.h"
#include "support/FailingAllocator.h"

namespace velloran {
namespace {

using test::FailsFrom;
using test::ScriptedSource;
using test::ShrinksFrom;

std::span<const std::uint8_t> BytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string Pattern(std::size_t size) {
    std::string text(size, 0);
    for (std::size_t i = 0; i < size; ++i)
        text[i] = static_cast<char>(i * 7 + i / 251);
    return text;
}

std::string TextOf(std::span<const std::uint8_t> bytes) {
    return {bytes.begin(), bytes.end()};
}

std::ptrdiff_t Whole(int, std::uint64_t, std::size_t size) {
    return static_cast<std::ptrdiff_t>(size);
}

TEST(ByteSource, ReadsBeyondTheEndComeShortWithoutAFault) {
    MemorySource source(BytesOf("abcdef"));
    std::array<std::uint8_t, 4> bytes{};
    EXPECT_EQ(source.ReadAt(1, bytes), 4U);
    EXPECT_EQ(TextOf(bytes), "bcde");
    EXPECT_EQ(source.ReadAt(4, bytes), 2U);
    EXPECT_EQ(source.ReadAt(6, bytes), 0U);
    EXPECT_EQ(source.ReadAt(UINT64_MAX, bytes), 0U);
    EXPECT_FALSE(source.CameShort());
    EXPECT_TRUE(source.FailWhenUnreadable(nullptr));
}

TEST(ByteSource, PiecesAreJoined) {
    const std::string text = Pattern(1000);
    ScriptedSource source(text, [](int read, std::uint64_t, std::size_t size) -> std::ptrdiff_t {
        if (read % 3 == 1) {
            errno = EINTR;
            return -1;
        }
        return static_cast<std::ptrdiff_t>(std::min<std::size_t>(size, 7));
    });
    const auto all = source.AllBytes(nullptr);
    ASSERT_TRUE(all);
    EXPECT_TRUE(TextOf(*all) == text);
    EXPECT_FALSE(source.CameShort());
}

TEST(ByteSource, AnInputErrorIsToldAndNothingIsReadBehindIt) {
    const std::string text = Pattern(100);
    ScriptedSource source(text, FailsFrom(1));
    std::array<std::uint8_t, 10> bytes{};
    EXPECT_EQ(source.ReadAt(0, bytes), 10U);
    EXPECT_EQ(source.ReadAt(10, bytes), 0U);
    EXPECT_EQ(source.ReadAt(0, bytes), 0U);
    EXPECT_EQ(source.Reads(), 2);
    FileError error;
    EXPECT_FALSE(source.FailWhenUnreadable(&error));
    EXPECT_EQ(error.cause, FileError::Cause::kContent);
    EXPECT_EQ(error.reason, FileReason::kInputOutput);
    EXPECT_EQ(error.detail, "cannot read: Input/output error");
    EXPECT_FALSE(source.AllBytes(nullptr));
}

TEST(ByteSource, ASourceThatShrinksComesShort) {
    const std::string text = Pattern(100);
    ScriptedSource source(text, ShrinksFrom(0, 60));
    const auto all = source.AllBytes(nullptr);
    ASSERT_TRUE(all);
    EXPECT_TRUE(TextOf(*all) == text.substr(0, 60));
    EXPECT_TRUE(source.CameShort());
    ScriptedSource empty(text, ShrinksFrom(0, 0));
    FileError error;
    EXPECT_FALSE(empty.AllBytes(&error));
    EXPECT_EQ(error.reason, FileReason::kEmpty);
}

TEST(ByteSource, AllBytesAreReadOnceAndKept) {
    const std::string text = Pattern(100000);
    ScriptedSource source(text, Whole);
    const auto first = source.AllBytes(nullptr), second = source.AllBytes(nullptr);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->data(), second->data());
    EXPECT_TRUE(TextOf(*second) == text);
    EXPECT_EQ(source.Reads(), 1);
}

TEST(ByteSource, BlocksThatAreKeptHoldNothingOfTheLastSource) {
    const std::string large = Pattern(5000), small = "xyz";
    {
        ScriptedSource source(large, Whole);
        ASSERT_TRUE(source.AllBytes(nullptr));
    }
    ScriptedSource source(small, Whole);
    ASSERT_TRUE(source.AllBytes(nullptr));
    EXPECT_EQ(TextOf(*source.AllBytes(nullptr)), "xyz");
    ScriptedSource second(large, Whole);  // while the block is out
    EXPECT_TRUE(TextOf(*second.AllBytes(nullptr)) == large);
    EXPECT_EQ(TextOf(*source.AllBytes(nullptr)), "xyz");
}

TEST(SourceReader, GivesTheBytesInOrderWhateverTheSource) {
    const std::string text = Pattern(700001);
    MemorySource memory(BytesOf(text));
    ScriptedSource file(text, Whole);
    for (ByteSource* source :
         {static_cast<ByteSource*>(&memory), static_cast<ByteSource*>(&file)}) {
        SourceReader reader(*source);
        std::string read(10, 0);
        ASSERT_EQ(reader.Read(read.data(), 10), 10U);
        EXPECT_EQ(reader.Position(), 10U);
        for (auto part = reader.Take(); !part.empty(); part = reader.Take())
            read += TextOf(part);
        EXPECT_TRUE(read == text);
        EXPECT_EQ(reader.Position(), text.size());
        EXPECT_TRUE(reader.Take().empty());
    }
}

TEST(SourceReader, EndsAtItsLimit) {
    const std::string text = Pattern(100);
    ScriptedSource file(text, Whole);
    SourceReader reader(file, 40);
    std::string read(100, 0);
    EXPECT_EQ(reader.Read(read.data(), 100), 40U);
    EXPECT_TRUE(reader.Take().empty());
    EXPECT_FALSE(file.CameShort());
}

TEST(SourceReader, EndsWhereReadingFails) {
    const std::string text = Pattern(500000);
    for (int n = 0; n < 4; ++n) {
        ScriptedSource file(text, FailsFrom(n));
        SourceReader reader(file);
        std::size_t got = 0;
        for (auto part = reader.Take(); !part.empty(); part = reader.Take())
            got += part.size();
        EXPECT_LT(got, text.size());
        EXPECT_TRUE(file.IsUnreadable());
    }
}

}  // namespace
}  // namespace velloran
