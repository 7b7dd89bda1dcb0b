#pragma once

// The parameter block: all that a user can tune about an enhancement, as 134 numbered 32-bit
// integers with the name of the setting that they came from, and the lock under which a worker
// reads them while the user edits. One block is the global one; each open document and each book
// page holds its own.

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>

#include "core/Pipeline.h"
#include "params/Settings.h"

namespace velloran {

class CDibImage;
struct FileError;

/// The ten groups whose labels open lines of the text form and name the parameter tabs.
enum class ParaGroup {
    kBrightness,
    kContrast,
    kHighlight,
    kGamma,
    kCurve,
    kResize,
    kJpegQuality,
    kJp2Rate,
    kCrop,
    kOther,
};

class CParaBlock {
 public:
    static constexpr std::size_t kNameLength = 63;       // UTF-16 units
    static constexpr std::size_t kClipboardBytes = 540;  // a length word and the values

    CParaBlock();
    CParaBlock(const CParaBlock& other);
    CParaBlock& operator=(const CParaBlock& other);
    virtual ~CParaBlock() = default;

    /// A new block with defaults.
    static std::unique_ptr<CParaBlock> CreateBlock();

    std::int32_t GetPara(int index) const;
    void SetPara(int index, std::int32_t value);

    /// Several values read, or written, in one hold of the lock.
    template <std::size_t N>
    std::array<std::int32_t, N> GetGroup(const std::array<ParaIndex, N>& indexes) const {
        const std::lock_guard hold(lock_);
        std::array<std::int32_t, N> group{};
        for (std::size_t i = 0; i < N; ++i)
            group[i] = values_[static_cast<std::size_t>(indexes[i])];
        return group;
    }
    template <std::size_t N>
    void SetGroup(const std::array<ParaIndex, N>& indexes,
                  const std::array<std::int32_t, N>& group) {
        const std::lock_guard hold(lock_);
        for (std::size_t i = 0; i < N; ++i)
            values_[static_cast<std::size_t>(indexes[i])] = group[i];
    }

    /// All values in one hold.
    ParaValues GetValues() const;

    /// Values and name in one hold: what a run is given.
    Settings GetSettings() const;

    std::u16string GetName() const;
    /// Copies at most 63 UTF-16 units.
    void SetName(std::u16string_view name);

    /// Empty name, all defaults.
    void Reset();

    static std::u16string_view GetParaLabel(ParaGroup group);

    /// Takes the name (compared exactly) and all values of `other`. True when no change is noted;
    /// with `ignoreOutputOnly` changes of the ten parameters that alter the written file and not
    /// the pixels are copied and not noted. Locks this block, then the other.
    bool CopyFrom(const CParaBlock& other, bool ignoreOutputOnly);

    /// Copies 134 values, not the name. True when none differed.
    bool AssignValues(std::span<const std::int32_t, kParaCount> values);

    /// All values equal, and the names equal ignoring case.
    bool Equals(const CParaBlock& other) const;

    /// Resets the block, then reads the keys of the section; margins are limited to 0..1000 and
    /// the DPI to 0..8000. False, block at defaults, when the file cannot be read; a section or
    /// key that is absent is no failure. The name stays empty.
    bool ReadFromIni(std::u16string_view section, const std::string& file);

    /// Replaces the section by the values that differ from the defaults. False when the file
    /// cannot be written; it is then as it was.
    bool WriteToIni(std::u16string_view section, const std::string& file,
                    FileError* error = nullptr) const;

    /// 536 as a 32-bit little-endian word, then the values.
    std::array<std::uint8_t, kClipboardBytes> ToClipboard() const;
    /// False, block unchanged, when the payload is short or its first word is not 536; the user is
    /// told labels::kClipboardMismatch.
    bool FromClipboard(std::span<const std::uint8_t> payload);

    /// The crop in one line, as it stands under the batch options.
    std::u16string CropSummary() const;

    /// The whole enhancement of one image, in place, with the values as they stand at its start;
    /// what it finds is written back. With `text` nothing is run: each step appends the description
    /// of its settings instead, and `image` may be null. `cancel` is polled between steps. Without
    /// `label` it is a preview. A step that cannot work passes the image on, and nobody is told:
    /// who wants to know asks for the report of the run (pipeline/Run.h).
    void RunPipeline(CDibImage* image, CancelFunction cancel, void* context,
                     const LabelFunction& label, int stop, std::u16string* text);

    /// The lines before the pipeline's own, then the description of every step that would run.
    std::u16string Describe() const;

 private:
    mutable std::recursive_mutex lock_;
    ParaValues values_{};
    std::u16string name_;
};

/// The block of the viewer and the batch run; some values are read from it on purpose whichever
/// block a run was given.
CParaBlock& GlobalBlock();

}  // namespace velloran
