# Libraries from outside, each found once. docs/dependencies.md says what each is for.

find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
find_package(JPEG REQUIRED)
find_package(PNG REQUIRED)
find_package(TIFF REQUIRED)
find_package(GIF REQUIRED)
find_package(ZLIB REQUIRED)
pkg_check_modules(WEBP REQUIRED IMPORTED_TARGET libwebp libwebpdemux libwebpmux)
pkg_check_modules(EXIF REQUIRED IMPORTED_TARGET libexif)
pkg_check_modules(OPENJPEG REQUIRED IMPORTED_TARGET libopenjp2)
pkg_check_modules(DJVU REQUIRED IMPORTED_TARGET ddjvuapi)
pkg_check_modules(RAW REQUIRED IMPORTED_TARGET libraw_r)
pkg_check_modules(LCMS REQUIRED IMPORTED_TARGET lcms2)
find_package(CLI11 REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(fmt REQUIRED)
pkg_check_modules(HWY REQUIRED IMPORTED_TARGET libhwy)
# Kernels are compiled once for each form: the plain one, and of x86 processors these with vectors.
# SSSE3 without SSE4 is too rare to be worth a form, and kernels lay out vectors of known length,
# which those of SVE are not. A file that gains from AVX3_DL asks for it.
add_library(velloran_highway INTERFACE)
target_link_libraries(velloran_highway INTERFACE PkgConfig::HWY)
target_compile_definitions(velloran_highway INTERFACE 
    "HWY_DISABLED_TARGETS=(HWY_SSSE3|HWY_SVE|HWY_SVE2|HWY_SVE_256|HWY_SVE2_128)")
if(VELLORAN_TESTS)
    find_package(GTest REQUIRED)
endif()
if(VELLORAN_BENCH)
    find_package(benchmark REQUIRED)
    # The peer to beat. Debian's core and imgproc packages hold no CMake package of their own.
    find_path(OPENCV_INCLUDE_DIR opencv2/core.hpp PATH_SUFFIXES opencv4 REQUIRED)
    find_library(OPENCV_CORE opencv_core REQUIRED)
    find_library(OPENCV_IMGPROC opencv_imgproc REQUIRED)
    add_library(velloran_opencv INTERFACE)
    target_include_directories(velloran_opencv SYSTEM INTERFACE ${OPENCV_INCLUDE_DIR})
    target_link_libraries(velloran_opencv INTERFACE ${OPENCV_IMGPROC} ${OPENCV_CORE})
endif()
