// `velloran book`: a book project, verb by verb.

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "cli/BlockSource.h"
#include "cli/BookVerbs.h"
#include "cli/Causes.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/Json.h"
#include "cli/NearestWord.h"
#include "cli/ParameterOptions.h"
#include "cli/RowList.h"
#include "cli/StopSignal.h"
#include "cli/Verbs.h"
#include "documents/book/BookApply.h"
#include "documents/book/BookConvert.h"
#include "documents/book/BookRows.h"
#include "documents/book/RowName.h"
#include "params/ParaBlock.h"
#include "text/CommandLabels.h"
#include "text/Labels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

namespace fs = std::filesystem;

constexpr std::array<std::u16string_view, 11> kProjectKeys = {
    u"m_strTgt",  u"m_strPrefix", u"m_strPostFix", u"m_iViewType", u"m_iZoom", u"m_bRename",
    u"m_iDigits", u"m_iStart",    u"m_iStep",      u"m_iExt",      u"iCurItem"};

int CountChanges(const ParaValues& values) {
    const ParaValues defaults = DefaultParaValues();
    int count = 0;
    for (std::size_t i = 0; i < values.size(); ++i)
        count += values[i] != defaults[i] ? 1 : 0;
    return count;
}

void PrintRows(const BookProject& project) {
    for (std::size_t i = 0; i < project.rows.size(); ++i) {
        const BookRow& row = project.rows[i];
        const int half = HalfOf(row.values);
        Print(fmt::format("{}\t{}\t{}\t{}\t{}\n", i + 1, OutputName(row.source),
                          OutputName(NameOfText(row.target)),
                          half == 0 ? "-" : std::to_string(half), CountChanges(row.values)));
    }
}

Json RowAsJson(const BookRow& row, std::size_t index, std::optional<std::size_t> partner) {
    const ParaValues defaults = DefaultParaValues();
    Json parameters = Json::Object();
    for (int i = 0; i < kParaCount; ++i)
        if (const auto at = static_cast<std::size_t>(i); row.values[at] != defaults[at])
            parameters.Add(ParaRowOf(i).name, row.values[at]);
    const int half = HalfOf(row.values);
    Json json = Json::Object();
    json.Add("row", index + 1);
    json.Add("source", row.source);
    json.Add("target", NameOfText(row.target));
    json.Add("half", half == 0 ? Json() : Json(half));
    json.Add("partner", partner ? Json(*partner + 1) : Json());
    json.Add("parameters", parameters);
    return json;
}

Json ProjectAsJson(const BookProject& project) {
    const auto partners = FindPartners(project);
    Json rows = Json::Array();
    for (std::size_t i = 0; i < project.rows.size(); ++i)
        rows.Append(RowAsJson(project.rows[i], i, partners[i]));
    Json json = Json::Object();
    json.Add("source", project.source.native());
    json.Add("target", NameOfText(project.target));
    json.Add("prefix", NameOfText(project.prefix));
    json.Add("postfix", NameOfText(project.postfix));
    json.Add("viewType", project.viewType);
    json.Add("zoom", project.zoom);
    json.Add("rename", project.rename);
    json.Add("digits", project.digits);
    json.Add("start", project.start);
    json.Add("step", project.step);
    json.Add("ext", project.ext);
    json.Add("current", project.current);
    json.Add("rows", rows);
    return json;
}

int Show(const OpenBook& book, const ParsedWords& words) {
    if (words.Has(Option::kJson))
        PrintJson(ProjectAsJson(book.project));
    else
        PrintRows(book.project);
    return FinishOutput(kDone);
}

int OpenVerb(const ParsedWords& words) {
    OpenBook book(words, OpenBook::Use::kChange);
    if (const std::optional<int> failed = book.Open(/*makes=*/true))
        return *failed;
    if (const int status = book.Save(); status != kDone)
        return status;
    return Show(book, words);
}

int ShowVerb(const ParsedWords& words) {
    OpenBook book(words, OpenBook::Use::kRead);
    if (const std::optional<int> failed = book.Open())
        return *failed;
    return Show(book, words);
}

