#include "workbench/views/values/HelpWidget.h"

#include <algorithm>

#include <QFontMetrics>

namespace TeskPlus {

namespace {
bool isHelp = true;
}

HelpWidget::HelpWidget(const QString& text, helpStyle style, QWidget* parent) : QLabel(text, parent)
{
    QFont face = font();
    face.setBold(style == helpStyle::Title);
    face.setItalic(style == helpStyle::Row);
    setFont(face);
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    // The help of a row is a narrow column beside its control, so that the windows leave room for the pictures.
    const int width = style == helpStyle::Row ? rowWidth : maximumWidth;
    // In a grid a label fills its cells: the layout counts its lines for their width.
    if (style == helpStyle::Regular) setMaximumWidth(maximumWidth);
    // A wrapped label asks for little width by itself, and would become a tall column.
    setMinimumWidth(std::min(width, QFontMetrics(face).horizontalAdvance(text) + 8));
    // Shown by whatever it is put into: by itself it would be a window for a moment.
    if (!isHelp) setVisible(false);
}

bool HelpWidget::IsHelp()
{
    return isHelp;
}

void HelpWidget::SetIsHelp(bool shown)
{
    isHelp = shown;
}

void HelpWidget::ToggleHelp(QWidget& window)
{
    for (HelpWidget* help : window.findChildren<HelpWidget*>())
        help->setVisible(isHelp);
}

} // namespace TeskPlus
