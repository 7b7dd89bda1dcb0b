#include "text/Language.h"

#include <atomic>

#include "text/Text.h"

namespace velloran {

namespace {

std::atomic<Language> inUse{Language::kChinese};

}  // namespace

Language LanguageInUse() {
    return inUse.load(std::memory_order_relaxed);
}

void UseLanguage(Language language) {
    inUse.store(language, std::memory_order_relaxed);
}

std::optional<Language> LanguageByCode(std::string_view code) {
    if (EqualIgnoringCase(code, "zh"))
        return Language::kChinese;
    if (EqualIgnoringCase(code, "en"))
        return Language::kEnglish;
    return std::nullopt;
}

}  // namespace velloran
