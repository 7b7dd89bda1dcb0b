#include "codecs/JpegErrors.h"

#include <cstring>

namespace velloran {
namespace {

[[noreturn]] void JumpOut(j_common_ptr jpeg) {
    auto* errors = reinterpret_cast<JpegErrors*>(jpeg->err);
    std::longjmp(errors->jump, 1);
}

[[noreturn]] void OnError(j_common_ptr jpeg) {
    auto* errors = reinterpret_cast<JpegErrors*>(jpeg->err);
    errors->manager.format_message(jpeg, errors->message);
    JumpOut(jpeg);
}

void OnWarning(j_common_ptr jpeg, int level) {
    if (level < 0)
        ++jpeg->err->num_warnings;
}

void OnMessage(j_common_ptr) {}

}  // namespace

void InstallJpegErrors(JpegErrors& errors) {
    jpeg_std_error(&errors.manager);
    errors.manager.error_exit = OnError;
    errors.manager.emit_message = OnWarning;
    errors.manager.output_message = OnMessage;
    errors.message[0] = '\0';
}

void FailJpeg(j_common_ptr jpeg, const char* message) {
    auto* errors = reinterpret_cast<JpegErrors*>(jpeg->err);
    std::strncpy(errors->message, message, sizeof errors->message - 1);
    errors->message[sizeof errors->message - 1] = '\0';
    JumpOut(jpeg);
}

void RunJpegFunction(JpegErrors& errors, void (*work)(void*), void* context) {
    if (setjmp(errors.jump) == 0)
        work(context);
    else
        throw CNewJPEGException(errors.message);
}

}  // namespace velloran
