// Asking for file names.
#pragma once

#include "workbench/logic/IOperationViews.h"

#include <QStringList>

class QWidget;

namespace TeskPlus {

class FileDialogs
{
public:
    /// Paths for the next questions, which are then not asked: a picture dropped on the window, or named at the start.
    static QStringList& Pending();
    /// The chosen paths, one unless `multiple`; empty if the user cancelled.
    static QStringList Ask(QWidget* parent, const FileDialogInfo& info, bool multiple = false);
    /// "Images (*.bmp *.png);;All Files (*)" of "Images|*.bmp;*.png|All Files|*.*".
    static QString QtFilter(const std::wstring& filter);
};

} // namespace TeskPlus
