#include "codecs/TiffHandle.h"

#include <algorithm>
#include <cstdio>
#include <memory>

#include "io/ByteSink.h"
#include "io/ByteSource.h"

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
        const auto wanted = static_cast<std::size_t>(std::max<tmsize_t>(count, 0));
        if (handle.source_ == nullptr)
            return static_cast<tmsize_t>(handle.sink_->Read(to, wanted));
        const std::size_t given =
            handle.source_->ReadAt(handle.position_, {static_cast<std::uint8_t*>(to), wanted});
        handle.readBeyondEnd_ |= given < wanted;
        handle.position_ += given;
        return static_cast<tmsize_t>(given);
    }

    static tmsize_t Write(thandle_t client, void* from, tmsize_t count) {
        ByteSink* sink = Of(client).sink_;
        return sink != nullptr && sink->Write(from, static_cast<std::size_t>(count)) ? count : -1;
    }

    static toff_t Seek(thandle_t client, toff_t offset, int whence) {
        TiffHandle& handle = Of(client);
        const std::uint64_t now =
            handle.sink_ != nullptr ? handle.sink_->Position() : handle.position_;
        const std::uint64_t base =
            whence == SEEK_CUR ? now : (whence == SEEK_END ? Size(client) : 0);
        if (handle.sink_ != nullptr)
            return handle.sink_->Seek(base + offset) ? base + offset : static_cast<toff_t>(-1);
        handle.position_ = base + offset;
        return handle.position_;
    }

    static int Close(thandle_t) { return 0; }

    static toff_t Size(thandle_t client) {
        TiffHandle& handle = Of(client);
        return handle.sink_ != nullptr ? handle.sink_->Size() : handle.source_->Size();
    }

    // Every byte goes through Read, which knows the end of the source.
    static int Map(thandle_t, void**, toff_t*) { return 0; }
    static void Unmap(thandle_t, void*, toff_t) {}
};

TiffHandle::TiffHandle(ByteSource& source) : source_(&source) {
    Open("r");
}

TiffHandle::TiffHandle(ByteSink& sink, bool bigEndian) : sink_(&sink) {
    Open(bigEndian ? "wb" : "wl");
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

bool TiffHandle::Fail(FileError* error, const char* otherwise) const {
    return FailDamaged(error, message_[0] != '\0' ? message_ : otherwise);
}

}  // namespace velloran
