#include "workbench/views/Splash.h"

#include "foundation/Status.h"
#include "workbench/views/Text.h"

#include <QPainter>

namespace TeskPlus {

Splash::Splash(QWidget* parent) : QWidget(parent, Qt::Tool | Qt::FramelessWindowHint)
{
    setObjectName("Splash");
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFixedSize(386, 292);
}

void Splash::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient ground(0, 0, width(), height());
    ground.setColorAt(0, QColor(18, 42, 66));
    ground.setColorAt(1, QColor(36, 92, 122));
    painter.fillRect(rect(), ground);
    // A part under a gauge: what the program is about.
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(210, 222, 230));
    painter.drawEllipse(QPointF(278, 120), 66, 66);
    painter.setBrush(QColor(28, 66, 94));
    painter.drawEllipse(QPointF(278, 120), 26, 26);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(90, 220, 130), 2, Qt::DashLine));
    painter.drawEllipse(QPointF(278, 120), 80, 80);
    painter.setPen(QPen(QColor(255, 190, 60), 2));
    painter.drawLine(QPointF(198, 120), QPointF(358, 120));
    for (const double x : {212.0, 252.0, 304.0, 344.0})
        painter.drawLine(QPointF(x, 112), QPointF(x, 128));
    painter.setPen(Qt::white);
    QFont face = font();
    face.setPointSizeF(30);
    face.setBold(true);
    painter.setFont(face);
    painter.drawText(QRectF(24, 200, 340, 50), Qt::AlignLeft | Qt::AlignVCenter, "Tesk+");
    face.setPointSizeF(10);
    face.setBold(false);
    painter.setFont(face);
    painter.drawText(QRectF(26, 246, 340, 24), Qt::AlignLeft | Qt::AlignVCenter,
                     tr("Machine vision workbench, version %1").arg(Qt16(Tesk::Status::UnicodeVersion)));
}

} // namespace TeskPlus