/// KEY=VALUE of the project; empty where it was set, else what is wrong.
std::string SetProjectValue(const std::string& text, BookProject& project) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos)
        return Phrase(labels::kNotNameAndValue, {text});
    const std::string key = text.substr(0, equals), value = text.substr(equals + 1);
    const std::optional<ProjectKey> known = FindProjectKey(ToUtf16(key));
    if (!known) {
        std::vector<std::string> names;
        for (const std::u16string_view name : kProjectKeys)
            names.push_back(ToUtf8(name));
        return Phrase(labels::kUnknownProjectKey, {key}) + Suggestion(key, names);
    }
    if (std::u16string* held = TextOf(project, *known)) {
        const std::u16string wanted = TextOfName(value);
        if (!IsOneLine(wanted))
            return Phrase(labels::kBookBadName, {value});
        *held = wanted;
        if (*known == ProjectKey::kTarget && !held->empty())
            return ToUtf8(RefuseTargetFolder(project));
        return ToUtf8(RefuseNameParts(project));
    }
    const std::optional<std::int32_t> number = ParseInt32(value);
    if (!number && !value.empty())
        return Phrase(labels::kNoParameterValue, {key, value});
    BookProject fresh;
    *NumberOf(project, *known) = number.value_or(*NumberOf(fresh, *known));
    return {};
}

/// The rows of --rows; nothing, told, where they are none.
std::optional<std::vector<std::size_t>> RowsOf(const ParsedWords& words,
                                               const BookProject& project) {
    const std::string list = words.Text(Option::kRows).value_or("");
    auto rows = ParseRowList(list, project.rows.size());
    if (!rows)
        PrintError(Phrase(labels::kNoRowList, {cli::RowOf(Option::kRows).name, list,
                                               std::to_string(project.rows.size())}));
    return rows;
}

bool HasParameters(const ParsedWords& words) {
    return words.Has(Option::kSet) || words.Has(Option::kSetting) || words.Has(Option::kNamed) ||
           words.Has(Option::kReset);
}

/// Values of rows. A setting brings all of its values, --set one each.
std::optional<int> SetRows(const ParsedWords& words, OpenBook& book) {
    const auto rows = RowsOf(words, book.project);
    if (!rows || !PrepareGlobalBlock(words))
        return kWrongUsage;
    const bool whole = words.Has(Option::kSetting) || words.Has(Option::kNamed);
    const ParaValues values = GlobalBlock().GetValues();
    const auto partners = FindPartners(book.project);
    std::vector<ParaIndex> single;
    std::string problem;
    for (const std::string& text : words.Texts(Option::kSet))
        single.push_back(static_cast<ParaIndex>(ParseParameterSetting(text, problem)->index));
    for (const std::size_t row : *rows) {
        if (words.Has(Option::kReset))
            ResetRow(book.project, row, AllParaIndexes());
        BookRow& page = book.project.rows[row];
        if (whole)
            TakeValues(values, AllParaIndexes(), GeometryRule::kCopy, page);
        for (const ParaIndex index : single) {
            if (index == PARA_PAGE_SPLIT_TYPE && partners[row]) {
                PrintWarning(Phrase(labels::kKeepsHalf, {std::to_string(row + 1)}));
                continue;
            }
            page.values[static_cast<std::size_t>(index)] = values[static_cast<std::size_t>(index)];
        }
    }
    return std::nullopt;
}

int SetVerb(const ParsedWords& words) {
    if (HasParameters(words) && !words.Has(Option::kRows))
        return WrongBookUsage(Phrase(labels::kMissingOperand, {RowOf(Option::kRows).name}));
    OpenBook book(words, OpenBook::Use::kChange);
    if (const std::optional<int> failed = book.Open())
        return *failed;
    for (const std::string& text : words.Texts(Option::kProjectValue))
        if (const std::string problem = SetProjectValue(text, book.project); !problem.empty())
            return WrongBookUsage(problem);
    if (words.Has(Option::kRows))
        if (const std::optional<int> failed = SetRows(words, book))
            return *failed;
    RebuildTargets(book.project);
    return book.Save();
}

