#include "codecs/TiffHandle.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "io/AtomicFile.h"

namespace velloran {
namespace {

// Above what a page may hold in one piece, below what would stall a machine.
constexpr tmsize_t kMaxAllocation = 1 << 30;

struct OptionsDeleter {
    void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};

int KeepFirstMessage(TIFF*, void* data, const char*, const char* format, va_list arguments) {
    auto* message = static_cast<char*>(data);
    if (message[0] == '\0')
        std::vsnprintf(message, 200, format, arguments);
    return 1;
}

int Silence(TIFF*, void*, const char*, const char*, va_list) {
    return 1;
}

}  // namespace

struct TiffHandle::Procedures {
    static TiffHandle& Of(thandle_t client) { return *static_cast<TiffHandle*>(client); }

    static tmsize_t Read(thandle_t client, void* to, tmsize_t count) {
        TiffHandle& handle = Of(client);
        if (handle.file_ != nullptr)
            return static_cast<tmsize_t>(
                std::fread(to, 1, static_cast<std::size_t>(count), handle.file_->Stream()));
        const std::uint64_t left =
            handle.bytes_.size() - std::min<std::uint64_t>(handle.position_, handle.bytes_.size());
        const std::size_t given = static_cast<std::size_t>(std::min<std::uint64_t>(
            left, static_cast<std::uint64_t>(std::max<tmsize_t>(count, 0))));
        std::memcpy(to, handle.bytes_.data() + (handle.bytes_.size() - left), given);
        handle.position_ += given;
        return static_cast<tmsize_t>(given);
    }

    static tmsize_t Write(thandle_t client, void* from, tmsize_t count) {
        TiffHandle& handle = Of(client);
        if (handle.file_ == nullptr ||
            !handle.file_->Write(from, static_cast<std::size_t>(count))) {
            handle.NoteWriteFailure();
            return -1;
        }
        return count;
    }

    static toff_t Seek(thandle_t client, toff_t offset, int whence) {
        TiffHandle& handle = Of(client);
        if (handle.file_ != nullptr) {
            std::FILE* stream = handle.file_->Stream();
            if (::fseeko(stream, static_cast<off_t>(offset), whence) != 0) {
                handle.NoteWriteFailure();
                return static_cast<toff_t>(-1);
            }
            return static_cast<toff_t>(::ftello(stream));
        }
        const std::uint64_t base =
            whence == SEEK_CUR ? handle.position_ : (whence == SEEK_END ? handle.bytes_.size() : 0);
        handle.position_ = base + offset;
        return handle.position_;
    }

    static int Close(thandle_t) { return 0; }

    static toff_t Size(thandle_t client) {
        TiffHandle& handle = Of(client);
        if (handle.file_ == nullptr)
            return handle.bytes_.size();
        std::FILE* stream = handle.file_->Stream();
        const off_t at = ::ftello(stream);
        if (::fseeko(stream, 0, SEEK_END) != 0)
            return 0;
        const off_t size = ::ftello(stream);
        ::fseeko(stream, at, SEEK_SET);
        return static_cast<toff_t>(std::max<off_t>(size, 0));
    }

    static int Map(thandle_t client, void** base, toff_t* size) {
        TiffHandle& handle = Of(client);
        if (handle.file_ != nullptr)
            return 0;
        // libtiff only reads what it maps.
        *base = const_cast<std::uint8_t*>(handle.bytes_.data());
        *size = handle.bytes_.size();
        return 1;
    }

    static void Unmap(thandle_t, void*, toff_t) {}
};

TiffHandle::TiffHandle(std::span<const std::uint8_t> bytes) : bytes_(bytes) {
    Open("r");
}

TiffHandle::TiffHandle(AtomicFile& file) : file_(&file) {
    Open("w");
}

TiffHandle::~TiffHandle() {
    Close();
}

void TiffHandle::Open(const char* mode) {
    const std::unique_ptr<TIFFOpenOptions, OptionsDeleter> options(TIFFOpenOptionsAlloc());
    if (options == nullptr)
        return;
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), kMaxAllocation);
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), KeepFirstMessage, message_);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), Silence, nullptr);
    tiff_ = TIFFClientOpenExt("page", mode, this, Procedures::Read, Procedures::Write,
                              Procedures::Seek, Procedures::Close, Procedures::Size,
                              Procedures::Map, Procedures::Unmap, options.get());
}

void TiffHandle::Close() {
    if (tiff_ != nullptr)
        TIFFClose(tiff_);
    tiff_ = nullptr;
}

// Called inside libtiff, so it only keeps the number.
void TiffHandle::NoteWriteFailure() {
    if (!writeFailed_)
        writeErrno_ = errno;
    writeFailed_ = true;
}

bool TiffHandle::FailWrite(FileError* error) const {
    errno = writeErrno_;
    return FailErrno(error, "cannot write");
}

bool TiffHandle::Fail(FileError* error, const char* otherwise) const {
    return FailContent(error, message_[0] != '\0' ? message_ : otherwise);
}

}  // namespace velloran
