#pragma once

// What the verbs of `velloran book` share.

#include <cstddef>
#include <optional>
#include <string>

#include "cli/OptionParser.h"
#include "cli/TerminalAsker.h"
#include "documents/FolderLock.h"
#include "documents/book/BookStore.h"

namespace velloran::cli {

/// A project that a verb works on: read, with the lock of its folder where the verb changes it.
class OpenBook {
 public:
    enum class Use { kRead, kChange };

    OpenBook(const ParsedWords& words, Use use, bool tellsEnd = true);

    /// Reads the project; with `makes` a folder without one gives a fresh list. The status of a
    /// failure that was told; nothing where the project is there.
    std::optional<int> Open(bool makes = false);
    /// Writes it; the status.
    int Save(bool evenEmpty = false);

    /// The row that a word names, from 0; nothing, told, where there is none.
    std::optional<std::size_t> RowOf(const std::string& word) const;

    BookProject project;
    TerminalAsker asker;

 private:
    int Tell(const BookOutcome& outcome) const;
    void WarnOfRows();

    const ParsedWords& words_;
    Use use_;
    FolderLock lock_;
};

int WrongBookUsage(const std::string& text);

// Verbs that run pages.
int RunBookConvert(const ParsedWords& words);
int RunBookPreviewVerb(const ParsedWords& words);

}  // namespace velloran::cli
