#include "cli/NearestWord.h"

#include <algorithm>

#include "text/CommandLabels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

constexpr std::size_t kLongestWord = 64;  // a longer one is no misspelling of ours
constexpr std::size_t kShortestBeginning = 4;

std::u16string Folded(std::string_view word) {
    std::u16string text = ToUtf16(word);
    for (char16_t& unit : text)
        unit = FoldCase(unit);
    return text;
}

std::size_t Distance(const std::u16string& a, const std::u16string& b) {
    // Three rows of the table: row i holds the distances of a's first i letters to b's beginnings.
    std::vector<std::size_t> before(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        last[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t change = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, change});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before.swap(last);
        last.swap(row);
    }
    return last[b.size()];
}

}  // namespace

std::size_t SpellingDistance(std::string_view a, std::string_view b) {
    return Distance(Folded(a), Folded(b));
}

std::string NearestWord(std::string_view word, std::span<const std::string> words) {
    const std::u16string given = Folded(word);
    if (given.empty() || given.size() > kLongestWord)
        return {};
    std::string nearest;
    std::size_t least = std::max<std::size_t>(1, given.size() / 3) + 1;
    for (const std::string& candidate : words) {
        const std::u16string folded = Folded(candidate);
        // A word that is only cut short is near, however much is missing.
        const bool isBeginning = given.size() >= kShortestBeginning && folded.starts_with(given);
        const std::size_t distance = isBeginning ? 1 : Distance(given, folded);
        if (distance < least && distance < given.size()) {
            least = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

std::string Suggestion(std::string_view word, std::span<const std::string> words) {
    const std::string nearest = NearestWord(word, words);
    return nearest.empty() ? std::string() : Phrase(labels::kDidYouMean, {nearest});
}

}  // namespace velloran::cli
