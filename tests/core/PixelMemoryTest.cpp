#include "core/PixelMemory.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <thread>
#include <vector>

#include "core/BaseImage.h"
#include "support/FailingAllocator.h"
#include "support/Sanitized.h"

namespace velloran {
namespace {

constexpr std::size_t kMegabyte = std::size_t{1} << 20;

// The sanitizers must see each block freed.
constexpr bool kBlocksAreKept = !test::kSanitized;

TEST(PixelMemory, BlocksAreWritableToTheLastByteAndAligned) {
    for (std::size_t bytes :
         {std::size_t{0}, std::size_t{1}, std::size_t{63}, std::size_t{4097}, 2 * kMegabyte - 65,
          2 * kMegabyte - 64, 2 * kMegabyte, 5 * kMegabyte + 7}) {
        void* block = AllocatePixels(bytes);
        ASSERT_NE(block, nullptr) << bytes;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 64, 0u) << bytes;
        std::memset(block, 0xAB, bytes);
        FreePixels(block);
    }
    FreePixels(nullptr);
}

TEST(PixelMemory, AnAbsurdSizeIsRefused) {
    EXPECT_EQ(AllocatePixels(std::numeric_limits<std::size_t>::max()), nullptr);
    EXPECT_EQ(AllocatePixels(std::numeric_limits<std::size_t>::max() - 64), nullptr);
    EXPECT_THROW(MakePixelBuffer(std::numeric_limits<std::size_t>::max()), std::bad_alloc);
}

TEST(PixelMemory, LargeBlockIsKeptForOneOfNearlyItsSize) {
    if (!kBlocksAreKept)
        GTEST_SKIP() << "kept blocks are off under the sanitizers";
    ReleaseKeptPixels();
    void* block = AllocatePixels(20 * kMegabyte);
    FreePixels(block);
    void* tooLarge = AllocatePixels(30 * kMegabyte);
    EXPECT_NE(tooLarge, block);
    void* tooSmall = AllocatePixels(15 * kMegabyte);
    EXPECT_NE(tooSmall, block) << "more than a quarter would be wasted";
    void* fitting = AllocatePixels(19 * kMegabyte);
    EXPECT_EQ(fitting, block);
    for (void* each : {tooLarge, tooSmall, fitting})
        FreePixels(each);
    ReleaseKeptPixels();
}

TEST(PixelMemory, OnlyTwoBlocksAreKept) {
    if (!kBlocksAreKept)
        GTEST_SKIP() << "kept blocks are off under the sanitizers";
    ReleaseKeptPixels();
    std::vector<void*> blocks;
    for (int i = 0; i < 4; ++i)
        blocks.push_back(AllocatePixels(4 * kMegabyte));
    for (void* block : blocks)
        FreePixels(block);
    int served = 0;
    {
        const test::FailAllocation fail(1);  // so only kept blocks can be served
        for (int i = 0; i < 4; ++i) {
            blocks[static_cast<std::size_t>(i)] = AllocatePixels(4 * kMegabyte);
            served += blocks[static_cast<std::size_t>(i)] != nullptr;
        }
    }
    EXPECT_EQ(served, 2);
    for (void* block : blocks)
        FreePixels(block);
    ReleaseKeptPixels();
}

TEST(PixelMemory, SmallAndReleasedBlocksAreNotServedAgain) {
    FreePixels(AllocatePixels(4 * kMegabyte));
    FreePixels(AllocatePixels(1000));
    ReleaseKeptPixels();
    const test::FailAllocation fail(1);
    EXPECT_EQ(AllocatePixels(4 * kMegabyte), nullptr);
    EXPECT_EQ(AllocatePixels(1000), nullptr);
}

TEST(PixelMemory, KeptBlocksGiveWayWhenMemoryRunsOut) {
    ReleaseKeptPixels();
    FreePixels(AllocatePixels(4 * kMegabyte));
    void* block;
    {
        const test::FailAllocation fail(1, /*onlyOne=*/true);
        block = AllocatePixels(64 * kMegabyte);
    }
    EXPECT_NE(block, nullptr) << "the second try succeeds";
    FreePixels(block);
    ReleaseKeptPixels();
}

TEST(PixelMemory, AnotherThreadMayFreeABlock) {
    for (std::size_t bytes : {std::size_t{100}, 8 * kMegabyte}) {
        void* block = AllocatePixels(bytes);
        std::memset(block, 1, bytes);
        std::thread([block] { FreePixels(block); }).join();  // and gives it back at its end
    }
}

TEST(PixelMemory, CreatingPageAfterPageFaultsNoMemoryIn) {
    if (!kBlocksAreKept)
        GTEST_SKIP() << "kept blocks are off under the sanitizers";
    const auto page = [] {
        CBaseImage image;
        ASSERT_NE(image.Create(2480, 3508, 24), nullptr);
        image.Clear(255);
    };
    const auto faults = [] {
        rusage usage{};
        getrusage(RUSAGE_THREAD, &usage);
        return usage.ru_minflt;
    };
    page();
    const long before = faults();
    for (int i = 0; i < 20; ++i)
        page();
    EXPECT_LT(faults() - before, 20) << "a page has 6371 of 4 KiB";
    ReleaseKeptPixels();
}

}  // namespace
}  // namespace velloran
