#include <string>

#include "cli/BlockSource.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "params/ParaBlock.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

std::string WithLineFeeds(const std::u16string& text) {
    std::u16string plain;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] != u'\r' || i + 1 == text.size() || text[i + 1] != u'\n')
            plain += text[i];
    return ToUtf8(plain);
}

}  // namespace

int RunDescribe(const ParsedWords& words) {
    if (!PrepareGlobalBlock(words))
        return kWrongUsage;
    const CParaBlock& block = GlobalBlock();
    Print(words.Has(Option::kCropSummary) ? ToUtf8(block.CropSummary()) + "\n"
                                          : WithLineFeeds(block.Describe()));
    return FinishOutput(kDone);
}

}  // namespace velloran::cli
