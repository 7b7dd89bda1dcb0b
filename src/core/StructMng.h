#pragma once

// Growing arrays addressed from 1: records that walkers collect and tools list. Index 0 is no
// entry, so that it can stand for "none".

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <utility>
#include <vector>

namespace velloran {

template <typename Record>
class CStructMng {
 public:
    int GetCount() const { return static_cast<int>(records_.size()); }
    bool IsIndex(int index) const { return index >= 1 && index <= GetCount(); }

    /// Appends and returns the new record's index, which is the count.
    int Add(Record record) {
        records_.push_back(std::move(record));
        return GetCount();
    }

    /// 1 <= index <= GetCount(); another index throws std::out_of_range.
    Record& Get(int index) { return records_.at(static_cast<std::size_t>(index) - 1); }
    const Record& Get(int index) const { return records_.at(static_cast<std::size_t>(index) - 1); }

    /// Puts a record before the one at `index`; GetCount() + 1 appends. False for another index.
    bool Insert(int index, Record record) {
        if (index < 1 || index > GetCount() + 1)
            return false;
        records_.insert(records_.begin() + (index - 1), std::move(record));
        return true;
    }

    /// Those behind move down by one. False for an index that is none.
    bool Delete(int index) {
        if (!IsIndex(index))
            return false;
        records_.erase(records_.begin() + (index - 1));
        return true;
    }

    void Clear() { records_.clear(); }

    /// Records that `less` holds equal keep their order.
    template <typename Less>
    void Sort(Less less) {
        std::stable_sort(records_.begin(), records_.end(), less);
    }

    /// Index of the first record equal to `record`, 0 for none.
    int Find(const Record& record) const {
        const auto found = std::find(records_.begin(), records_.end(), record);
        return found == records_.end() ? 0 : static_cast<int>(found - records_.begin()) + 1;
    }

    auto begin() const { return records_.begin(); }
    auto end() const { return records_.end(); }

 private:
    std::vector<Record> records_;
};

/// Strings that tools collect are names and paths, kept as the bytes that the disk gave.
using CStrMng = CStructMng<std::filesystem::path>;

}  // namespace velloran
