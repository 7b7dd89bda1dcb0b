#pragma once

// The words on sample pages.

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "samples/Random.h"

namespace velloran::samples {

enum class Language { kLatin, kChinese };

/// Short texts in random order; none comes again before all of its pile have come.
class TextPile {
 public:
    /// The sentences of a language.
    static TextPile Sentences(Language language, Random& random);
    /// What people in a comic say, in Chinese.
    static TextPile Speech(Random& random);

    std::u16string_view Next();
    /// Several, parted by spaces where the language does so.
    std::u16string Paragraph(int sentences);

 private:
    TextPile(std::span<const std::u16string_view> texts, bool spaced, Random& random);

    std::vector<std::u16string_view> texts_;
    bool spaced_;
    Random random_;
    std::size_t next_ = 0;
};

std::u16string Title(Language language, Random& random);
/// A sound, for large letters.
std::u16string Sound(Random& random);
/// Row and column names and values of a table; row 0 and column 0 hold names.
std::u16string TableCell(int row, int column, Random& random);

}  // namespace velloran::samples
