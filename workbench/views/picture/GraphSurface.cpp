#include "workbench/views/picture/GraphSurface.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace TeskPlus {

using namespace Tesk;

GraphDrawing::GraphDrawing(GraphTarget& target, double zoom, double pixelRatio) : settings_(zoom)
{
    Graph::LineWidth = std::max(1, static_cast<int>(std::lround(Graph::LineWidth * pixelRatio)));
    Graph::FontSize = std::max(1, static_cast<int>(std::lround(Graph::FontSize * pixelRatio)));
    Graph::DrawTo(&target);
}

GraphDrawing::~GraphDrawing()
{
    Graph::DrawTo(nullptr);
}

QImage ShownPixels(CairoTarget& surface)
{
    const std::uint8_t* pixels = surface.Pixels();
    if (!pixels) return {};
    return QImage(pixels, surface.Width(), surface.Height(), surface.Stride(), QImage::Format_RGB32);
}

void GraphWidget::Redraw()
{
    isDrawn_ = false;
    update();
}

void GraphWidget::paintEvent(QPaintEvent*)
{
    const double ratio = devicePixelRatioF();
    const QRect area = Area();
    const int width = static_cast<int>(std::ceil(std::max(area.width(), 1) * ratio));
    const int height = static_cast<int>(std::ceil(std::max(area.height(), 1) * ratio));
    if (!isDrawn_ || width != surface_.Width() || height != surface_.Height()) {
        surface_.Resize(width, height);
        surface_.SetOrigin({0, 0});
        surface_.FillRectangle(0, 0, width, height, RgbPixel(255, 255, 255));
        const GraphDrawing drawing(surface_, 1.0, ratio);
        if (Draw) Draw(width, height);
        isDrawn_ = true;
    }
    QImage shown = ShownPixels(surface_);
    shown.setDevicePixelRatio(ratio);
    QPainter painter(this);
    if (!margins_.isNull()) painter.fillRect(rect(), Qt::white);
    painter.drawImage(QPointF(area.topLeft()), shown);
}

} // namespace TeskPlus
