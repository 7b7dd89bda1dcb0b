#pragma once

// Words that a user sees, in each language of the program.

#include <string_view>

#include "text/Language.h"

namespace velloran {

/// One text a language. Where a text is wanted it becomes the one of the language in use.
class Label {
 public:
    constexpr Label() = default;
    /// The same in every language: a number, a name.
    constexpr Label(const char16_t* text) : chinese_(text), english_(text) {}
    constexpr Label(const char16_t* chinese, const char16_t* english)
        : chinese_(chinese), english_(english) {}

    constexpr std::u16string_view In(Language language) const {
        return language == Language::kEnglish ? english_ : chinese_;
    }
    std::u16string_view Text() const { return In(LanguageInUse()); }
    operator std::u16string_view() const { return Text(); }
    constexpr bool empty() const { return chinese_.empty(); }

    friend bool operator==(const Label& label, std::u16string_view text) {
        return label.Text() == text;
    }

 private:
    std::u16string_view chinese_, english_;
};

}  // namespace velloran