int ApplyVerb(const ParsedWords& words) {
    const std::string what = words.Text(Option::kWhat).value_or(""),
                      to = words.Text(Option::kTo).value_or("");
    const std::string from = words.Text(Option::kFrom).value_or("");
    const std::optional<ParaTab> tab = TabAt(words.Number(Option::kTab).value_or(0));
    for (const Option needed : {Option::kFrom, Option::kWhat, Option::kTo})
        if (!words.Has(needed))
            return WrongBookUsage(Phrase(labels::kMissingOperand, {RowOf(needed).name}));
    if (what != "all" && !tab)
        return WrongBookUsage(Phrase(labels::kMissingOperand, {RowOf(Option::kTab).name}));
    OpenBook book(words, OpenBook::Use::kChange);
    if (const std::optional<int> failed = book.Open())
        return *failed;
    const std::optional<std::size_t> row = book.RowOf(from);
    if (!row)
        return kWrongUsage;
    const ApplyWhat group = what == "all"      ? ApplyWhat::kAll
                            : what == "tab"    ? ApplyWhat::kTab
                            : what == "before" ? ApplyWhat::kBefore
                                               : ApplyWhat::kAfter;
    const ApplyTo reach = to == "all"    ? ApplyTo::kAll
                          : to == "rest" ? ApplyTo::kRest
                                         : ApplyTo::kEverySecond;
    const std::string geometry = words.Text(Option::kGeometry).value_or("auto");
    const GeometryRule rule = geometry == "keep"   ? GeometryRule::kKeep
                              : geometry == "copy" ? GeometryRule::kCopy
                                                   : GeometryRule::kAuto;
    ApplyToRows(book.project, *row, IndexesOf(group, tab.value_or(ParaTab::kPaper)),
                RowsOf(book.project, *row, reach), rule);
    const int status = book.Save();
    if (status == kDone)
        PrintNote(ToUtf8(labels::kBookApplied));
    return status;
}

int SplitVerb(const ParsedWords& words) {
    OpenBook book(words, OpenBook::Use::kChange);
    if (const std::optional<int> failed = book.Open())
        return *failed;
    const auto rows = RowsOf(words, book.project);
    if (!rows)
        return kWrongUsage;
    constexpr int kLeftFirst = 3;
    const int kind = words.Number(Option::kKind).value_or(kLeftFirst);
    for (auto row = rows->rbegin(); row != rows->rend(); ++row)
        if (const RowRefusal refusal = SplitRow(book.project, *row, kind); !refusal.empty())
            return WrongBookUsage(std::to_string(*row + 1) + ": " + ToUtf8(refusal));
    return book.Save();
}

int AddVerb(const ParsedWords& words) {
    OpenBook book(words, OpenBook::Use::kChange);
    if (const std::optional<int> failed = book.Open())
        return *failed;
    std::optional<std::size_t> before = book.project.rows.size();
    if (const std::optional<std::string> row = words.Text(Option::kBefore))
        before = book.RowOf(*row);
    if (!before)
        return kWrongUsage;
    std::vector<fs::path> files;
    for (std::size_t i = 2; i < words.operands.size(); ++i) {
        std::error_code ignored;
        fs::path file = words.operands[i];
        // A name of the source folder, or a path from where the user stands.
        if (!fs::exists(file, ignored) && file.is_relative())
            file = book.project.source / file;
        if (!fs::is_regular_file(file, ignored)) {
            PrintFailure({.path = words.operands[i], .message = labels::kLogRows[12]});
            return kFileFailed;
        }
        files.push_back(std::move(file));
    }
    if (const RowRefusal refusal = AddFilesToBook(book.project, files, *before); !refusal.empty())
        return WrongBookUsage(ToUtf8(refusal));
    return book.Save();
}

/// The command was told what to remove: it is not asked again.
class RemovalAsker : public TerminalAsker {
 public:
    using TerminalAsker::TerminalAsker;
    std::size_t Choose(const Question&) override { return 0; }
};

int RemoveVerb(const ParsedWords& words) {
    OpenBook book(words, OpenBook::Use::kChange);
    if (const std::optional<int> failed = book.Open())
        return *failed;
    const auto rows = RowsOf(words, book.project);
    if (!rows)
        return kWrongUsage;
    RemovalAsker asker(words);
    RemoveRows(book.project, *rows, asker);
    return book.Save(/*evenEmpty=*/true);
}

int MoveVerb(const ParsedWords& words) {
    if (!words.Has(Option::kBefore))
        return WrongBookUsage(Phrase(labels::kMissingOperand, {RowOf(Option::kBefore).name}));
    OpenBook book(words, OpenBook::Use::kChange);
    if (const std::optional<int> failed = book.Open())
        return *failed;
    const std::optional<std::size_t> row = book.RowOf(words.operands[2]);
    const std::optional<std::size_t> before =
        row ? book.RowOf(*words.Text(Option::kBefore)) : std::nullopt;
    if (!before)
        return kWrongUsage;
    if (const RowRefusal refusal = MoveRow(book.project, *row, *before); !refusal.empty())
        return WrongBookUsage(ToUtf8(refusal));
    return book.Save();
}

