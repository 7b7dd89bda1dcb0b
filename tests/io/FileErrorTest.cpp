#include "io/FileError.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace velloran {
namespace {

TEST(FileError, TheFirstCauseStays) {
    FileError error;
    EXPECT_FALSE(FailDamaged(&error, "cut"));
    EXPECT_FALSE(FailStorage(&error, "full", FileReason::kNoSpace));
    EXPECT_EQ(error.cause, FileError::Cause::kContent);
    EXPECT_EQ(error.reason, FileReason::kDamaged);
    EXPECT_EQ(error.detail, "cut");
    EXPECT_FALSE(FailStorage(nullptr, "nobody asks"));
}

TEST(FileError, ASystemErrorGivesItsTextAndItsReason) {
    FileError error;
    errno = ENOSPC;
    FailErrno(&error, "cannot write");
    EXPECT_EQ(error.cause, FileError::Cause::kStorage);
    EXPECT_EQ(error.reason, FileReason::kNoSpace);
    EXPECT_EQ(error.detail, "cannot write: No space left on device");
    FileError read;
    errno = EACCES;
    FailReadErrno(&read, "cannot read");
    EXPECT_EQ(read.cause, FileError::Cause::kContent);
    EXPECT_EQ(read.reason, FileReason::kNoPermission);
}

struct ErrnoCase {
    int code;
    FileReason reason;
};
constexpr ErrnoCase kErrnoCases[] = {
    {ENOSPC, FileReason::kNoSpace},      {EDQUOT, FileReason::kNoSpace},
    {EFBIG, FileReason::kNoSpace},       {EACCES, FileReason::kNoPermission},
    {EROFS, FileReason::kNoPermission},  {ENOENT, FileReason::kNoSuchFile},
    {ENOTDIR, FileReason::kNoSuchFile},  {EISDIR, FileReason::kIsFolder},
    {EMFILE, FileReason::kTooManyFiles}, {ENAMETOOLONG, FileReason::kNameTooLong},
    {ENOMEM, FileReason::kNoMemory},     {EIO, FileReason::kInputOutput},
    {ESTALE, FileReason::kInputOutput},  {EINVAL, FileReason::kUnknown},
};

TEST(FileError, EachNumberOfTheSystemHasItsReason) {
    for (const ErrnoCase& c : kErrnoCases)
        EXPECT_EQ(ReasonOfErrno(c.code), c.reason) << c.code;
}

TEST(FileError, WantOfMemoryMayEndWithAnotherTry) {
    FileError error;
    FailNoMemory(&error);
    EXPECT_EQ(error.cause, FileError::Cause::kStorage);
    EXPECT_EQ(error.reason, FileReason::kNoMemory);
}

}  // namespace
}  // namespace velloran
