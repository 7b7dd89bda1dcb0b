#pragma once

// The language that the program speaks: one at a time for the whole process, Chinese unless asked.

#include <optional>
#include <string_view>

namespace velloran {

enum class Language { kChinese, kEnglish };

Language LanguageInUse();

/// For the start of a program; texts that were already taken keep their language.
void UseLanguage(Language language);

/// "zh" and "en", in either case.
std::optional<Language> LanguageByCode(std::string_view code);

}  // namespace velloran
