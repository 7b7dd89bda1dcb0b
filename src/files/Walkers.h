#pragma once

// The walkers that collect: counting files, finding the first, listing.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>

#include "core/StructMng.h"
#include "files/SrchDir.h"

namespace velloran {

/// Counts the files. Pumps messages and honours the owner's stop flag before each; a stopped count
/// is 0.
class CDirCounter : public CSrchDir {
 public:
    void SetUp(std::u16string_view filter, WalkOwner* owner, bool recursive,
               const std::filesystem::path& excluded = {}) override;
    int GetCount() const { return count_; }

 protected:
    void OnFile(const std::filesystem::path& path, const FindData& findData) override;

 private:
    int count_ = 0;
};

/// Finds the first file: of the folder itself before those of its subfolders.
class CDirGetFirst : public CSrchDir {
 public:
    /// Its path, or nothing.
    std::optional<std::filesystem::path> GetFirstFile(const std::filesystem::path& folder,
                                                      std::u16string_view filter, bool recursive,
                                                      const std::filesystem::path& excluded = {});

 protected:
    void OnFile(const std::filesystem::path& path, const FindData& findData) override;

 private:
    std::optional<std::filesystem::path> first_;
};

/// What an order by time or size needs of a file.
struct FileRecord {
    std::int64_t creationTime = 0;  // nanoseconds since 1970; of the last change where unknown
    std::uint64_t size = 0;         // bytes
    int nameIndex = 0;              // in the list of paths
};

/// Lists paths, with records when asked.
class CDirInfo : public CSrchDir {
 public:
    /// Appends to `list` and, when given, to `records`.
    void Collect(const std::filesystem::path& folder, std::u16string_view filter, bool recursive,
                 const std::filesystem::path& excluded, CStrMng& list,
                 CStructMng<FileRecord>* records = nullptr);

 protected:
    void OnFile(const std::filesystem::path& path, const FindData& findData) override;

 private:
    CStrMng* list_ = nullptr;
    CStructMng<FileRecord>* records_ = nullptr;
};

/// Lists the names alone of the files that the owner accepts; all of them without an owner.
class CGetFiles : public CSrchDir {
 public:
    const CStrMng& GetNames() const { return names_; }
    void SetUp(std::u16string_view filter, WalkOwner* owner, bool recursive,
               const std::filesystem::path& excluded = {}) override;

 protected:
    void OnFile(const std::filesystem::path& path, const FindData& findData) override;

 private:
    CStrMng names_;
};

}  // namespace velloran
