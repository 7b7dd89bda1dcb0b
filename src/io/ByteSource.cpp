#include "io/ByteSource.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <utility>

namespace velloran {
namespace {

// Fresh pages of memory cost more than reading into them, so each thread keeps the last block.
constexpr std::size_t kKeptAtMost = std::size_t{64} << 20;

struct Spare {
    std::uint8_t* block = nullptr;
    std::size_t size = 0;
    Spare() = default;
    Spare(const Spare&) = delete;
    Spare& operator=(const Spare&) = delete;
    ~Spare() { std::free(block); }
};
thread_local Spare spare;

// The size of a block stands before it.
constexpr std::size_t kHead = 64;

std::uint8_t* TakeBlock(std::size_t size) {
    if (spare.block != nullptr && spare.size >= size)
        return std::exchange(spare.block, nullptr) + kHead;
    auto* block = static_cast<std::uint8_t*>(std::malloc(size + kHead));
    if (block == nullptr)
        return nullptr;
    *reinterpret_cast<std::size_t*>(block) = size;
    return block + kHead;
}

}  // namespace

void ByteSource::KeptDeleter::operator()(std::uint8_t* data) const noexcept {
    std::uint8_t* block = data - kHead;
    const std::size_t size = *reinterpret_cast<std::size_t*>(block);
    if (size > kKeptAtMost || (spare.block != nullptr && spare.size >= size)) {
        std::free(block);
        return;
    }
    std::free(spare.block);
    spare.block = block;
    spare.size = size;
}

std::size_t ByteSource::ReadAt(std::uint64_t offset, std::span<std::uint8_t> to) {
    if (errno_ != 0 || offset >= size_)
        return 0;
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(to.size(), size_ - offset));
    std::size_t done = 0;
    while (done < wanted) {
        const std::ptrdiff_t count = Read(offset + done, to.data() + done, wanted - done);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            errno_ = errno != 0 ? errno : EIO;
        if (count <= 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    cameShort_ |= done < wanted;
    return done;
}

std::optional<std::span<const std::uint8_t>> ByteSource::AllBytes(FileError* error) {
    if (const auto bytes = InMemory(); !bytes.empty())
        return bytes;
    if (all_ == nullptr) {
        all_.reset(size_ <= SIZE_MAX - kHead ? TakeBlock(static_cast<std::size_t>(size_))
                                             : nullptr);
        if (all_ == nullptr) {
            FailNoMemory(error);
            return std::nullopt;
        }
        allSize_ = ReadAt(0, {all_.get(), static_cast<std::size_t>(size_)});
    }
    if (!FailWhenUnreadable(error))
        return std::nullopt;
    if (allSize_ == 0) {
        FailContent(error, "cannot read: is empty", FileReason::kEmpty);
        return std::nullopt;
    }
    return std::span<const std::uint8_t>(all_.get(), allSize_);
}

bool ByteSource::FailWhenUnreadable(FileError* error) const {
    if (errno_ == 0)
        return true;
    errno = errno_;
    return FailReadErrno(error, "cannot read");
}

void ByteSource::Reset() {
    size_ = 0;
    cameShort_ = false;
    errno_ = 0;
    all_.reset();
    allSize_ = 0;
}

}  // namespace velloran
