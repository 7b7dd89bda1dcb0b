#include <libdjvu/ddjvuapi.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "codecs/DecodedPage.h"
#include "codecs/Djvu.h"
#include "codecs/DjvuHead.h"
#include "core/StepContext.h"
#include "io/ByteSource.h"

namespace velloran {
namespace {

// A page of paper alone takes a few hundred bytes whatever its size.
constexpr std::int64_t kMaxRatio = 1 << 18;

/// The library's objects count their users; each of ours is one.
struct Release {
    void operator()(ddjvu_context_t* context) const { ddjvu_context_release(context); }
    void operator()(ddjvu_document_t* document) const { ddjvu_document_release(document); }
    void operator()(ddjvu_page_t* page) const { ddjvu_page_release(page); }
    void operator()(ddjvu_format_t* format) const { ddjvu_format_release(format); }
};
template <typename Handle>
using Held = std::unique_ptr<Handle, Release>;

/// A document under the library, whose threads decode; this one feeds them and waits.
class Session {
 public:
    Session() : context_(ddjvu_context_create("velloran")) {
        if (context_ != nullptr)
            ddjvu_message_set_callback(context_.get(), Wake, this);
    }
    ~Session() {
        page_.reset();
        document_.reset();
        if (context_ != nullptr)
            ddjvu_message_set_callback(context_.get(), nullptr, nullptr);
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Opens and decodes a page; false with a reason.
    bool Decode(std::span<const std::uint8_t> bytes, int number, FileError* error) {
        if (context_ == nullptr)
            return FailNoMemory(error);
        bytes_ = bytes;
        document_.reset(ddjvu_document_create(context_.get(), nullptr, /*cache=*/0));
        if (document_ == nullptr || !WaitFor(ddjvu_document_job(document_.get())))
            return Fail(error);
        page_.reset(ddjvu_page_create_by_pageno(document_.get(), number - 1));
        if (page_ == nullptr)
            return Fail(error);
        isWhole_ = WaitFor(ddjvu_page_job(page_.get()));
        return true;
    }

    ddjvu_page_t* Page() const { return page_.get(); }
    bool IsWhole() const { return isWhole_; }
    const std::string& Message() const { return message_; }
    bool Fail(FileError* error) const {
        return FailDamaged(error, message_.empty() ? "the page cannot be decoded" : message_);
    }

 private:
    static void Wake(ddjvu_context_t*, void* self) {
        auto& session = *static_cast<Session*>(self);
        const std::lock_guard hold(session.lock_);
        session.hasNews_ = true;
        session.news_.notify_one();
    }

    /// Until a job ends; false where that is no success.
    bool WaitFor(ddjvu_job_t* job) {
        const CancelToken cancel = CurrentCancel();
        for (;;) {
            TakeMessages();
            const ddjvu_status_t status = ddjvu_job_status(job);
            if (status >= DDJVU_JOB_OK)
                return status == DDJVU_JOB_OK;
            if (cancel.IsCancelled())
                ddjvu_job_stop(job);
            std::unique_lock hold(lock_);
            news_.wait_for(hold, std::chrono::milliseconds(20), [this] { return hasNews_; });
            hasNews_ = false;
        }
    }

    void TakeMessages() {
        while (const ddjvu_message_t* message = ddjvu_message_peek(context_.get())) {
            if (message->m_any.tag == DDJVU_NEWSTREAM)
                Feed(message->m_newstream.streamid);
            else if (message->m_any.tag == DDJVU_ERROR && message_.empty() &&
                     message->m_error.message != nullptr)
                message_ = message->m_error.message;
            ddjvu_message_pop(context_.get());
        }
    }

    /// The file itself is stream 0; nothing outside of it is opened.
    void Feed(int stream) {
        if (stream == 0)
            ddjvu_stream_write(document_.get(), stream,
                               reinterpret_cast<const char*>(bytes_.data()),
                               static_cast<unsigned long>(bytes_.size()));
        ddjvu_stream_close(document_.get(), stream, /*stop=*/stream != 0);
    }

    std::mutex lock_;
    std::condition_variable news_;
    bool hasNews_ = false;
    std::span<const std::uint8_t> bytes_;
    Held<ddjvu_context_t> context_;
    Held<ddjvu_document_t> document_;
    Held<ddjvu_page_t> page_;
    bool isWhole_ = false;
    std::string message_;
};

/// Renders straight into the page's rows, which lie bottom first.
bool Render(ddjvu_page_t* from, CDibImage& page) {
    const bool isInk = page.GetBpp() == 1;
    const Held<ddjvu_format_t> format(
        ddjvu_format_create(isInk ? DDJVU_FORMAT_MSBTOLSB : DDJVU_FORMAT_BGR24, 0, nullptr));
    if (format == nullptr)
        return false;
    ddjvu_format_set_row_order(format.get(), /*top_to_bottom=*/0);
    ddjvu_format_set_y_direction(format.get(), /*top_to_bottom=*/1);
    const ddjvu_rect_t whole{0, 0, static_cast<unsigned>(page.GetWidth()),
                             static_cast<unsigned>(page.GetHeight())};
    return ddjvu_page_render(from, isInk ? DDJVU_RENDER_BLACK : DDJVU_RENDER_COLOR, &whole, &whole,
                             format.get(), page.GetEffWidth(),
                             reinterpret_cast<char*>(page.GetBits(0))) != 0;
}

class DjvuReader {
 public:
    explicit DjvuReader(ByteSource& source, int number = 1) : source_(source), number_(number) {}

