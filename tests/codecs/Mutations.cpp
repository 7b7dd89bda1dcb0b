#include "codecs/Mutations.h"

#include <algorithm>
#include <array>
#include <random>

namespace velloran::test {
namespace {

class Damager {
 public:
    explicit Damager(std::uint32_t seed) : random_(seed) {}

    void Damage(std::string& file) {
        for (std::uint32_t left = 1 + Below(4); left > 0 && !file.empty(); --left)
            DamageOnce(file);
    }

 private:
    // std::uniform_int_distribution differs between libraries; the remainder does not.
    std::uint32_t Below(std::size_t limit) { return static_cast<std::uint32_t>(random_() % limit); }

    std::size_t Place(const std::string& file) {
        const std::size_t head = std::min<std::size_t>(file.size(), 256);
        return Below(Below(2) == 0 ? head : file.size());
    }

    void PutWord(std::string& file, std::size_t at) {
        static constexpr std::array<std::uint32_t, 8> kExtremes = {
            0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0xFFFF, 0x10000, 0x00FFFFFF};
        const std::uint32_t word = kExtremes[Below(kExtremes.size())];
        for (std::size_t i = 0; i < 4 && at + i < file.size(); ++i)
            file[at + i] = static_cast<char>(word >> 8 * i);
    }

    void DamageOnce(std::string& file) {
        static constexpr std::array<int, 7> kBytes = {0, 1, 2, 127, 128, 254, 255};
        const std::size_t at = Place(file);
        const std::size_t run = std::min<std::size_t>(1 + Below(16), file.size() - at);
        switch (Below(6)) {
            case 0:
                file[at] = static_cast<char>(file[at] ^ (1 << Below(8)));
                break;
            case 1:
                file[at] = static_cast<char>(kBytes[Below(kBytes.size())]);
                break;
            case 2:
                PutWord(file, at);
                break;
            case 3:
                for (std::size_t i = 0; i < run; ++i)
                    file[at + i] = static_cast<char>(Below(256));
                break;
            case 4:
                file.erase(at, run);
                break;
            default:
                file.insert(at, file.substr(at, run));
        }
    }

    std::mt19937 random_;
};

}  // namespace

std::vector<std::string> TruncationsOf(const std::string& file) {
    std::vector<std::size_t> lengths;
    for (std::size_t n = 0; n < std::min<std::size_t>(file.size(), 100); ++n)
        lengths.push_back(n);
    const std::size_t step = std::max<std::size_t>(1, file.size() / 100);
    for (std::size_t n = 100; n < file.size(); n += step)
        lengths.push_back(n);
    for (std::size_t less = 1; less <= std::min<std::size_t>(3, file.size()); ++less)
        lengths.push_back(file.size() - less);
    std::sort(lengths.begin(), lengths.end());
    lengths.erase(std::unique(lengths.begin(), lengths.end()), lengths.end());

    std::vector<std::string> beginnings;
    for (const std::size_t length : lengths)
        beginnings.push_back(file.substr(0, length));
    return beginnings;
}

void ForEachMutation(const std::string& file, int count, std::uint32_t seed,
                     const std::function<void(const std::string&)>& visit) {
    Damager damager(seed);
    for (int i = 0; i < count; ++i) {
        std::string copy = file;
        damager.Damage(copy);
        visit(copy);
    }
}

}  // namespace velloran::test