constexpr Option kShowOptions[] = {Option::kJson};
constexpr Option kSetOptions[] = {Option::kProjectValue, Option::kRows,       Option::kReset,
                                  Option::kSet,          Option::kSetting,    Option::kStore,
                                  Option::kNamed,        Option::kWithoutPage};
constexpr Option kApplyOptions[] = {Option::kFrom, Option::kWhat, Option::kTab, Option::kTo,
                                    Option::kGeometry};
constexpr Option kSplitOptions[] = {Option::kRows, Option::kKind};
constexpr Option kBeforeOnly[] = {Option::kBefore};
constexpr Option kRowsOnly[] = {Option::kRows};
constexpr Option kConvertOptions[] = {Option::kTarget, Option::kYesAll, Option::kJobs,
                                      Option::kLog,    Option::kJson,   Option::kReview};
constexpr Option kPreviewOptions[] = {Option::kTab, Option::kSide};
constexpr std::size_t kAny = static_cast<std::size_t>(-2);

constexpr Verb kVerbs[] = {
    {"open", "SOURCE", 1, 1, kShowOptions, OpenVerb},
    {"show", "SOURCE", 1, 1, kShowOptions, ShowVerb},
    {"set", "SOURCE", 1, 1, kSetOptions, SetVerb},
    {"apply", "SOURCE", 1, 1, kApplyOptions, ApplyVerb},
    {"split", "SOURCE", 1, 1, kSplitOptions, SplitVerb},
    {"add", "SOURCE FILE...", 2, kAny, kBeforeOnly, AddVerb},
    {"remove", "SOURCE", 1, 1, kRowsOnly, RemoveVerb},
    {"move", "SOURCE ROW", 2, 2, kBeforeOnly, MoveVerb},
    {"convert", "SOURCE", 1, 1, kConvertOptions, RunBookConvert},
    {"preview", "SOURCE ROW OUT", 3, 3, kPreviewOptions, RunBookPreviewVerb},
};

}  // namespace

int WrongBookUsage(const std::string& text) {
    PrintError(text);
    return kWrongUsage;
}

OpenBook::OpenBook(const ParsedWords& words, Use use, bool tellsEnd)
    : asker(words, tellsEnd), words_(words), use_(use) {
    CatchStopSignals();
}

std::optional<int> OpenBook::Open(bool makes) {
    const fs::path folder = words_.operands[1];
    if (use_ == Use::kChange && !lock_.Take(folder)) {
        PrintError(Phrase(labels::kFolderInUse, {folder.native()}));
        return kNotWritten;
    }
    const BookOutcome outcome =
        makes ? OpenSourceFolder(folder, project) : LoadProject(folder, project);
    if (outcome.end != BookEnd::kDone)
        return Tell(outcome);
    WarnOfRows();
    return std::nullopt;
}

void OpenBook::WarnOfRows() {
    const std::string file = ProjectFileOf(project.source).native();
    for (const std::u16string& name : project.refused)
        PrintWarning(Phrase(labels::kBookNameRefused, {file, NameOfText(name)}));
    if (use_ == Use::kChange)
        return;  // told when they are lost
    for (const std::string& name : project.missing)
        PrintWarning(Phrase(labels::kBookRowsMissing, {file, name}));
}

int OpenBook::Save(bool evenEmpty) {
    const BookOutcome outcome = SaveProject(project, evenEmpty, asker);
    return outcome.end == BookEnd::kDone ? kDone : Tell(outcome);
}

int OpenBook::Tell(const BookOutcome& outcome) const {
    const bool isFile = outcome.end == BookEnd::kUnreadable || outcome.end == BookEnd::kFailed;
    const fs::path path = isFile ? ProjectFileOf(words_.operands[1]) : fs::path(words_.operands[1]);
    PrintFailure({.path = path.native(),
                  .message = outcome.message,
                  .cause = CauseText(outcome.error.reason),
                  .detail = outcome.error.detail});
    return outcome.end == BookEnd::kFailed ? kNotWritten : kFileFailed;
}

std::optional<std::size_t> OpenBook::RowOf(const std::string& word) const {
    const auto rows = ParseRowList(word, project.rows.size());
    if (rows && rows->size() == 1 && word.find_first_of(",-") == std::string::npos && word != "all")
        return rows->front();
    PrintError(Phrase(labels::kNoRow, {word, std::to_string(project.rows.size())}));
    return std::nullopt;
}

int RunBook(const ParsedWords& words) {
    return RunVerb("book", kVerbs, words);
}

}  // namespace velloran::cli
