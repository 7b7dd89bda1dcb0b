#include "samples/Texts.h"

#include <array>
#include <utility>

namespace velloran::samples {

namespace {

using Words = std::span<const std::u16string_view>;

constexpr std::u16string_view kChineseSentences[] = {
    u"清晨的雾气还没有散去，河边的小路上已经有人在走。",
    u"他把旧书一本一本地放回架子上，顺手擦去书脊上的灰。",
    u"窗外的雨下得很细，屋里只听见翻页的声音。",
    u"火车在傍晚到站，站台上的灯刚刚亮起来。",
    u"这座桥修好以后，两岸的人来往方便多了。",
    u"老师在黑板上画了一条直线，又画了一条曲线。",
    u"秋天的果园里，枝头的柿子一天比一天红。",
    u"她把信折好，放进抽屉最里面的一格。",
    u"山脚下有一口井，井水冬天温，夏天凉。",
    u"工匠先量尺寸，再下刀，一点也不着急。",
    u"市场里人声很杂，卖鱼的和卖花的挨在一起。",
    u"地图上的这一段没有名字，我们就叫它北坡。",
    u"夜里起了风，船工们把绳子又系紧了一道。",
    u"图书馆的二楼朝南，下午的阳光可以照到第三排书架。",
    u"种子埋下去七天，土面上冒出了第一点绿色。",
    u"钟楼每到整点就响，声音能传到城的另一头。",
    u"孩子们在院子里放风筝，线断了，笑声却没有断。",
    u"这本册子共有一百二十页，其中三十页是插图。",
    u"沿着石阶往上走，大约半个钟头就能看见湖面。",
    u"纸张放久了会变黄，墨色倒还是清楚的。",
    u"厨房里飘出面包的香味，邻居的猫也跟着进了门。",
    u"修表的人说，好的齿轮听起来像远处的雨。",
    u"冬天的田野很安静，只有几只麻雀在雪地上跳。",
    u"他们约好第二年春天，在同一棵树下再见。",
};

constexpr std::u16string_view kLatinSentences[] = {
    u"The morning fog had not yet lifted from the river when the first boats went out.",
    u"He put the old volumes back on the shelf one by one and wiped the dust from their spines.",
    u"A light rain fell outside, and in the room only the turning of pages could be heard.",
    u"The train came in at dusk, just as the lamps along the platform were being lit.",
    u"Since the bridge was finished, people cross from one bank to the other every day.",
    u"On the blackboard the teacher drew a straight line, and then a curve beside it.",
    u"In the orchard the pears grew heavier from week to week until the branches bent.",
    u"She folded the letter twice and laid it in the lowest drawer of the desk.",
    u"There is a well at the foot of the hill whose water is cool in summer and mild in winter.",
    u"A good joiner measures first, measures again, and only then takes up the saw.",
    u"Fish and flowers are sold side by side in the market, and nobody seems to mind.",
    u"This part of the map bears no name, so we agreed to call it the northern slope.",
    u"The wind rose in the night, and the crew made every rope fast a second time.",
    u"In the afternoon the sun reaches the third row of shelves on the upper floor.",
    u"Seven days after sowing, the first green showed above the dark soil.",
    u"The clock strikes every hour, and its sound carries to the far end of the town.",
    u"Children flew kites in the yard; a string broke, but the laughter did not.",
    u"The booklet holds one hundred and twenty pages, thirty of them with pictures.",
    u"Follow the stone steps for half an hour and you will see the lake below.",
    u"Paper turns yellow with the years, while good ink stays clear and black.",
    u"The smell of fresh bread drew the neighbour's cat through the open door.",
    u"A sound gear, the watchmaker said, is like rain that falls far away.",
    u"The fields lay quiet under the snow, and a few sparrows hopped along the fence.",
    u"They agreed to meet again next spring under the very same tree.",
};

constexpr std::u16string_view kChineseTitles[] = {u"河边的早晨", u"旧书与新灯", u"北坡游记",
                                                  u"修表人的话", u"雪后的田野", u"一百二十页"};
constexpr std::u16string_view kLatinTitles[] = {u"Morning by the River", u"Old Books, New Lamps",
                                                u"Notes from the Slope", u"The Watchmaker",
                                                u"Fields after Snow",    u"Six Score Pages"};
constexpr std::u16string_view kChineseSpeech[] = {
    u"快看那边！",     u"今天的风真大啊。", u"我们走吧！",     u"等一等我！",
    u"这本书是谁的？", u"天黑之前能到吗？", u"没关系，再来。", u"原来是这样……",
    u"桥就在前面！",   u"你听见钟声了吗？", u"太好了！",       u"奇怪，灯怎么亮着？",
};
constexpr std::u16string_view kSounds[] = {u"轰！", u"砰！", u"咚！", u"哗啦！", u"嗖！", u"啪！"};
constexpr std::u16string_view kColumns[] = {u"项目", u"一月", u"二月", u"三月",
                                            u"四月", u"五月", u"六月", u"合计"};
constexpr std::u16string_view kRows[] = {u"纸张", u"油墨", u"装订", u"运输", u"灯具", u"木架",
                                         u"茶水", u"邮费", u"修理", u"其他", u"地图", u"卡片"};

std::u16string_view Pick(Words words, Random& random) {
    return words[random.Below(static_cast<int>(words.size()))];
}

std::u16string Number(int value) {
    std::u16string text;
    for (const char digit : std::to_string(value))
        text.push_back(static_cast<char16_t>(digit));
    return text;
}

}  // namespace

TextPile::TextPile(std::span<const std::u16string_view> texts, bool spaced, Random& random)
    : texts_(texts.begin(), texts.end()),
      spaced_(spaced),
      random_(random.Branch()),
      next_(texts.size()) {}

TextPile TextPile::Sentences(Language language, Random& random) {
    const bool chinese = language == Language::kChinese;
    return {chinese ? Words(kChineseSentences) : Words(kLatinSentences), !chinese, random};
}

TextPile TextPile::Speech(Random& random) {
    return {kChineseSpeech, false, random};
}

std::u16string_view TextPile::Next() {
    if (next_ == texts_.size()) {
        for (std::size_t i = texts_.size() - 1; i > 0; --i)
            std::swap(texts_[i], texts_[random_.Below(static_cast<int>(i) + 1)]);
        next_ = 0;
    }
    return texts_[next_++];
}

std::u16string TextPile::Paragraph(int sentences) {
    std::u16string text;
    for (int i = 0; i < sentences; ++i) {
        if (spaced_ && i > 0)
            text += u' ';
        text += Next();
    }
    return text;
}

std::u16string Title(Language language, Random& random) {
    return std::u16string(
        Pick(language == Language::kChinese ? Words(kChineseTitles) : Words(kLatinTitles), random));
}

std::u16string Sound(Random& random) {
    return std::u16string(Pick(kSounds, random));
}

std::u16string TableCell(int row, int column, Random& random) {
    if (row == 0)
        return std::u16string(kColumns[column % std::size(kColumns)]);
    if (column == 0)
        return std::u16string(kRows[(row - 1) % std::size(kRows)]);
    return Number(100 + random.Below(9900));
}

}  // namespace velloran::samples
