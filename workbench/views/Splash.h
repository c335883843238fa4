// The picture shown for a moment at the start.
#pragma once

#include <QWidget>

namespace TeskPlus {

class Splash final : public QWidget
{
    Q_OBJECT

public:
    explicit Splash(QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent*) override { close(); }
};

} // namespace TeskPlus
