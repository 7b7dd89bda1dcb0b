#include "tone/PixelMapRows.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "core/DibImage.h"
#include "support/EachForm.h"
#include "support/Images.h"
#include "support/Threads.h"

namespace velloran {
namespace {

constexpr std::size_t kGuard = 70;  // more than any register holds
constexpr std::uint8_t kGuardByte = 0xA5;

std::vector<std::uint8_t> RandomBytes(std::size_t count, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<std::uint8_t> bytes(count);
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(random() >> 8);
    return bytes;
}

PixelMap RandomMap(std::uint32_t seed) {
    PixelMap map{};
    const std::vector<std::uint8_t> bytes = RandomBytes(map.size(), seed);
    std::copy(bytes.begin(), bytes.end(), map.begin());
    return map;
}

/// `count` random bytes between guards.
std::vector<std::uint8_t> Guarded(std::size_t count) {
    std::vector<std::uint8_t> bytes(count + 2 * kGuard, kGuardByte);
    const std::vector<std::uint8_t> inner = RandomBytes(count, static_cast<std::uint32_t>(count));
    std::copy(inner.begin(), inner.end(), bytes.begin() + kGuard);
    return bytes;
}

TEST(PixelMapRows, GiveEveryByteItsEntryAtAnyLengthAndTouchNoOther) {
    const PixelMap map = RandomMap(1);
    test::InEachForm([&](const std::string&) {
        for (std::size_t count = 0; count <= 400; ++count) {
            std::vector<std::uint8_t> actual = Guarded(count), expected = actual;
            for (std::size_t i = kGuard; i < kGuard + count; ++i)
                expected[i] = map[expected[i]];
            MapBytes(map, actual.data() + kGuard, count);
            ASSERT_EQ(actual, expected) << count << " bytes";
        }
    });
}

TEST(PixelMapRows, LookUpAllLevels) {
    const PixelMap map = RandomMap(2);
    test::InEachForm([&](const std::string&) {
        PixelMap levels = IdentityPixelMap();
        MapBytes(map, levels.data(), levels.size());
        EXPECT_EQ(levels, map);
    });
}

TEST(PixelMapRows, GiveEveryChannelItsOwnTableAtAnyLength) {
    const ChannelMaps maps{RandomMap(3), RandomMap(4), RandomMap(5)};
    test::InEachForm([&](const std::string&) {
        for (std::size_t pixels = 0; pixels <= 400; ++pixels) {
            std::vector<std::uint8_t> actual = Guarded(pixels * 3), expected = actual;
            for (std::size_t i = 0; i < pixels * 3; ++i)
                expected[kGuard + i] = maps[i % 3][expected[kGuard + i]];
            MapPixels(maps, actual.data() + kGuard, pixels);
            ASSERT_EQ(actual, expected) << pixels << " pixels";
        }
    });
}

TEST(PixelMapRows, AreTheSameWithAnyNumberOfThreads) {
    const PixelMap map = RandomMap(6);
    const ChannelMaps maps{RandomMap(7), RandomMap(8), RandomMap(9)};
    const CDibImage page = test::Noise(301, 167, 24);
    CDibImage one = page, channels = page;
    {
        const test::Threads threads(1);
        MapRows(map, ViewOf(one));
        MapChannelRows(maps, ViewOf(channels));
    }
    for (const int count : {2, 7}) {
        const test::Threads threads(count);
        CDibImage again = page;
        MapRows(map, ViewOf(again));
        test::ExpectSamePixels(again, one);
        again = page;
        MapChannelRows(maps, ViewOf(again));
        test::ExpectSamePixels(again, channels);
    }
}

TEST(PixelMapRows, AnEmptyViewIsLeftAlone) {
    MapRows(RandomMap(1), PlaneView{});
    MapChannelRows({}, PlaneView{});
}

}  // namespace
}  // namespace velloran
