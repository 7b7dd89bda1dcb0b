// velloran_jpeg_floor IN_DIR OUT_DIR: decodes and encodes the JPEGs of a folder by plain calls of
// libjpeg-turbo, one after the other on one thread, and nothing else: the floor under a batch run.
// Quality 85, the sampling of the automatic rule, usual Huffman tables; with --progressive the
// progressive script instead. Prints the files, the megapixels and the CPU seconds that they took.

// clang-format off
#include <cstdio>  // jpeglib.h needs it before itself
#include <jpeglib.h>
// clang-format on

#include <algorithm>
#include <cctype>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

struct Page {
    JDIMENSION width = 0, height = 0;
    int components = 0;
    std::vector<JSAMPLE> samples;

    std::vector<JSAMPROW> Rows() {
        std::vector<JSAMPROW> rows(height);
        for (JDIMENSION y = 0; y < height; ++y)
            rows[y] = &samples[std::size_t{y} * width * static_cast<std::size_t>(components)];
        return rows;
    }
};

std::vector<unsigned char> ReadFile(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void Decode(const std::vector<unsigned char>& file, Page& page) {
    jpeg_decompress_struct jpeg{};
    jpeg_error_mgr errors;
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&jpeg);
    jpeg_mem_src(&jpeg, file.data(), file.size());
    jpeg_read_header(&jpeg, TRUE);
    jpeg.out_color_space = jpeg.num_components == 1 ? JCS_GRAYSCALE : JCS_EXT_BGR;
    jpeg_start_decompress(&jpeg);
    page.width = jpeg.output_width;
    page.height = jpeg.output_height;
    page.components = jpeg.output_components;
    // Grows only: a page of the size before costs no fresh memory.
    page.samples.resize(std::max(
        page.samples.size(),
        std::size_t{page.width} * page.height * static_cast<std::size_t>(page.components)));
    const std::vector<JSAMPROW> rows = page.Rows();
    while (jpeg.output_scanline < page.height)
        jpeg_read_scanlines(&jpeg, const_cast<JSAMPARRAY>(&rows[jpeg.output_scanline]),
                            page.height - jpeg.output_scanline);
    jpeg_finish_decompress(&jpeg);
    jpeg_destroy_decompress(&jpeg);
}

void Encode(Page& page, bool progressive, const fs::path& path) {
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors;
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    std::FILE* stream = std::fopen(path.c_str(), "wb");
    if (stream == nullptr) {
        std::perror(path.c_str());
        std::exit(1);
    }
    jpeg_stdio_dest(&jpeg, stream);
    jpeg.image_width = page.width;
    jpeg.image_height = page.height;
    jpeg.input_components = page.components;
    jpeg.in_color_space = page.components == 1 ? JCS_GRAYSCALE : JCS_EXT_BGR;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, 85, FALSE);
    if (page.components == 3) {
        jpeg.comp_info[0].h_samp_factor = page.width > page.height ? 2 : 1;
        jpeg.comp_info[0].v_samp_factor = page.width > page.height ? 1 : 2;
    }
    if (progressive) {
        jpeg.optimize_coding = TRUE;
        jpeg_simple_progression(&jpeg);
    }
    std::vector<JSAMPROW> rows = page.Rows();
    jpeg_start_compress(&jpeg, TRUE);
    while (jpeg.next_scanline < page.height)
        jpeg_write_scanlines(&jpeg, &rows[jpeg.next_scanline], page.height - jpeg.next_scanline);
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    std::fclose(stream);
}

bool IsJpegName(const fs::path& path) {
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".jpg" || extension == ".jpeg";
}

}  // namespace

int main(int argc, char** argv) {
    const bool progressive = argc == 4 && std::string(argv[3]) == "--progressive";
    if (argc != 3 && !progressive) {
        std::fprintf(stderr, "usage: %s IN_DIR OUT_DIR [--progressive]\n", argv[0]);
        return 2;
    }
    fs::create_directories(argv[2]);
    Page page;
    int files = 0;
    double megapixels = 0;
    const std::clock_t start = std::clock();
    for (const fs::directory_entry& entry : fs::directory_iterator(argv[1])) {
        if (!entry.is_regular_file() || !IsJpegName(entry.path()))
            continue;
        Decode(ReadFile(entry.path()), page);
        Encode(page, progressive, fs::path(argv[2]) / entry.path().filename());
        ++files;
        megapixels += 1e-6 * page.width * page.height;
    }
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    std::printf("files %d  megapixels %.1f  cpu seconds %.3f\n", files, megapixels, seconds);
    return 0;
}
