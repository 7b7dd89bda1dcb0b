#include "imageproc/PolynomialLine.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>

namespace velloran::imageproc {
namespace {

TEST(PolynomialLine, DegreeZeroIsTheMean) {
    const std::array<std::uint8_t, 4> samples{10, 20, 30, 41};
    EXPECT_NEAR(PolynomialLine(0, samples.data(), 4, 1).at(0.3), 25.25, 1e-9);
}

TEST(PolynomialLine, ParabolaIsFoundAgain) {
    std::array<std::uint8_t, 11> samples{};
    for (int i = 0; i <= 10; ++i)
        samples[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(200 - (i - 4) * (i - 4));
    const PolynomialLine line(2, samples.data(), 11, 1);
    for (int i = 0; i <= 10; ++i)
        EXPECT_NEAR(line.at(i / 10.0), 200 - (i - 4) * (i - 4), 1e-9);
    std::array<std::uint8_t, 11> out{};
    line.output(out.data(), 11, 1);
    EXPECT_EQ(out, samples);
}

TEST(PolynomialLine, StepWalksAColumnBothForReadingAndWriting) {
    const std::array<std::uint8_t, 6> samples{10, 99, 20, 99, 30, 99};
    std::array<std::uint8_t, 6> out{};
    PolynomialLine(1, samples.data(), 3, 2).output(out.data() + 1, 3, 2);
    EXPECT_EQ(out, (std::array<std::uint8_t, 6>{0, 10, 0, 20, 0, 30}));
}

TEST(PolynomialLine, OutputIsLimitedToBytes) {
    const std::array<std::uint8_t, 4> samples{0, 0, 0, 255};
    std::array<std::uint8_t, 4> out{};
    PolynomialLine(1, samples.data(), 4, 1).output(out.data(), 4, 1);
    // Slope 76.5 around the mean 63.75: -51, 25.5, 102, 178.5.
    EXPECT_EQ(out, (std::array<std::uint8_t, 4>{0, 26, 102, 179}));
}

TEST(PolynomialLine, TooFewSamplesLowerTheDegree) {
    const std::array<std::uint8_t, 2> samples{10, 30};
    EXPECT_NEAR(PolynomialLine(9, samples.data(), 2, 1).at(0.5), 20, 1e-9);
}

TEST(PolynomialLine, InvalidDegreeThrowsItsText) {
    const std::uint8_t sample = 1;
    try {
        PolynomialLine(-1, &sample, 1, 1);
        FAIL();
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "PolynomialLine: degree is invalid");
    }
}

}  // namespace
}  // namespace velloran::imageproc
