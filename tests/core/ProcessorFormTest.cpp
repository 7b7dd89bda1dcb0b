#include "core/ProcessorForm.h"

#include <cstdlib>

#include "support/EachForm.h"

namespace velloran::test {
namespace {

/// VELLORAN_CPU for the length of a test, and the form of before afterwards.
class Environment {
 public:
    explicit Environment(const char* name) {
        ::setenv("VELLORAN_CPU", name, 1);
        told_ = UseProcessorFormOfEnvironment();
    }
    ~Environment() {
        ::unsetenv("VELLORAN_CPU");
        UseProcessorForm(before_);
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
    int Told() const { return told_; }

 private:
    std::string before_ = ProcessorForm();
    int told_ = 0;
};

TEST(ProcessorForm, ThePlainFormIsAlwaysThereAndTheBestIsInUse) {
    const std::vector<std::string> forms = ProcessorForms();
    ASSERT_FALSE(forms.empty());
    EXPECT_EQ(forms.front(), "SCALAR");
    EXPECT_EQ(ProcessorForm(), forms.back());
}

TEST(ProcessorForm, EachCanBeUsed) {
    const std::string before = ProcessorForm();
    std::vector<std::string> used;
    InEachForm([&](const std::string& name) {
        EXPECT_EQ(ProcessorForm(), name);
        used.push_back(name);
    });
    EXPECT_EQ(used, ProcessorForms());
    EXPECT_EQ(ProcessorForm(), before);
}

TEST(ProcessorForm, AnUnknownNameChangesNothing) {
    const std::string before = ProcessorForm();
    EXPECT_EQ(UseProcessorForm("PDP11"), 0);
    EXPECT_EQ(UseProcessorForm(""), 0);
    EXPECT_EQ(UseProcessorForm("SCALARS"), 0);
    EXPECT_EQ(ProcessorForm(), before);
}

TEST(ProcessorForm, TheEnvironmentForcesOne) {
    const Environment plain("scalar");
    EXPECT_NE(plain.Told(), 0);
    EXPECT_EQ(ProcessorForm(), "SCALAR");
}

TEST(ProcessorForm, AnEmptyEnvironmentMeansTheBest) {
    UseProcessorForm("SCALAR");
    const Environment none("");
    EXPECT_NE(none.Told(), 0);
    EXPECT_EQ(ProcessorForm(), ProcessorForms().back());
}

TEST(ProcessorForm, AnUnknownNameInTheEnvironmentIsTold) {
    const Environment unknown("Z80");
    EXPECT_EQ(unknown.Told(), 0);
}

}  // namespace
}  // namespace velloran::test
