#include "workbench/views/FileDialogs.h"

#include "workbench/views/Text.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>

namespace TeskPlus {

QStringList& FileDialogs::Pending()
{
    static QStringList paths;
    return paths;
}

QString FileDialogs::QtFilter(const std::wstring& filter)
{
    const QStringList parts = Qt16(filter).split('|');
    QStringList entries;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        const QString name = parts[i].section('(', 0, 0).trimmed();
        const QString patterns = parts[i + 1] == "*.*" ? QString("*") : QString(parts[i + 1]).replace(';', ' ');
        entries << name + " (" + patterns + ")";
    }
    return entries.join(";;");
}

QStringList FileDialogs::Ask(QWidget* parent, const FileDialogInfo& info, bool multiple)
{
    if (!Pending().isEmpty()) {
        const QStringList all = Pending();
        if (multiple) {
            Pending().clear();
            return all;
        }
        return {Pending().takeFirst()};
    }
    // The directory of the latest choice, as long as the program runs.
    static QString directory;
    // The entry of each filter that was chosen last.
    static QHash<QString, QString> chosen;
    QFileDialog dialog(parent);
    dialog.setObjectName("FileDialog");
    dialog.setDirectory(directory);
    const QString filter = QtFilter(info.Filter);
    dialog.setNameFilter(filter.isEmpty() ? QString("*") : filter);
    dialog.selectNameFilter(chosen.value(filter));
    dialog.setAcceptMode(info.Save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(info.Save  ? QFileDialog::AnyFile
                       : multiple ? QFileDialog::ExistingFiles
                                  : QFileDialog::ExistingFile);
    if (info.Save) {
        // The first ending of the filter, for a name without one.
        const qsizetype dot = filter.indexOf("*.");
        if (dot >= 0) dialog.setDefaultSuffix(filter.mid(dot + 2).section(QRegularExpression("[ )]"), 0, 0));
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
    chosen[filter] = dialog.selectedNameFilter();
    directory = QFileInfo(dialog.selectedFiles().front()).absolutePath();
    return dialog.selectedFiles();
}

} // namespace TeskPlus
