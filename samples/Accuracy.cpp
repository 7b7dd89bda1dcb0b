#include "samples/Accuracy.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "codecs/Jpeg.h"
#include "io/MemorySink.h"
#include "io/MemorySource.h"
#include "page/MeasureBox.h"
#include "page/MeasureCorners.h"
#include "page/MeasureSkew.h"
#include "page/MeasureSplit.h"

namespace velloran::samples {

namespace {

constexpr AccuracyRowText kRows[kAccuracyRows] = {
    {"skew", "at least 1200 pixels, 8 lines or more", 0.1, 1, "degrees", 92},
    {"content box, no compensation", "all that hold text", 4, 1, "pixels at 300 dpi", 95},
    {"content box, as by default", "all that hold content", 0.0001, 100, "% of the ink cut", 97},
    {"gutter, dark or slanted, black edges", "spreads", 0.01, 100, "% of the width", 95},
    {"gutter, soft, or rules and pictures beside", "spreads", 0.01, 100, "% of the width", 75},
    {"corners", "photographs", 0.007, 100, "% of the diagonal", 92},
};

constexpr int kLeastSkewSide = 1200;
constexpr std::size_t kLeastLines = 8;

/// The picture after it was stored as JPEG.
CDibImage ThroughJpeg(CDibImage image, int quality) {
    MemorySink sink;
    FileError error;
    if (!SaveJpeg(sink, image, nullptr, quality, image.GetXDpi(), {}, &error))
        throw std::runtime_error("cannot write JPEG: " + error.detail);
    MemorySource source(sink.Bytes());
    CDibImage loaded;
    LoadNotes notes;
    if (!LoadJpeg(source, loaded, false, notes, &error))
        throw std::runtime_error("cannot read JPEG: " + error.detail);
    return loaded;
}

class PageScorer {
 public:
    explicit PageScorer(const CorpusPage& page) : corpus_(page) {
        SampleRequest request = page.request;
        request.wantInkMask = true;
        page_ = MakeSamplePage(request);
        if (page.jpegQuality > 0)
            page_.image = ThroughJpeg(std::move(page_.image), page.jpegQuality);
    }

    std::vector<AccuracyScore> Score() {
        ScoreSkew();
        ScoreBox();
        ScoreSplit();
        ScoreCorners();
        return std::move(scores_);
    }

 private:
    const Truth& GetTruth() const { return page_.truth; }
    const CDibImage& Image() const { return page_.image; }
    Lie GetLie() const { return corpus_.request.recipe->lie; }

    void Add(AccuracyRow row, double error, std::optional<double> sure) {
        const AccuracyRowText& text = TextOf(row);
        scores_.push_back({text.finding, corpus_.group, row, error, error <= text.tolerance, sure});
    }
    void AddNothingToFind(const char* finding, double sure) {
        scores_.push_back({finding, corpus_.group, std::nullopt, 0, false, sure});
    }

    void ScoreSkew() {
        const Truth& truth = GetTruth();
        const bool isTurned = GetLie() == Lie::kFull || GetLie() == Lie::kOnBlack;
        const bool isLarge =
            Image().GetWidth() >= kLeastSkewSide && Image().GetHeight() >= kLeastSkewSide;
        const bool holdsLines = truth.lines.size() >= kLeastLines;
        if (!isTurned || (holdsLines && !isLarge) || (!holdsLines && !truth.lines.empty()) ||
            corpus_.request.recipe->content == Content::kComic)
            return;
        const bool vertical = !truth.lines.empty() && truth.lines[0].vertical;
        SkewFinding skew;
        measureSkew(Image(), {}, vertical ? kDeskewColumns : kDeskewRows, skew);
        if (holdsLines)
            Add(AccuracyRow::kSkew, std::fabs(skew.skew.angle - truth.angleDegrees), skew.sure);
        else
            AddNothingToFind("skew", skew.sure);
    }

    /// The share of the content's ink that a cut to the box loses.
    double InkCut(const PageBox& box) const {
        std::int64_t all = 0, cut = 0;
        const ConstPlaneView ink = TopDownViewOf(page_.inkMask);
        for (int y = 0; y < ink.height; ++y) {
            const auto row = ink.Row(y);
            for (int x = 0; x < ink.width; ++x) {
                const int share = row[static_cast<std::size_t>(x)];
                all += share;
                if (x < box.left || x >= box.right || y < box.top || y >= box.bottom)
                    cut += share;
            }
        }
        return all == 0 ? 0 : double(cut) / double(all);
    }

    void ScoreBox() {
        if (GetLie() == Lie::kPhoto)
            return;  // the desk belongs to nobody's content
        ContentBoxRequest request;
        request.searchRect = {0, 0, Image().GetWidth(), Image().GetHeight()};
        BoxFinding asByDefault, tight;
        measureContentBox(Image(), request, asByDefault);
        if (!GetTruth().contentBox) {
            AddNothingToFind("box", asByDefault.sure);
            return;
        }
        Add(AccuracyRow::kBoxInk, InkCut(asByDefault.box), asByDefault.sure);
        if (GetTruth().lines.empty())
            return;
        request.compensation = false;
        measureContentBox(Image(), request, tight);
        const Box& truth = *GetTruth().contentBox;
        const PageBox& box = tight.box;
        const double worst =
            std::max({std::fabs(box.left - truth.left), std::fabs(box.top - truth.top),
                      std::fabs(box.right - truth.right), std::fabs(box.bottom - truth.bottom)});
        Add(AccuracyRow::kBox, worst * 300 / corpus_.request.dpi, tight.sure);
    }

    void ScoreSplit() {
        if (GetLie() == Lie::kPhoto || GetLie() == Lie::kOnBlack)
            return;
        SplitFinding split;
        measureSplit(Image(), split);
        if (!GetTruth().gutter) {
            AddNothingToFind("split", split.sure);
            return;
        }
        const PageLine& mid = split.lines.mid;
        const GutterTruth& truth = *GetTruth().gutter;
        const double error =
            std::max(std::fabs(mid.top - truth.top.x), std::fabs(mid.bottom - truth.bottom.x)) /
            Image().GetWidth();
        Add(corpus_.isEasyGutter ? AccuracyRow::kGutterEasy : AccuracyRow::kGutterHard, error,
            split.sure);
    }

    void ScoreCorners() {
        if (GetLie() != Lie::kPhoto && GetLie() != Lie::kFull)
            return;
        CornersFinding finding;
        measureCorners(Image(), 0, 0, finding);
        if (GetLie() == Lie::kFull) {
            AddNothingToFind("corners", finding.sure);
            return;
        }
        double worst = 1;
        if (finding.found) {
            worst = 0;
            const auto& truth = GetTruth().pages.front().corners;
            const double diagonal = std::hypot(Image().GetWidth(), Image().GetHeight());
            for (std::size_t i = 0; i < truth.size(); ++i)
                worst = std::max(worst, std::hypot(finding.corners[i].x - truth[i].x,
                                                   finding.corners[i].y - truth[i].y) /
                                            diagonal);
        }
        Add(AccuracyRow::kCorners, worst, finding.sure);
    }

    const CorpusPage& corpus_;
    SamplePage page_;
    std::vector<AccuracyScore> scores_;
};

}  // namespace

const AccuracyRowText& TextOf(AccuracyRow row) {
    return kRows[static_cast<int>(row)];
}

std::vector<AccuracyScore> ScorePage(const CorpusPage& page) {
    return PageScorer(page).Score();
}

}  // namespace velloran::samples
