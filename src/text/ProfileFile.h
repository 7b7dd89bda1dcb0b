#pragma once

// The text of profile files: sections of key=value lines. Read as UTF-8, as UTF-16 with a mark, and
// as GB18030 where the bytes are no UTF-8; written in the encoding and with the line ends found,
// UTF-8 and LF for new ones. Every line that is not asked to change stays as it is, byte for byte:
// comments, blank lines, unknown keys and sections, and what is no profile text at all.
//
// A line that begins with ; or # is a comment. Blanks around section names, keys and values do not
// count, nor do quotation marks around a whole value. Where a name stands twice the first key wins
// and sections of one name count as one. Keys before the first section belong to none.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "text/TextEncoding.h"

namespace velloran {

class ProfileFile {
 public:
    using KeyAndValue = std::pair<std::u16string, std::u16string>;

    /// Larger files, and files of more lines, are refused by LoadProfile.
    static constexpr std::size_t kMaxBytes = std::size_t{16} << 20;
    static constexpr std::size_t kMaxLines = std::size_t{1} << 20;

    /// Takes what the bytes of a file say; never fails. Lines beyond kMaxLines are kept and not
    /// read.
    void Parse(std::string_view bytes);
    std::string ToBytes() const;

    /// Of lines read, and of those beyond kMaxLines one for all.
    std::size_t LineCount() const { return lines_.size(); }

    /// Names as they stand, in file order, each once. Section and key names ignore case.
    std::vector<std::u16string> SectionNames() const;
    bool HasSection(std::u16string_view section) const;
    /// Whether the section holds at least one key.
    bool HasKeys(std::u16string_view section) const;

    /// Names of the section's keys as they stand, in file order, each once.
    std::vector<std::u16string> KeyNames(std::u16string_view section) const;

    std::optional<std::u16string> GetString(std::u16string_view section,
                                            std::u16string_view key) const;
    /// Leading blanks, a sign and decimal digits, or 0x and hexadecimal digits; what follows is
    /// ignored; a text without digits gives 0. An absent key and an empty value give `fallback`.
    /// Values wrap at 32 bits.
    std::int32_t GetInt(std::u16string_view section, std::u16string_view key,
                        std::int32_t fallback) const;

    /// Changes the value where the key stands, or adds the key behind the section's last one, or
    /// the section at the file's end. Line ends in a name or value become blanks. What could not
    /// be read back as a key (empty, with = inside, beginning like a comment or a section) is not
    /// written.
    void SetString(std::u16string_view section, std::u16string_view key, std::u16string_view value);
    void SetInt(std::u16string_view section, std::u16string_view key, std::int32_t value);
    void DeleteKey(std::u16string_view section, std::u16string_view key);
    /// Removes the section's head and lines. Comments directly above the next section's head
    /// belong to that one and stay.
    void DeleteSection(std::u16string_view section);
    /// Deletes the section and writes it anew with these keys, in the place where it stood. With
    /// no keys nothing is written, not even the head.
    void ReplaceSection(std::u16string_view section, std::span<const KeyAndValue> keys);

 private:
    enum class LineKind { kBlank, kComment, kHead, kKey, kOther };
    struct Line {
        LineKind kind = LineKind::kOther;
        std::string bytes;     // as in the file, with the line end
        std::u16string name;   // of a head: the section; of a key: the key
        std::u16string value;  // of a key
    };

    Line ReadLine(std::string_view bytes, std::size_t endLength) const;
    Line NewLine(std::u16string_view text) const;
    std::optional<std::size_t> FindHead(std::u16string_view section) const;
    std::optional<std::size_t> FindKey(std::u16string_view section, std::u16string_view key) const;
    std::size_t EndOfSection(std::size_t head) const;
    void ChangeValue(Line& line, std::u16string_view value) const;
    void InsertLine(std::size_t position, std::u16string_view text);
    std::size_t AppendHead(std::u16string_view section);

    TextEncoding encoding_ = TextEncoding::kUtf8;
    std::u16string lineEnd_ = u"\n";
    std::vector<Line> lines_;
};

}  // namespace velloran
