#include "cli/ToolOptions.h"

#include <optional>
#include <vector>

#include "cli/Console.h"
#include "cli/NearestWord.h"
#include "cli/OptionParser.h"
#include "documents/measure/FileTypes.h"
#include "documents/measure/FolderWalk.h"
#include "files/ProgramPlaces.h"
#include "text/CommandLabels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran::cli {

bool FillWalk(const ParsedWords& words, const std::string& folder,
              std::span<const ToolFileType> types, FolderWalk& walk) {
    walk.folder = folder;
    walk.recursive = !words.Has(Option::kNoRecurse);
    const std::optional<std::string> list = words.Text(Option::kTypes);
    if (!list) {
        walk.filter = FilterOfAll(types);
        return true;
    }
    std::string wrong;
    const std::optional<std::u16string> filter = FilterOfWords(types, *list, wrong);
    if (filter) {
        walk.filter = *filter;
        return true;
    }
    std::vector<std::string> known;
    std::string all;
    for (const ToolFileType& type : types) {
        known.emplace_back(type.word);
        all.append(all.empty() ? "" : ", ").append(type.word);
    }
    PrintError(Phrase(labels::kNoneOfWords, {RowOf(Option::kTypes).name, wrong, all}) +
               Suggestion(wrong, known));
    return false;
}

std::filesystem::path LogOf(const ParsedWords& words) {
    if (const std::optional<std::string> file = words.Text(Option::kLog))
        return *file;
    std::filesystem::path own = FindProgramPlaces().log;
    MakeFolderOf(own);
    return own;
}

std::string WithLineFeeds(std::u16string_view text) {
    std::u16string plain;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] != u'\r' || i + 1 == text.size() || text[i + 1] != u'\n')
            plain += text[i];
    if (!plain.empty() && plain.back() != u'\n')
        plain += u'\n';
    return ToUtf8(plain);
}

}  // namespace velloran::cli
