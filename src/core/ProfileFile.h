#pragma once

// Profile files: sections of key=value lines. Read as UTF-8, as UTF-16 with a mark, and as GB18030
// where the bytes are no UTF-8; written in the encoding and with the line ends found, UTF-8 and LF
// for new ones. Order, comments, unknown keys and sections stay as they are.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/FileError.h"

namespace velloran {

class ProfileFile {
  public:
    /// Reads a file. A missing file is an empty profile and success. False with the reason in
    /// `error` when it cannot be read or is larger than 16 MiB.
    bool Load(const std::filesystem::path& file, FileError* error = nullptr);

    /// The same from bytes; never fails.
    void Parse(std::string_view bytes);

    /// Writes whole or not at all.
    bool Save(const std::filesystem::path& file, FileError* error = nullptr) const;
    std::string ToBytes() const;

    /// Names as they stand, in file order, each once. Section and key names ignore case.
    std::vector<std::u16string> SectionNames() const;
    bool HasSection(std::u16string_view section) const;
    /// Whether the section holds at least one key.
    bool HasKeys(std::u16string_view section) const;

    std::optional<std::u16string> GetString(std::u16string_view section,
                                            std::u16string_view key) const;
    /// Leading blanks, a sign and decimal digits, or 0x and hexadecimal digits; what follows is
    /// ignored; no digits give 0. An absent key gives `fallback`. Values wrap at 32 bits.
    std::int32_t GetInt(std::u16string_view section, std::u16string_view key,
                        std::int32_t fallback) const;

    void SetString(std::u16string_view section, std::u16string_view key,
                   std::u16string_view value);
    void SetInt(std::u16string_view section, std::u16string_view key, std::int32_t value);
    void DeleteKey(std::u16string_view section, std::u16string_view key);
    /// Removes the section's head and lines.
    void DeleteSection(std::u16string_view section);

  private:
    enum class Encoding { kUtf8, kUtf8Mark, kUtf16Le, kUtf16Be, kGb18030 };

    Encoding encoding_ = Encoding::kUtf8;
    bool crLf_ = false;
    std::vector<std::u16string> lines_;  // without line ends
    bool lastLineOpen_ = false;          // the file did not end in a line end
};

}  // namespace velloran
