// Where views draw through Graph: a raster target whose pixels are shown as they are.
#pragma once

#include "foundation/CairoTarget.h"
#include "foundation/Graph.h"

#include <QImage>
#include <QMargins>
#include <QWidget>

#include <functional>

namespace TeskPlus {

/// Makes a surface Graph's target for the time of a drawing. On a dense screen lines and texts grow with the pixels.
class GraphDrawing
{
public:
    GraphDrawing(Tesk::GraphTarget& target, double zoom, double pixelRatio);
    ~GraphDrawing();
    GraphDrawing(const GraphDrawing&) = delete;
    GraphDrawing& operator=(const GraphDrawing&) = delete;

private:
    Tesk::GraphSettings settings_;
};

/// The pixels of a surface, not copied: good until it is resized.
QImage ShownPixels(Tesk::CairoTarget& surface);

/// A widget that shows what Graph draws, at the resolution of its screen.
class GraphWidget : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    /// Called with the surface's size in its own pixels; it is white.
    std::function<void(int Width, int Height)> Draw;
    /// Room around the drawing, which stays white.
    void SetMargins(const QMargins& margins) { margins_ = margins; }
    /// Where the drawing stands in the widget.
    QRect Area() const { return rect().marginsRemoved(margins_); }
    /// Draws anew; until then the surface is kept.
    void Redraw();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Tesk::CairoTarget surface_;
    QMargins margins_;
    bool isDrawn_ = false;
};

} // namespace TeskPlus
