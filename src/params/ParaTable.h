#pragma once

// The 134 parameters as data: one row a parameter. Defaults, ranges, the ini form, the command
// line, the windows' controls and the describe mode all read this table; no second list exists.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "params/ParaMeaning.h"
#include "text/Label.h"

namespace velloran {

// clang-format off
/// Index of a parameter; the numbers are part of the file formats.
enum ParaIndex : int {
    PARA_BRIGHTNESS, PARA_CONTRAST, PARA_HIGHLIGHT, PARA_GAMMA, PARA_CURVE, PARA_RESIZE,
    PARA_QUALITY, PARA_JP2_RATE, PARA_CROPPING, PARA_SHARPEN, PARA_BLUR, PARA_COLOR,
    PARA_GO_SUB_DIR, PARA_THRESHOLD, PARA_AUTO_LEVELS, PARA_AUTO_LEVELS_POST, PARA_ERODE,
    PARA_NEGATE, PARA_SWAP_CHANNEL, PARA_COMBINE_CHANNEL, PARA_REPLACE_COLOR_TYPE,
    PARA_REPLACE_COLOR_FROM, PARA_REPLACE_COLOR_TO, PARA_REPLACE_COLOR_THRESHOLD,
    PARA_LUM_CORRECT, PARA_HIST_EQUALIZE, PARA_SURFACE_BLUR_TIMES, PARA_SURFACE_BLUR_RADIUS,
    PARA_SURFACE_BLUR_THRESHOLD, PARA_SURFACE_BLUR_ALGRITHOM, PARA_DECREASE_BPP_DITHER,
    PARA_DECREASE_BPP_QUANTIZE, PARA_DECREASE_TRANSPARENT, PARA_DECREASE_CHECK_GRAY,
    PARA_DECREASE_THRESHOLD_METHOD, PARA_DECREASE_WINDOW_SIZE, PARA_DECREASE_DESPECKLE_SIZE,
    PARA_DECREASE_BW_DITHER_METHOD, PARA_DECREASE_BLOCK_WIDTH, PARA_DECREASE_BLOCK_HEIGHT,
    PARA_DECREASE_BLOCK_WIDTH_CONDITION, PARA_DECREASE_BLOCK_HEIGHT_CONDITION,
    PARA_DECREASE_DE_BLACK, PARA_DECREASE_DE_SMOOTH, PARA_USM_TIMES, PARA_USM_AMOUNT,
    PARA_USM_THRESHOLD, PARA_USM_RADIUS, PARA_ROATE, PARA_CURVE_1, PARA_CURVE_2, PARA_CURVE_3,
    PARA_CURVE_DIV, PARA_CURVE_OFFSET, PARA_SLIDE_INTV, PARA_SRC_FILES, PARA_TGT_FILES,
    PARA_CROPPING_P_LEFT, PARA_CROPPING_P_TOP, PARA_CROPPING_P_RIGHT, PARA_CROPPING_P_BOTTOM,
    PARA_PAGE_SIZE, PARA_PAGE_SIZE_UNIT, PARA_PAGE_WIDTH, PARA_PAGE_HEIGHT, PARA_MARGIN_LEFT,
    PARA_MARGIN_RIGHT, PARA_MARGIN_TOP, PARA_MARGIN_BOTTOM, PARA_ALIGN_H, PARA_ALIGN_V,
    PARA_FILL_BLANK_COLOR, PARA_BIG_CNT_BOX, PARA_SMALL_CNT_BOX, PARA_DESKEW, PARA_DESKEW_ANGLE,
    PARA_DESKEW_EDGE, PARA_FIND_CNT_BOX, PARA_CBF_REMOVE_BLACK_EDGE, PARA_CBF_SPECKLE_SIZE,
    PARA_CBF_SPECKLE_COMPENSATION, PARA_CBF_BK_MORE, PARA_PREVIEW_FILE_OPEN, PARA_KEEP_FILE_TIME,
    PARA_DPI, PARA_LIGHT_LOW, PARA_LIGHT_HIGH, PARA_ADJUST_BLUR_RADIUS,
    PARA_ADJUST_SHARPEN_PERCENT, PARA_ADJUST_SHARPEN_SIZE, PARA_ADJUST_MULTI_SCALE_R,
    PARA_ADJUST_VIBRANCE, PARA_ADJUST_UNSHADOW, PARA_REVERSE_CMYK, PARA_WHITE_BALANCE,
    PARA_LEVELS_SHADOW, PARA_LEVELS_LIGHT, PARA_CRT_TYPE, PARA_CRT_PT_LT, PARA_CRT_PT_RT,
    PARA_CRT_PT_RB, PARA_CRT_PT_LB, PARA_CRT_CROP, PARA_CRT_SIZE, PARA_CRT_DEWARPING_TYPE,
    PARA_CRT_DEWARPING_ILLUM,
    PARA_CRT_DEWARPING_TOP_1, PARA_CRT_DEWARPING_TOP_2, PARA_CRT_DEWARPING_TOP_3,
    PARA_CRT_DEWARPING_TOP_4, PARA_CRT_DEWARPING_TOP_5, PARA_CRT_DEWARPING_TOP_6,
    PARA_CRT_DEWARPING_TOP_7, PARA_CRT_DEWARPING_TOP_8,
    PARA_CRT_DEWARPING_BTM_1, PARA_CRT_DEWARPING_BTM_2, PARA_CRT_DEWARPING_BTM_3,
    PARA_CRT_DEWARPING_BTM_4, PARA_CRT_DEWARPING_BTM_5, PARA_CRT_DEWARPING_BTM_6,
    PARA_CRT_DEWARPING_BTM_7, PARA_CRT_DEWARPING_BTM_8,
    PARA_PAGE_SPLIT_TYPE, PARA_PAGE_SPLIT_LEFT, PARA_PAGE_SPLIT_RIGHT, PARA_PAGE_SPLIT_MID,
    JPG_RESAMPLE_TYPE, JPG_RESAMPLE_H, JPG_RESAMPLE_V, JPG_SRC_SAMPLE, JPG_SRC_QUALITY,
    JPG_SRC_CODE, JPG_OPTIMIZE, JPG_PROGRESSIVE,
    kParaCount,
};
// clang-format on
static_assert(kParaCount == 134);

enum class ParaKind {
    kNumber,      // a plain number; min and max where the controls have them
    kList,        // position in `list`
    kFlag,        // 0 or 1
    kColor,       // 0x00BBGGRR
    kPackedPair,  // two 16-bit halves, the first value low
    kPacked,      // other packed fields
    kKept,        // no step reads it; it keeps the indexes of the others
};

struct ParaRow {
    std::string_view name;
    std::int32_t defaultValue;
    ParaKind kind;
    std::optional<std::int32_t> min, max;
    std::span<const Label> list;  // texts in list order; empty for none
    Label label;                  // the control's label; may be empty
    Label meaning;                // one phrase for the user

