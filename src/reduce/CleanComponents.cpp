#include <algorithm>
#include <cstring>

#include "core/Refusal.h"
#include "core/StepContext.h"
#include "reduce/CleanPage.h"
#include "reduce/ComponentList.h"

namespace velloran {
namespace {

constexpr int kWidestPage = 65536;  // columns of a run are 16 bits
constexpr int kSmallestWithEdge = 5;

template <typename Unwanted>
void RemoveWhere(ComponentList& list, Unwanted&& unwanted) {
    for (std::size_t i = list.Components().size(); i-- > 0;)
        if (!list.Components()[i].IsEmpty() && unwanted(list.Components()[i]))
            list.Remove(i);
}

bool MeetsSize(int size, int limit, int condition) {
    return condition == 0 ? size > limit : size < limit;
}

void RemoveUnwanted(ComponentList& list, const CleanRequest& request, int width, int height) {
    if (request.despeckleSize > 0)
        RemoveWhere(list, [&](const Component& c) {
            return c.maxX - c.minX <= request.despeckleSize &&
                   c.maxY - c.minY <= request.despeckleSize;
        });
    if (request.blockWidth != 0 && request.blockHeight != 0)
        RemoveWhere(list, [&](const Component& c) {
            return MeetsSize(c.maxX - c.minX, request.blockWidth, request.blockWidthCondition) &&
                   MeetsSize(c.maxY - c.minY, request.blockHeight, request.blockHeightCondition);
        });
    if (request.deBlack && width >= kSmallestWithEdge && height >= kSmallestWithEdge)
        RemoveWhere(list, [&](const Component& c) {
            return c.minX < 2 || c.minY < 2 || c.maxX > width - 3 || c.maxY > height - 3;
        });
}

QT::QRect BoxOf(const ComponentList& list, const CleanRequest& request, int width, int height) {
    QT::QRect box{width, height, -1, -1};
    for (const Component& c : list.Components())
        if (!c.IsEmpty())
            box = {std::min(box.left, c.minX), std::min(box.top, c.minY),
                   std::max(box.right, c.maxX), std::max(box.bottom, c.maxY)};
    if (box.right < 0)
        box = {0, 0, width, height};
    if (request.growBox && request.despeckleSize > 0) {
        const int grow = std::min(request.despeckleSize, std::max(width, height));
        box = {std::max(box.left - grow, 0), std::max(box.top - grow, 0), box.right + grow,
               box.bottom + grow};
    }
    return box;
}

void Repaint(const ComponentList& list, PlaneView topDown) {
    for (int y = 0; y < topDown.height; ++y)
        std::memset(topDown.Row(y).data(), 255, topDown.Row(y).size());
    const CancelToken cancel = CurrentCancel();
    for (const Component& c : list.Components()) {
        if (cancel.IsCancelled())
            return;
        const Run* run = list.RunsOf(c);
        for (std::int32_t i = 0; i < c.runs; ++i, ++run)
            std::memset(topDown.Row(run->y).data() + run->x1, 0,
                        static_cast<std::size_t>(run->x2) - run->x1 + 1);
    }
}

}  // namespace

int CleanComponents(CDibImage& image, QT::QRect* outBox, const CleanRequest& request) {
    if (!image.IsValid() || image.GetBpp() != 8 || image.GetWidth() > kWidestPage)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        const PlaneView plane = TopDownViewOf(image);
        ComponentList list(plane, image.GetXDpi());
        RemoveUnwanted(list, request, plane.width, plane.height);
        if (outBox != nullptr)
            *outBox = BoxOf(list, request, plane.width, plane.height);
        if (request.apply)
            Repaint(list, plane);
        return 1;
    });
}

}  // namespace velloran
