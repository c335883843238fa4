// Tesk+: the workbench.
// usage: tesk-plus [--trace] [--no-splash] [IMAGE...]
#include "workbench/views/MainForm.h"

#include "foundation/Status.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QScreen>

#include <clocale>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    Tesk::Status::SIMDLevel(Tesk::Status::BestSIMDLevel());
    // It sets the user's locale, in which numbers may have a comma; programs and messages have a point.
    std::setlocale(LC_NUMERIC, "C");
    QApplication::setApplicationName("Tesk+");
    QApplication::setOrganizationName("Halden");
    QApplication::setApplicationVersion("6.1.1");
    QCommandLineParser parser;
    parser.setApplicationDescription("Machine vision workbench.");
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption trace("trace", "Print what the engine does on the standard output.");
    const QCommandLineOption noSplash("no-splash", "Start without the splash picture.");
    parser.addOptions({trace, noSplash});
    parser.addPositionalArgument("image", "Images to open.", "[image...]");
    parser.process(application);
    Tesk::Engine::Trace = parser.isSet(trace) ? stdout : nullptr;

    TeskPlus::MainForm form(!parser.isSet(noSplash));
    // Without a window manager nobody else makes it large.
    form.resize(form.screen()->availableSize());
    form.showMaximized();
    QStringList paths;
    for (const QString& path : parser.positionalArguments())
        paths << QFileInfo(path).absoluteFilePath();
    form.OpenWhenSettled(paths);
    return QApplication::exec();
}