    ParaTab tab = ParaTab::kNone;
    int tabPlace = 0;  // from 1, in the order of the tab
    ParaSet set = ParaSet::kNoSet;
    ParaUnit unit = ParaUnit::kNoUnit;
    ParaScale scale{};
    std::optional<std::int32_t> neutral{};  // its step changes nothing; only where there is one
    std::span<const ParaField> fields{};    // of a packed value
    ParaCondition enabled{};
    std::array<ParaGate, 3> gates{};  // of the steps that it switches on
};

/// The row of a parameter, 0 <= index < kParaCount.
const ParaRow& ParaRowOf(int index);

/// Index of a name exactly as in the table, or nothing.
std::optional<int> FindPara(std::string_view name);

/// The parameters of a tab in its order.
std::vector<ParaIndex> ParaIndexesOf(ParaTab tab);

/// Whether the value of one parameter gives a step work; whether any parameter's does.
bool IsGateOpen(int step, int index, std::int32_t value);
bool HasOpenGate(int step, std::span<const std::int32_t, kParaCount> values);

/// Whether the parameter counts beside these values.
bool IsEnabled(int index, std::span<const std::int32_t, kParaCount> values);

/// The number as the user sees it, by the scale of the row: "1.5" for 15 tenths.
std::u16string ShownText(int index, std::int32_t value);

/// The list text of a value in the language in use, empty when the value is no list position.
std::u16string_view ParaListText(int index, std::int32_t value);

}  // namespace velloran
