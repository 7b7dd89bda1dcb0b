#include "params/ParaBlock.h"

#include <algorithm>
#include <cassert>
#include <vector>

#include "params/ProfileStore.h"
#include "text/Labels.h"
#include "text/NumberText.h"
#include "text/ProfileFile.h"
#include "text/Text.h"

namespace velloran {

namespace {

constexpr std::uint32_t kPayloadBytes = 4 * kParaCount;

/// These alter the written file and not the pixels.
constexpr std::array kOutputOnly = {
    PARA_QUALITY,   JPG_RESAMPLE_TYPE, JPG_RESAMPLE_H, JPG_RESAMPLE_V, PARA_JP2_RATE,
    JPG_SRC_SAMPLE, JPG_SRC_QUALITY,   JPG_SRC_CODE,   JPG_OPTIMIZE,   JPG_PROGRESSIVE,
};

std::size_t At(int index) {
    assert(index >= 0 && index < kParaCount);
    return static_cast<std::size_t>(index);
}

bool IsOutputOnly(int index) {
    return std::ranges::find(kOutputOnly, index) != kOutputOnly.end();
}

void StoreWord(std::uint32_t word, std::span<std::uint8_t> bytes) {
    for (std::size_t i = 0; i < 4; ++i)
        bytes[i] = static_cast<std::uint8_t>(word >> (8 * i));
}

std::uint32_t LoadWord(std::span<const std::uint8_t> bytes) {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i)
        word |= std::uint32_t{bytes[i]} << (8 * i);
    return word;
}

/// A profile file may hold anything under these; no other value is limited.
void LimitStored(ParaValues& values) {
    for (const int index : {PARA_CROPPING_P_LEFT, PARA_CROPPING_P_TOP, PARA_CROPPING_P_RIGHT,
                            PARA_CROPPING_P_BOTTOM, PARA_DPI}) {
        const ParaRow& row = ParaRowOf(index);
        values[At(index)] = std::clamp(values[At(index)], *row.min, *row.max);
    }
}

}  // namespace

CParaBlock::CParaBlock() : values_(DefaultParaValues()) {}

CParaBlock::CParaBlock(const CParaBlock& other) {
    const std::lock_guard hold(other.lock_);
    values_ = other.values_;
    name_ = other.name_;
}

CParaBlock& CParaBlock::operator=(const CParaBlock& other) {
    CopyFrom(other, /*ignoreOutputOnly=*/false);
    return *this;
}

std::unique_ptr<CParaBlock> CParaBlock::CreateBlock() {
    return std::make_unique<CParaBlock>();
}

std::int32_t CParaBlock::GetPara(int index) const {
    const std::lock_guard hold(lock_);
    return values_[At(index)];
}

void CParaBlock::SetPara(int index, std::int32_t value) {
    const std::lock_guard hold(lock_);
    values_[At(index)] = value;
}

ParaValues CParaBlock::GetValues() const {
    const std::lock_guard hold(lock_);
    return values_;
}

Settings CParaBlock::GetSettings() const {
    const std::lock_guard hold(lock_);
    return {values_, name_};
}

std::u16string CParaBlock::GetName() const {
    const std::lock_guard hold(lock_);
    return name_;
}

void CParaBlock::SetName(std::u16string_view name) {
    name = name.substr(0, std::min(name.find(u'\0'), kNameLength));
    const std::lock_guard hold(lock_);
    name_ = name;
}

void CParaBlock::Reset() {
    const std::lock_guard hold(lock_);
    name_.clear();
    values_ = DefaultParaValues();
}

std::u16string_view CParaBlock::GetParaLabel(ParaGroup group) {
    const auto position = static_cast<std::size_t>(group);
    return position < std::size(labels::kGroups) ? labels::kGroups[position].Text()
                                                 : std::u16string_view();
}

bool CParaBlock::CopyFrom(const CParaBlock& other, bool ignoreOutputOnly) {
    // Two blocks may be copied into each other at once: when the second lock is taken, the first
    // is given back and the order turned.
    const std::scoped_lock hold(lock_, other.lock_);
    bool same = name_ == other.name_;
    name_ = other.name_;
    for (int i = 0; i < kParaCount; ++i) {
        if (values_[At(i)] != other.values_[At(i)] && !(ignoreOutputOnly && IsOutputOnly(i)))
            same = false;
    }
    values_ = other.values_;
    return same;
}

bool CParaBlock::AssignValues(std::span<const std::int32_t, kParaCount> values) {
    const std::lock_guard hold(lock_);
    const bool same = std::ranges::equal(values_, values);
    std::ranges::copy(values, values_.begin());
    return same;
}

bool CParaBlock::Equals(const CParaBlock& other) const {
    const std::scoped_lock hold(lock_, other.lock_);
    return values_ == other.values_ && EqualIgnoringCase(name_, other.name_);
}

bool CParaBlock::ReadFromIni(std::u16string_view section, const std::string& file) {
    Reset();
    ProfileFile profile;
    if (!LoadProfile(file, profile))
        return false;
    const std::lock_guard hold(lock_);
    for (int i = 0; i < kParaCount; ++i) {
        std::int32_t& value = values_[At(i)];
        value = profile.GetInt(section, ToUtf16(ParaRowOf(i).name), value);
    }
    LimitStored(values_);
    return true;
}

bool CParaBlock::WriteToIni(std::u16string_view section, const std::string& file,
                            FileError* error) const {
    ProfileFile profile;
    if (!LoadProfile(file, profile, error))
        return false;
    const ParaValues values = GetValues();
    std::vector<ProfileFile::KeyAndValue> keys;
    for (int i = 0; i < kParaCount; ++i) {
        const ParaRow& row = ParaRowOf(i);
        if (values[At(i)] != row.defaultValue)
            keys.emplace_back(ToUtf16(row.name), DecimalText(values[At(i)]));
    }
    profile.ReplaceSection(section, keys);
    return SaveProfile(profile, file, error);
}

std::array<std::uint8_t, CParaBlock::kClipboardBytes> CParaBlock::ToClipboard() const {
    static_assert(kClipboardBytes == 4 + kPayloadBytes);
    std::array<std::uint8_t, kClipboardBytes> payload{};
    const std::span bytes(payload);
    StoreWord(kPayloadBytes, bytes);
    const ParaValues values = GetValues();
    for (std::size_t i = 0; i < values.size(); ++i)
        StoreWord(static_cast<std::uint32_t>(values[i]), bytes.subspan(4 + 4 * i));
    return payload;
}

bool CParaBlock::FromClipboard(std::span<const std::uint8_t> payload) {
    if (payload.size() < kClipboardBytes || LoadWord(payload) != kPayloadBytes)
        return false;
    ParaValues values{};
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<std::int32_t>(LoadWord(payload.subspan(4 + 4 * i)));
    AssignValues(values);
    return true;
}

CParaBlock& GlobalBlock() {
    static CParaBlock block;
    return block;
}

}  // namespace velloran
