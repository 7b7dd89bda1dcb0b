#include "page/PageSizes.h"

#include <array>

namespace velloran {
namespace {

// clang-format off
constexpr std::array<PaperSize, kPageSizeCount - kFirstNamedSize> kSizes = {{
    {185, 260}, {130, 185}, { 92, 127}, {60,  87},  // 787x1092mm: 1/16, 1/32, 1/64, 1/128
    {200, 285}, {140, 203}, {101, 137}, {65,  97},  // 850x1168mm
    {210, 285}, {143, 210}, {105, 140}, {67, 100},  // 889x1194mm
    {201, 297}, {148, 210}, {105, 144}, {69, 100},  // 890x1240mm
    {169, 239}, {119, 165}, { 82, 115},             // 1000x1400mm: 1/32, 1/64, 1/128
    {210, 297}, {148, 210}, {105, 144},             // A4 of documents, A5, A6
    {169, 239}, {119, 165}, { 82, 115},             // B5, B6, B7
    {550, 390}, {275, 390},                         // newspapers: 4, 8
    {420, 594}, {297, 420}, {210, 297},             // A2, A3, A4 of a word processor
}};
// clang-format on

}  // namespace

PaperSize PaperSizeOf(std::int32_t pageSizeRow) {
    if (pageSizeRow < kFirstNamedSize || pageSizeRow >= kPageSizeCount)
        return {};
    return kSizes[static_cast<std::size_t>(pageSizeRow - kFirstNamedSize)];
}

}  // namespace velloran
