// Kernels are chosen in one way, and pixels are the same on every processor.

#include <gtest/gtest.h>

#include <regex>
#include <set>

#include "architecture/SourceTree.h"

namespace velloran::test {
namespace {

std::string WithoutComment(const std::string& line) {
    return line.substr(0, line.find("//"));
}

/// What names instructions, or chooses by them, past Highway.
bool GoesPastDispatch(const std::string& line) {
    static const std::regex past(
        "target_clones|intrin\\.h|arm_neon\\.h|__builtin_cpu_supports|__builtin_ia32|"
        "gnu::target|__attribute__\\(\\(target|\\b_mm(256|512)?_|-march=|-mavx|ffast-math");
    return std::regex_search(WithoutComment(line), past);
}

/// Functions of the C library whose last bit may vary. Roots, rounding and scaling by powers of two
/// are exact, and free to all.
bool CallsInexactMath(const std::string& line) {
    static const std::regex inexact(
        "(^|[^A-Za-z0-9_.>:]|std::)"
        "(exp2?|exp10|expm1|log(2|10|1p)?|pow|sin|cos|tan|sincos|asin|acos|atan2?|sinh|cosh|tanh|"
        "asinh|acosh|atanh|cbrt|hypot|polar|erfc?|[lt]gamma)[fl]? ?\\(");
    return std::regex_search(WithoutComment(line), inexact);
}

/// Folders that no pixel is worked on in.
const std::set<std::string> kNoPixels = {"io", "text", "params", "files", "batch", "cli", "app"};

std::vector<std::string> Faults(const SourceFile& file) {
    std::vector<std::string> faults;
    for (const std::string& line : file.lines)
        if (GoesPastDispatch(line) || (!kNoPixels.contains(file.folder) && CallsInexactMath(line)))
            faults.push_back(file.name + ": " + line);
    return faults;
}

TEST(Processors, HighwayAloneChoosesAndNoMathIsInexact) {
    const std::vector<SourceFile> files = ReadSourceTree();
    EXPECT_GT(files.size(), 100U);
    for (const SourceFile& file : files)
        for (const std::string& fault : Faults(file))
            ADD_FAILURE() << fault;
    for (const SourceFile& file : ReadBuildFiles())
        for (const std::string& line : file.lines)
            EXPECT_FALSE(GoesPastDispatch(line)) << file.name << ": " << line;
}

TEST(Processors, EachWayPastTheRulesIsFound) {
    const auto isFound = [](const char* folder, const char* line) {
        return !Faults({folder, "X.cpp", {line}}).empty();
    };
    for (const char* line :
         {"#include <immintrin.h>", "#include <x86intrin.h>",
          "__attribute__((target_clones(\"avx2\", \"default\")))",
          "[[gnu::target(\"avx2\")]] void F();", "if (__builtin_cpu_supports(\"avx2\"))",
          "const auto a = _mm256_setzero_si256();"})
        EXPECT_TRUE(isFound("cli", line)) << line;
    for (const char* line : {"x = std::exp(y);", "x = pow(y, 2);", "x = -std::log(y);",
                             "return std::atan2(y, x);", "x = expf(y);", "x = std::hypot(x, y);"}) {
        EXPECT_TRUE(isFound("tone", line)) << line;
        EXPECT_FALSE(isFound("cli", line)) << line;
    }
    for (const char* line : {"x = Exp(y);", "x = std::sqrt(y);", "// std::exp(y) would not do",
                             "job.log(x);", "x = std::floor(y);", "x = LogOfPositive(y);"})
        EXPECT_FALSE(isFound("tone", line)) << line;
}

}  // namespace
}  // namespace velloran::test
