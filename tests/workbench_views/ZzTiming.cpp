#include "Workbench.h"
#include <QElapsedTimer>
#include <cstdio>
namespace TeskPlus { namespace {
TEST_F(Workbench, Timing)
{
    Open(2000, 1500);
    ASSERT_TRUE(Add(L"Operator", L"Binarize") || Add(L"Operator", L"Invert"));
    for (const auto& op : form_.GetEngine().Operations) std::printf("op %ls\n", Engine::Tree[op->Node]->Label);
    QElapsedTimer t;
    double pull = 0, paint = 0;
    for (int zoom : {-1, 0, 1, -2}) {
        for (const char* title : {"Image0", "Inverted0"})
            if (auto* box = Part<QSpinBox>(title, "numericUpDown1")) box->setValue(zoom);
        QApplication::processEvents();
        pull = paint = 0;
        double engine = 0;
        for (int i = 0; i < 20; i++) {
            Operation* op = form_.GetEngine().Operations[1].get();
            t.restart();
            form_.Handler().DoRun(op, op->Args[0].Variable, false, false, true, false);
            pull += t.nsecsElapsed() * 1e-6;
            engine += op->Duration * 1e-3;
            t.restart();
            QApplication::processEvents();
            paint += t.nsecsElapsed() * 1e-6;
        }
        std::printf("zoom %d: DoRun %.2f ms (of it the operation %.2f), events and paint %.2f ms\n", zoom, pull / 20, engine / 20, paint / 20);
    }
    Image& image = Value<Image>(L"Image0");
    image.Set(2000, 1500, Rgb);
    for (int zoom : {-1, 0, -2}) {
        Controller(L"Image0").UpdateControl(false, false);
        Part<QSpinBox>("Image0", "numericUpDown1")->setValue(zoom);
        QApplication::processEvents();
        t.restart();
        for (int i = 0; i < 20; i++) { Controller(L"Image0").UpdateControl(false, true); QApplication::processEvents(); }
        std::printf("Rgb zoom %d: push and paint %.2f ms\n", zoom, t.nsecsElapsed() * 1e-6 / 20);
    }
}
} }
