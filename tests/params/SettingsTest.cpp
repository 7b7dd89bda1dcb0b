#include "params/Settings.h"

#include <gtest/gtest.h>

#include <set>

#include "params/ParaBlock.h"

namespace velloran {
namespace {

TEST(Settings, BeginWithTheDefaultsAndNoName) {
    const Settings settings;
    EXPECT_EQ(settings[PARA_CONTRAST], 100);
    EXPECT_EQ(settings[PARA_LEVELS_LIGHT], -1);
    EXPECT_EQ(settings.values, CParaBlock().GetValues());
    EXPECT_TRUE(settings.name.empty());
}

TEST(Settings, OfABlockStayAsTheyWereTaken) {
    CParaBlock block;
    block.SetName(u"扫描");
    block.SetPara(PARA_GAMMA, 120);
    const Settings settings = block.GetSettings();
    block.SetPara(PARA_GAMMA, 130);
    block.SetName(u"");
    EXPECT_EQ(settings[PARA_GAMMA], 120);
    EXPECT_EQ(settings.name, u"扫描");
}

TEST(Settings, EqualOnesHaveEqualHashes) {
    Settings one, other;
    one.Set(PARA_DPI, 600);
    EXPECT_NE(one, other);
    other.Set(PARA_DPI, 600);
    EXPECT_EQ(one, other);
    EXPECT_EQ(one.Hash(), other.Hash());
}

TEST(Settings, EveryValueAndTheNameCountInTheHash) {
    std::set<std::uint64_t> hashes = {Settings().Hash()};
    for (int index = 0; index < kParaCount; ++index) {
        Settings settings;
        settings.Set(static_cast<ParaIndex>(index), 7777);
        hashes.insert(settings.Hash());
        settings.Set(static_cast<ParaIndex>(index), -7777);
        hashes.insert(settings.Hash());
    }
    Settings named;
    named.name = u"a";
    hashes.insert(named.Hash());
    EXPECT_EQ(hashes.size(), 2U + 2 * kParaCount);
}

TEST(Settings, TheHashIsThatOfThePublishedFunction) {
    // FNV-1a of 64 bits, byte by byte: the values in little-endian order, then the name's units.
    Settings settings;
    settings.name = u"\x6f22";
    std::uint64_t hash = 14695981039346656037U;
    const auto add = [&](unsigned byte) { hash = (hash ^ byte) * 1099511628211U; };
    for (const std::int32_t value : settings.values)
        for (int shift = 0; shift < 32; shift += 8)
            add(static_cast<std::uint32_t>(value) >> shift & 255);
    add(0x22);
    add(0x6f);
    EXPECT_EQ(settings.Hash(), hash);
}

}  // namespace
}  // namespace velloran
