#include "core/ProcessorForm.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

// Every form that any kernel is compiled for.
#define HWY_WANT_AVX3_DL
#include <hwy/targets.h>

namespace velloran {
namespace {

/// One bit a form; a lower bit is a better form.
using FormBits = std::int64_t;

FormBits FormsOfProcessor() {
    static const FormBits forms = hwy::SupportedTargets() & HWY_TARGETS;
    return forms;
}

FormBits BestOf(FormBits forms) {
    return forms & -forms;
}

FormBits& FormInUse() {
    static FormBits form = BestOf(FormsOfProcessor());
    return form;
}

/// A kernel that lacks the form takes the next plainer one.
void Use(FormBits form) {
    FormInUse() = form;
    hwy::GetChosenTarget().Update(FormsOfProcessor() & ~(form - 1));
}

bool AreSameName(std::string_view a, std::string_view b) {
    const auto upper = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](char x, char y) { return upper(x) == upper(y); });
}

}  // namespace

std::vector<std::string> ProcessorForms() {
    std::vector<std::string> names;
    for (FormBits left = FormsOfProcessor(); left != 0; left &= left - 1)
        names.emplace_back(hwy::TargetName(BestOf(left)));
    std::reverse(names.begin(), names.end());
    return names;
}

std::string ProcessorForm() {
    return hwy::TargetName(FormInUse());
}

int UseProcessorForm(std::string_view name) {
    for (FormBits left = FormsOfProcessor(); left != 0; left &= left - 1)
        if (AreSameName(name, hwy::TargetName(BestOf(left)))) {
            Use(BestOf(left));
            return 1;
        }
    return 0;
}

int UseProcessorFormOfEnvironment() {
    const char* name = std::getenv("VELLORAN_CPU");
    if (name == nullptr || *name == '\0') {
        Use(BestOf(FormsOfProcessor()));
        return 1;
    }
    return UseProcessorForm(name);
}

}  // namespace velloran
