#include "documents/book/BookStore.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "codecs/Formats.h"
#include "documents/Asker.h"
#include "documents/book/BookRows.h"
#include "documents/book/RowName.h"
#include "files/FileCopy.h"
#include "files/Walkers.h"
#include "io/AtomicFile.h"
#include "io/FileSource.h"
#include "text/Labels.h"
#include "text/Phrase.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 28;

BookOutcome Failed(BookEnd end, const Label& message, FileError error = {}) {
    return {end, std::u16string(message), std::move(error)};
}

bool IsFolder(const fs::path& path) {
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

/// The bytes of a file; nothing, with the reason, where they cannot be had. An empty file has none.
std::optional<std::string> BytesOf(const fs::path& file, FileError* error) {
    FileSource source;
    if (!source.Open(file, error)) {
        if (error->reason == FileReason::kEmpty)
            return std::string();
        return std::nullopt;
    }
    if (source.Size() > kMostBytes) {
        FailContent(error, "too large", FileReason::kTooLarge);
        return std::nullopt;
    }
    const auto bytes = source.AllBytes(error);
    if (!bytes || !source.FailWhenUnreadable(error))
        return std::nullopt;
    return std::string(reinterpret_cast<const char*>(bytes->data()), bytes->size());
}

void NameRows(BookProject& project) {
    NameByFiles(project);
    RebuildTargets(project);
}

void ListFolder(BookProject& project) {
    CGetFiles lister;
    lister.SetUp(SourceFilter(0), nullptr, /*recursive=*/false);
    lister.Walk(project.source);
    for (const fs::path& name : lister.GetNames()) {
        if (IsInnerName(TextOfName(name.native())))
            project.rows.push_back({name.native(), {}, DefaultParaValues()});
        else
            project.refused.push_back(TextOfName(name.native()));
    }
    project.current = project.rows.empty() ? -1 : 0;
}

std::string ListOfNames(const std::vector<std::string>& names) {
    constexpr std::size_t kMostNamed = 20;
    std::string list;
    for (std::size_t i = 0; i < names.size() && i < kMostNamed; ++i)
        list += (i == 0 ? "" : ", ") + names[i];
    if (names.size() > kMostNamed)
        list += ", ...";
    return list;
}

}  // namespace

fs::path ProjectFileOf(const fs::path& folder) {
    return folder / kProjectFileName;
}

BookOutcome LoadProject(const fs::path& folder, BookProject& project) {
    if (!IsFolder(folder))
        return Failed(BookEnd::kNoFolder, labels::kBookSourceGone);
    struct stat status {};
    if (::stat(ProjectFileOf(folder).c_str(), &status) != 0 && errno == ENOENT)
        return Failed(BookEnd::kNoProject, labels::kBookNoProject);
    FileError error;
    const std::optional<std::string> bytes = BytesOf(ProjectFileOf(folder), &error);
    if (!bytes)
        return Failed(BookEnd::kUnreadable, labels::kBookUnreadable, std::move(error));
    const int root = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    std::optional<BookProject> parsed =
        ParseProject(*bytes, folder, [root](const std::string& name) {
            struct stat file {};
            return ::fstatat(root, name.c_str(), &file, 0) == 0 && S_ISREG(file.st_mode);
        });
    ::close(root);
    if (!parsed) {
        FailContent(&error, "no line [Project]", FileReason::kDamaged);
        return Failed(BookEnd::kUnreadable, labels::kBookUnreadable, std::move(error));
    }
    project = std::move(*parsed);
    NameRows(project);
    return {};
}

BookOutcome OpenSourceFolder(const fs::path& folder, BookProject& project) {
    BookOutcome outcome = LoadProject(folder, project);
    if (outcome.end != BookEnd::kNoProject)
        return outcome;
    project = {};
    project.source = folder;
    ListFolder(project);
    NameRows(project);
    return {};
}

BookOutcome SaveProject(BookProject& project, bool evenEmpty, Asker& asker) {
    if (project.rows.empty() && !evenEmpty)
        return {};
    if (project.source.empty())
        return Failed(BookEnd::kNoFolder, labels::kBookSourceEmpty);
    if (!IsFolder(project.source))
        return Failed(BookEnd::kNoFolder, labels::kBookSourceGone);
    const fs::path file = ProjectFileOf(project.source);
    const std::string bytes = ProjectBytes(project);
    FileError error;
    const std::optional<std::string> before = BytesOf(file, &error);
    if (before == bytes)
        return {};
    if (!project.missing.empty())
        asker.Warn(Phrase(labels::kBookRowsLost, {file.native(), ListOfNames(project.missing)}));
    error = {};
    fs::path kept = file;
    kept += "~";
    if (before && !CopyFileWhole(file, kept, &error))
        return Failed(BookEnd::kFailed, labels::kBookNotWritten, std::move(error));
    AtomicFile out(file);
    if (!out.Open(&error))
        return Failed(BookEnd::kFailed, labels::kBookNotWritten, std::move(error));
    out.Write(bytes.data(), bytes.size());
    if (!out.Commit(&error))
        return Failed(BookEnd::kFailed, labels::kBookNotWritten, std::move(error));
    project.missing.clear();
    return {};
}

}  // namespace velloran
