#include <algorithm>
#include <utility>
#include <vector>

#include "codecs/DecodedPage.h"
#include "codecs/EncodedPage.h"
#include "codecs/Jp2Boxes.h"
#include "codecs/Jpeg2000.h"
#include "codecs/OpenJpeg.h"
#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/Threads.h"
#include "io/ByteSink.h"

namespace velloran {
namespace {

constexpr int kDecompositions = 5;

/// The page as planes of numbers, the top row first.
OpjImage MakeImage(const CDibImage& page) {
    const bool gray = page.GetBpp() == 8;
    const OPJ_UINT32 count = gray ? 1 : 3;
    opj_image_cmptparm_t components[3] = {};
    const auto width = static_cast<OPJ_UINT32>(page.GetWidth());
    const auto height = static_cast<OPJ_UINT32>(page.GetHeight());
    for (opj_image_cmptparm_t& component : components) {
        component.dx = component.dy = 1;
        component.w = width;
        component.h = height;
        component.prec = 8;
    }
    OpjImage image(opj_image_create(count, components, gray ? OPJ_CLRSPC_GRAY : OPJ_CLRSPC_SRGB));
    if (image == nullptr)
        return image;
    image->x1 = width;
    image->y1 = height;
    const ConstPlaneView rows = TopDownViewOf(page);
#pragma omp parallel for schedule(static) if (IsWorthThreads(rows))
    for (int y = 0; y < rows.height; ++y) {
        const std::uint8_t* from = rows.Row(y).data();
        const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(y) * rows.width;
        for (OPJ_UINT32 c = 0; c < count; ++c) {
            OPJ_INT32* to = image->comps[c].data + at;
            const std::uint8_t* sample = from + (gray ? 0 : 2 - c);  // blue lies first
            for (int x = 0; x < rows.width; ++x, sample += count)
                to[x] = *sample;
        }
    }
    return image;
}

/// Halvings that both sides allow.
int ResolutionsFor(const CDibImage& page) {
    int resolutions = 1;
    for (int side = std::min(page.GetWidth(), page.GetHeight());
         resolutions <= kDecompositions && side > 1; side /= 2)
        ++resolutions;
    return resolutions;
}

opj_cparameters_t ParametersFor(const CDibImage& page, double streamBytes) {
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    const int count = page.GetBpp() == 8 ? 1 : 3;
    const double raw = static_cast<double>(page.GetWidth()) * page.GetHeight() * count;
    parameters.tcp_numlayers = 1;
    parameters.cp_disto_alloc = 1;
    parameters.tcp_rates[0] = static_cast<float>(std::max(raw / streamBytes, 1.0));
    parameters.irreversible = 1;
    parameters.tcp_mct = count == 3 ? 1 : 0;
    parameters.numresolution = ResolutionsFor(page);
    return parameters;
}

/// One code stream of about so many bytes; nothing with a reason where the library fails.
bool Encode(const CDibImage& page, double streamBytes, OpjOutput& output, FileError* error) {
    OpjMessage message;
    const OpjImage image = MakeImage(page);
    const OpjCodec codec(opj_create_compress(OPJ_CODEC_J2K));
    const OpjStream stream = MakeOpjStream(output);
    if (image == nullptr || codec == nullptr || stream == nullptr)
        return FailNoMemory(error);
    KeepMessages(codec.get(), message);
    opj_cparameters_t parameters = ParametersFor(page, streamBytes);
    const bool isSetUp = opj_setup_encoder(codec.get(), &parameters, image.get()) != 0;
    if (isSetUp && MaxThreads() > 1)
        opj_codec_set_threads(codec.get(), MaxThreads());
    const bool done = isSetUp && opj_start_compress(codec.get(), image.get(), stream.get()) != 0 &&
                      opj_encode(codec.get(), stream.get()) != 0 &&
                      opj_end_compress(codec.get(), stream.get()) != 0;
    if (output.outOfMemory)
        return FailNoMemory(error);
    return done ||
           FailContent(error, message.text[0] != '\0' ? message.text : "JPEG 2000 coding failed");
}

/// The library keeps to its target only roughly. A little less is asked for, so that one coding is
/// enough as a rule, and less again where that came out too large.
bool EncodeInto(const CDibImage& page, double wanted, OpjOutput& output, FileError* error) {
    constexpr int kTries = 5;
    constexpr double kFirst = 0.9995, kStep = 0.002;
    double asked = wanted * kFirst;
    for (int i = 1; i <= kTries; ++i) {
        OpjOutput made;
        if (!Encode(page, asked, made, error))
            return false;
        const auto size = static_cast<double>(made.bytes.size());
        if (output.bytes.empty() || made.bytes.size() < output.bytes.size())
            output = std::move(made);
        if (size <= wanted)
            break;
        asked = std::max(1.0, asked - std::max(1.5 * (size - wanted), kStep * i * wanted));
    }
    return true;
}

bool Code(const CDibImage& image, int ratePercent, ByteSink& sink, FileError* error) {
    const bool isGray = image.GetBpp() == 8;
    const Jp2Page page{image.GetWidth(), image.GetHeight(), isGray, image.GetXDpi(),
                       image.GetYDpi()};
    const Metadata metadata = MetadataToWrite(image, !isGray);
    const auto target =
        static_cast<double>(Jp2TargetBytes(image.GetWidth(), image.GetHeight(), ratePercent));
    const auto boxes = static_cast<double>(Jp2BoxesFor(page, metadata, 0).size());
    OpjOutput output;
    if (!EncodeInto(image, std::max(target - boxes, target / 2), output, error))
        return false;
    const Blob head = Jp2BoxesFor(page, metadata, output.bytes.size());
    return (sink.Write(head.data(), head.size()) &&
            sink.Write(output.bytes.data(), output.bytes.size())) ||
           sink.FailWrite(error);
}

}  // namespace

std::int64_t Jp2TargetBytes(int width, int height, int ratePercent) {
    return (std::int64_t{width} * height * ratePercent + 50) / 100;
}

bool SaveJp2(ByteSink& sink, CDibImage& image, int ratePercent, int dpi, FileError* error) {
    return SaveWith(image, error, [&] {
        if (EnsureGrayOrRgb(image) == 0)
            return FailNoMemory(error);
        const int xDpi = image.GetXDpi(), yDpi = image.GetYDpi();
        image.SetXDpi(dpi);
        image.SetYDpi(dpi);
        const bool done = Code(image, std::clamp(ratePercent, 1, 100), sink, error);
        image.SetXDpi(xDpi);
        image.SetXDpi(yDpi);  // not the vertical one: pages written so far rely on it
        return done;
    });
}

}  // namespace velloran
