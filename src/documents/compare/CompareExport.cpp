#include "documents/compare/CompareExport.h"

#include <array>
#include <charconv>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/StepContext.h"
#include "files/ImageFiles.h"
#include "io/AtomicFile.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;
using LevelCounts = std::array<std::array<std::uint64_t, 256>, 3>;

/// Lines of numbers with commas between, into a file that appears at the end.
class NumberLines {
 public:
    explicit NumberLines(const fs::path& file) : file_(file) {}

    bool Open(std::string_view head, FileError* error) {
        if (!file_.Open(error))
            return false;
        text_.append(head).append("\r\n");
        return true;
    }
    void Add(std::uint64_t number) {
        std::array<char, 24> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        if (!isFirst_)
            text_ += ',';
        isFirst_ = false;
        text_.append(digits.data(), end);
    }
    void EndLine() {
        text_ += "\r\n";
        isFirst_ = true;
        if (text_.size() > kChunk)
            Flush();
    }
    bool Commit(FileError* error) {
        Flush();
        return file_.Commit(error);
    }

 private:
    static constexpr std::size_t kChunk = std::size_t{1} << 16;

    void Flush() {
        file_.Write(text_.data(), text_.size());
        text_.clear();
    }

    AtomicFile file_;
    std::string text_;
    bool isFirst_ = true;
};

bool WriteLevels(const LevelCounts& levels, int channels, const fs::path& file, FileError* error) {
    NumberLines lines(file);
    if (!lines.Open(channels == 1 ? "Level,Gray" : "Level,R,G,B", error))
        return false;
    for (std::size_t level = 0; level < 256; ++level) {
        lines.Add(level);
        for (int c = channels; c-- > 0;)
            lines.Add(levels[static_cast<std::size_t>(c)][level]);
        lines.EndLine();
    }
    return lines.Commit(error);
}

}  // namespace

bool ExportPixels(const CDibImage& image1, const CDibImage& image2, bool nonZeroOnly,
                  const fs::path& file, FileError* error) {
    const ConstPlaneView a = TopDownViewOf(image1), b = TopDownViewOf(image2);
    const auto channels = static_cast<std::size_t>(a.channels);
    NumberLines lines(file);
    if (!lines.Open(channels == 1 ? "Y,X,Gray" : "Y,X,R,G,B", error))
        return false;
    const CancelToken cancel = CurrentCancel();
    for (int y = 0; y < a.height; ++y) {
        if (cancel.IsCancelled())
            return FailStorage(error, "stopped");
        const auto rowA = a.Row(y), rowB = b.Row(y);
        for (std::size_t x = 0; x < static_cast<std::size_t>(a.width); ++x) {
            std::array<int, 3> levels{};
            bool differs = false;
            for (std::size_t c = 0; c < channels; ++c) {
                levels[c] = std::abs(rowA[x * channels + c] - rowB[x * channels + c]);
                differs = differs || levels[c] != 0;
            }
            if (nonZeroOnly && !differs)
                continue;
            lines.Add(static_cast<std::uint64_t>(y));
            lines.Add(x);
            for (std::size_t c = channels; c-- > 0;)
                lines.Add(static_cast<std::uint64_t>(levels[c]));
            lines.EndLine();
        }
    }
    return lines.Commit(error);
}

bool ExportLevels(const DiffStats& stats, const fs::path& file, FileError* error) {
    LevelCounts levels = stats.levels;
    for (std::size_t c = 0; c < levels.size(); ++c)
        levels[c][0] = stats.equalSamples[c];
    return WriteLevels(levels, stats.channels, file, error);
}

bool ExportFrequency(const CDibImage& difference, const fs::path& file, FileError* error) {
    const ConstPlaneView view = ViewOf(difference);
    LevelCounts levels{};
    const auto channels = static_cast<std::size_t>(view.channels);
    for (int y = 0; y < view.height; ++y) {
        const auto row = view.Row(y);
        for (std::size_t i = 0; i < row.size(); ++i)
            ++levels[i % channels][row[i]];
    }
    return WriteLevels(levels, view.channels, file, error);
}

fs::path DifferencePath(const fs::path& file) {
    if (HasImageWriter(file))
        return file;
    fs::path named = file;
    named += ".png";
    return named;
}

bool ExportDifference(CDibImage& difference, const fs::path& file, FileError* error) {
    SaveOptions options;
    options.dpi = difference.GetXDpi();
    return SaveImageAs(DifferencePath(file), difference, options, error);
}

}  // namespace velloran
