// A text that helps, shown or hidden with all others by "Show Help".
#pragma once

#include <QLabel>

namespace TeskPlus {

enum class helpStyle
{
    Regular = 0,
    Title = 1, ///< bold
    Row = 2    ///< italic
};

class HelpWidget : public QLabel
{
    Q_OBJECT

public:
    static constexpr int maximumWidth = 400, rowWidth = 230;

    HelpWidget(const QString& text, helpStyle style, QWidget* parent = nullptr);

    /// Whether help texts are shown; those made later follow it.
    static bool IsHelp();
    static void SetIsHelp(bool shown);
    /// Shows or hides every help text in a window.
    static void ToggleHelp(QWidget& window);
};

} // namespace TeskPlus