    bool ReadHead(FileError* error) {
        if (!FindDjvuPages(source_, places_, error))
            return false;
        if (number_ < 1 || number_ > CountPictures())
            return FailNoSuchPage(error, CountPictures());
        if (!ReadDjvuPageHead(source_, places_[static_cast<std::size_t>(number_) - 1], head_,
                              error))
            return false;
        return IsAcceptableSize(head_.width, head_.height, 24) ||
               FailContent(error, "the picture has no acceptable size", FileReason::kTooLarge);
    }

    ImageInfo Info() const {
        ImageInfo info;
        info.width = head_.width;
        info.height = head_.height;
        info.bitsPerPixel = 24;  // of ink alone or not shows when it is decoded
        info.xDpi = info.yDpi = head_.dpi;
        return info;
    }
    int SourceBits() const { return bits_; }
    void ReadNotes(LoadNotes&) {}
    int CountPictures() const { return static_cast<int>(places_.size()); }

    bool ReadPage(CDibImage& page, LoadNotes& notes, FileError* error) {
        if (!IsPlausibleSize(std::int64_t{3} * head_.width * head_.height, source_.Size(),
                             kMaxRatio))
            return FailDamaged(error, "the file is too short for its picture");
        const auto bytes = source_.AllBytes(error);
        if (!bytes)
            return false;
        Session session;
        if (!session.Decode(*bytes, number_, error))
            return false;
        ddjvu_page_t* from = session.Page();
        if (ddjvu_page_get_width(from) != head_.width ||
            ddjvu_page_get_height(from) != head_.height)
            return session.Fail(error);
        const bool isInk = ddjvu_page_get_type(from) == DDJVU_PAGETYPE_BITONAL;
        if (!CreatePage(head_.width, head_.height, isInk ? 1 : 24, false, page, error))
            return false;
        if (isInk) {
            page.GetPalette()[0] = {255, 255, 255, 0};
            page.GetPalette()[1] = {0, 0, 0, 0};
        }
        bits_ = page.GetBpp();
        if (!Render(from, page))
            return session.Fail(error);
        notes.pictures = CountPictures();
        if (!session.IsWhole() || !session.Message().empty())
            notes.NoteDamage(session.Message().empty() ? "the page is damaged" : session.Message());
        page.SetXDpi(head_.dpi);
        page.SetYDpi(head_.dpi);
        return true;
    }

 private:
    ByteSource& source_;
    int number_;
    std::vector<std::uint64_t> places_;
    DjvuPageHead head_;
    int bits_ = 24;
};

}  // namespace

bool LoadDjvu(ByteSource& source, int page, CDibImage& image, LoadNotes& notes, FileError* error) {
    return LoadWith<DjvuReader>(source, image, notes, error, page);
}

bool ReadDjvuInfo(ByteSource& source, ImageInfo& info, FileError* error) {
    return InfoWith<DjvuReader>(source, info, error);
}

bool ReadDjvuNotes(ByteSource& source, LoadNotes& notes, FileError* error) {
    return NotesWith<DjvuReader>(source, notes, error);
}

}  // namespace velloran
