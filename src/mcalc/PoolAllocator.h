#pragma once

// Pools for short numeric runs: matrices and row tables without heap traffic for each of them. What
// was given out is freed with the pool.

#include <array>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <vector>

namespace velloran::mcalc {

template <typename Element>
class AbstractAllocator {
 public:
    virtual ~AbstractAllocator() = default;
    /// Uninitialised elements.
    virtual Element* allocate(std::size_t count) = 0;
    /// The row table of the solver.
    virtual std::size_t* allocateRows(std::size_t count) = 0;
};

/// Holds `kCapacity` elements and as many rows of tables, in at most `kBlocks` blocks together.
/// Running past either throws std::runtime_error.
template <typename Element, std::size_t kCapacity, std::size_t kBlocks>
class StaticPoolAllocator : public AbstractAllocator<Element> {
 public:
    Element* allocate(std::size_t count) override { return take(elements_, usedElements_, count); }
    std::size_t* allocateRows(std::size_t count) override { return take(rows_, usedRows_, count); }

 private:
    template <typename T>
    T* take(std::array<T, kCapacity>& pool, std::size_t& used, std::size_t count) {
        if (blocks_ == kBlocks || count > kCapacity - used)
            throw std::runtime_error("StaticPool overflow");
        ++blocks_;
        T* block = pool.data() + used;
        used += count;
        return block;
    }

    std::array<Element, kCapacity> elements_;
    std::array<std::size_t, kCapacity> rows_;
    std::size_t usedElements_ = 0, usedRows_ = 0, blocks_ = 0;
};

/// Takes its blocks from the heap. Throws std::bad_alloc.
template <typename Element>
class DynamicPoolAllocator : public AbstractAllocator<Element> {
 public:
    Element* allocate(std::size_t count) override {
        elements_.push_back(std::make_unique<Element[]>(count));
        return elements_.back().get();
    }
    std::size_t* allocateRows(std::size_t count) override {
        rows_.push_back(std::make_unique<std::size_t[]>(count));
        return rows_.back().get();
    }

 private:
    std::vector<std::unique_ptr<Element[]>> elements_;
    std::vector<std::unique_ptr<std::size_t[]>> rows_;
};

}  // namespace velloran::mcalc
