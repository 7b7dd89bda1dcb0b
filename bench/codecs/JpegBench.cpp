// clang-format off
#include <cstdio>  // jpeglib.h needs it before itself
#include <jpeglib.h>
// clang-format on

#include "codecs/Jpeg.h"

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "core/DibImage.h"
#include "io/AtomicFile.h"
#include "io/MemorySource.h"
#include "support/Page.h"

// An A4 page at 300 dpi, quality 85. Beside each stands the same work by plain calls of
// libjpeg-turbo into, or out of, memory that is there already: the floor.

namespace velloran {
namespace {

constexpr int kQuality = 85, kDpi = 300;

std::vector<JSAMPROW> RowsOf(CDibImage& image) {
    std::vector<JSAMPROW> rows;
    for (int y = image.GetHeight() - 1; y >= 0; --y)
        rows.push_back(image.GetBits(y));
    return rows;
}

void SetUp(jpeg_compress_struct& jpeg, const CDibImage& page) {
    jpeg.image_width = static_cast<JDIMENSION>(page.GetWidth());
    jpeg.image_height = static_cast<JDIMENSION>(page.GetHeight());
    jpeg.input_components = page.GetBpp() / 8;
    jpeg.in_color_space = page.GetBpp() == 8 ? JCS_GRAYSCALE : JCS_EXT_BGR;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, kQuality, FALSE);
    if (page.GetBpp() == 24) {
        jpeg.comp_info[0].h_samp_factor = 1;
        jpeg.comp_info[0].v_samp_factor = 2;
    }
}

std::vector<std::uint8_t> PlainEncode(CDibImage& page) {
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors;
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&jpeg, &bytes, &size);
    SetUp(jpeg, page);
    std::vector<JSAMPROW> rows = RowsOf(page);
    jpeg_start_compress(&jpeg, TRUE);
    jpeg_write_scanlines(&jpeg, rows.data(), jpeg.image_height);
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    std::vector<std::uint8_t> file(bytes, bytes + size);
    std::free(bytes);
    return file;
}

void PlainDecode(const std::vector<std::uint8_t>& file, CDibImage& page) {
    jpeg_decompress_struct jpeg{};
    jpeg_error_mgr errors;
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&jpeg);
    jpeg_mem_src(&jpeg, file.data(), file.size());
    jpeg_read_header(&jpeg, TRUE);
    jpeg.out_color_space = page.GetBpp() == 8 ? JCS_GRAYSCALE : JCS_EXT_BGR;
    jpeg_start_decompress(&jpeg);
    std::vector<JSAMPROW> rows = RowsOf(page);
    while (jpeg.output_scanline < jpeg.output_height)
        jpeg_read_scanlines(&jpeg, &rows[jpeg.output_scanline],
                            jpeg.output_height - jpeg.output_scanline);
    jpeg_finish_decompress(&jpeg);
    jpeg_destroy_decompress(&jpeg);
}

void SetBytes(benchmark::State& state, const CDibImage& page) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(page.GetEffWidth()) *
                            page.GetHeight());
}

void FloorDecodePage(benchmark::State& state) {
    CDibImage page = bench::ScannedPage(static_cast<int>(state.range(0)));
    const std::vector<std::uint8_t> file = PlainEncode(page);
    for (auto _ : state)
        PlainDecode(file, page);
    SetBytes(state, page);
}
BENCHMARK(FloorDecodePage)->Arg(8)->Arg(24)->Unit(benchmark::kMillisecond);

void LoadJpegPage(benchmark::State& state) {
    CDibImage page = bench::ScannedPage(static_cast<int>(state.range(0)));
    const std::vector<std::uint8_t> file = PlainEncode(page);
    for (auto _ : state) {
        MemorySource source(file);
        LoadNotes notes;
        if (!LoadJpeg(source, page, false, notes, nullptr))
            state.SkipWithError("load failed");
    }
    SetBytes(state, page);
}
BENCHMARK(LoadJpegPage)->Arg(8)->Arg(24)->Unit(benchmark::kMillisecond);

void FloorEncodePage(benchmark::State& state) {
    CDibImage page = bench::ScannedPage(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(PlainEncode(page));
    SetBytes(state, page);
}
BENCHMARK(FloorEncodePage)->Arg(8)->Arg(24)->Unit(benchmark::kMillisecond);

void SaveJpegPage(benchmark::State& state) {
    CDibImage page = bench::ScannedPage(static_cast<int>(state.range(0)));
    const JpegRules rules;
    const auto path = std::filesystem::temp_directory_path() /
                      ("velloran-bench-" + std::to_string(getpid()) + ".jpg");
    for (auto _ : state) {
        AtomicFile file(path);
        if (!file.Open(nullptr) || !SaveJpeg(file, page, nullptr, kQuality, kDpi, rules, nullptr) ||
            !file.Commit(nullptr))
            state.SkipWithError("save failed");
    }
    std::filesystem::remove(path);
    SetBytes(state, page);
}
BENCHMARK(SaveJpegPage)->Arg(8)->Arg(24)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace velloran
