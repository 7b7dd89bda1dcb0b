#include "io/ByteSink.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "io/AtomicFile.h"
#include "io/MemorySink.h"
#include "support/TempFolder.h"

namespace velloran {
namespace {

using test::TempFolder;

std::string TextOf(const MemorySink& sink) {
    return {sink.Bytes().begin(), sink.Bytes().end()};
}

/// Both kinds of sink do the same.
void WriteAndGoBack(ByteSink& sink) {
    ASSERT_TRUE(sink.Write("hello, page", 11));
    EXPECT_EQ(sink.Position(), 11U);
    ASSERT_TRUE(sink.Seek(7));
    char text[8] = "";
    EXPECT_EQ(sink.Read(text, 4), 4U);
    EXPECT_STREQ(text, "page");
    EXPECT_EQ(sink.Read(text, 4), 0U);
    ASSERT_TRUE(sink.Seek(0));
    ASSERT_TRUE(sink.Write("H", 1));
    EXPECT_EQ(sink.Size(), 11U);
    ASSERT_TRUE(sink.Seek(13));
    ASSERT_TRUE(sink.Write("!", 1));
    EXPECT_EQ(sink.Size(), 14U);
    EXPECT_FALSE(sink.HasFailed());
}
const std::string kWritten("Hello, page\0\0!", 14);

TEST(ByteSink, MemoryHoldsWhatWasWritten) {
    MemorySink sink;
    WriteAndGoBack(sink);
    EXPECT_EQ(TextOf(sink), kWritten);
}

TEST(ByteSink, AFileHoldsWhatWasWritten) {
    const TempFolder folder;
    AtomicFile file(folder / "a");
    ASSERT_TRUE(file.Open(nullptr));
    WriteAndGoBack(file);
    ASSERT_TRUE(file.Commit(nullptr));
    EXPECT_EQ(test::ReadAll(folder / "a"), kWritten);
}

TEST(ByteSink, FullMemoryIsAFullDisk) {
    MemorySink sink(8);
    EXPECT_TRUE(sink.Write("12345678", 8));
    EXPECT_FALSE(sink.Write("9", 1));
    EXPECT_TRUE(sink.HasFailed());
    ASSERT_TRUE(sink.Seek(0));
    EXPECT_FALSE(sink.Write("1", 1)) << "a failure makes all that follows fail";
    FileError error;
    EXPECT_FALSE(sink.FailWrite(&error));
    EXPECT_EQ(error.cause, FileError::Cause::kStorage);
    EXPECT_EQ(error.reason, FileReason::kNoSpace);
    EXPECT_EQ(TextOf(sink), "12345678");
}

}  // namespace
}  // namespace velloran
