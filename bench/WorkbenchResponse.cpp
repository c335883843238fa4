// What the workbench's windows cost beside the operations themselves: the start, a slider step in a sequence of ten
// operations on a picture of 2000 x 1500, and the building of an operation's panel. It opens the real window, so it
// needs a display or QT_QPA_PLATFORM=offscreen.
#include "image/Operator.h"
#include "workbench/logic/OperationHandler.h"
#include "workbench/views/FileDialogs.h"
#include "workbench/views/MainForm.h"
#include "workbench/views/OperationForm.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QSlider>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

using namespace TeskPlus;

namespace {

using Clock = std::chrono::steady_clock;

double Since(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// Until everything that waits is done, paintings too.
void Settle()
{
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QApplication::processEvents();
}

void PrintTimes(const char* what, std::vector<double> times)
{
    std::sort(times.begin(), times.end());
    std::printf("%-44s median %6.2f ms   longest %6.2f ms   of %zu\n", what, times[times.size() / 2], times.back(),
                times.size());
}

void Choose(MainForm& form, const QStringList& path)
{
    QList<QAction*> actions = form.menuBar()->actions();
    QAction* found = nullptr;
    for (const QString& text : path) {
        found = nullptr;
        for (QAction* action : actions)
            if (action->text() == text) found = action;
        if (!found) {
            std::fprintf(stderr, "no menu entry %s\n", qPrintable(path.join(" > ")));
            std::exit(1);
        }
        if (found->menu()) actions = found->menu()->actions();
    }
    found->trigger();
    Settle();
}

/// A picture with noise, as large as the name says.
QString Picture(const QTemporaryDir& folder, PixelTypes type)
{
    Image image;
    image.Set(2000, 1500, type);
    std::uint32_t state = 1;
    for (int y = 0; y < image.Height; y++)
        for (int i = 0; i < image.Width * (type == Rgb ? 3 : 1); i++) {
            state = state * 1664525u + 1013904223u;
            image.Row(y)[i] = static_cast<std::uint8_t>((state >> 26) + static_cast<std::uint32_t>(i + y) / 24);
        }
    const QString path = folder.filePath(type == Rgb ? "color.bmp" : "gray.bmp");
    image.Write(path.toUtf8().constData());
    return path;
}

class Sequence
{
public:
    Sequence(MainForm& form, const QString& picture, const QStringList& second) : form_(form)
    {
        form.OpenImage(picture);
        Settle();
        Add(second);
        for (int i = 0; i < 4; i++) {
            Add({"Process", "Convolution", "Low Pass...", "Binomial 3 x 3"});
            Add({"Process", "Point to point", "Pixel Conversion...", "Invert"});
        }
    }

    int Count() const { return form_.GetEngine().NumOperations(); }

    /// Moves the slider of the second operation step by step, as the mouse does, and prints what a step costs.
    void Slide(const char* title, const char* argument)
    {
        Select(1);
        auto* slider = Slider(argument);
        std::vector<double> all, own;
        for (int step = 0; step < 40; step++) {
            for (const auto& operation : form_.GetEngine().Operations)
                operation->Duration = 0;
            const int position = slider->minimum() + (slider->maximum() - slider->minimum()) / 4 + step;
            const auto start = Clock::now();
            slider->setValue(position);
            Settle();
            all.push_back(Since(start));
            double run = 0;
            int ran = 0;
            for (const auto& operation : form_.GetEngine().Operations) {
                run += operation->Duration / 1000.0;
                ran += operation->Duration > 0;
            }
            own.push_back(all.back() - run);
            if (step == 0) std::printf("%s: %d of %d operations run\n", title, ran, Count());
        }
        PrintTimes("  a slider step, all", all);
        PrintTimes("  a slider step, without the operations", own);
    }

    /// Selects each operation in turn: its panel is built and its pictures come to the front.
    void BuildPanels()
    {
        std::vector<double> times;
        for (int round = 0; round < 3; round++)
            for (int id = 0; id < Count(); id++)
                times.push_back(Select(id));
        PrintTimes("  a panel, by selecting its operation", times);
    }

private:
    void Add(const QStringList& path) { Choose(form_, path); }

    double Select(int id)
    {
        const operationItemInfo item = form_.Handler().ItemOf(id);
        const auto start = Clock::now();
        form_.Handler().SelectOperation(id, item.ClassNode, item.ChoiceNode);
        Settle();
        return Since(start);
    }

    QSlider* Slider(const char* argument)
    {
        for (auto* window : form_.findChildren<OperationForm*>("OperationForm"))
            if (auto* row = window->isVisible() ? window->findChild<QWidget*>(argument) : nullptr)
                if (auto* slider = row->findChild<QSlider*>("Slider")) return slider;
        std::fprintf(stderr, "no slider %s\n", argument);
        std::exit(1);
    }

    MainForm& form_;
};

void Measure(PixelTypes type, const char* name, const QStringList& second, const char* argument)
{
    const QTemporaryDir folder;
    const QString picture = Picture(folder, type);
    MainForm form(false);
    form.resize(1600, 1000);
    form.show();
    Settle();
    Sequence sequence(form, picture, second);
    sequence.Slide(name, argument);
    sequence.BuildPanels();
}

} // namespace

int main(int argc, char** argv)
{
    const auto start = Clock::now();
    Tesk::Engine::Trace = nullptr;
    Tesk::Status::SIMDLevel(Tesk::Status::BestSIMDLevel());
    QApplication application(argc, argv);
    QApplication::setApplicationName("Tesk+ response");
    QApplication::setOrganizationName("Halden");
    {
        MainForm form(false);
        form.resize(1600, 1000);
        form.show();
        Settle();
        std::printf("from the start of main to a painted window   %6.2f ms\n", Since(start));
    }
    Measure(Gray, "Gray 2000 x 1500", {"Process", "Point to point", "Binarization...", "Threshold"}, "Threshold");
    Measure(Rgb, "Rgb 2000 x 1500", {"Process", "Convolution", "High Pass...", "Unsharp Masking"}, "Strength");
    return 0;
}
