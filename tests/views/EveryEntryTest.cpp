// Every entry of the menus is clicked once, in a sequence that gives it inputs where there are any.
#include "tests/views/Workbench.h"

#include <QRegularExpression>

using namespace TeskPlus;

TEST(EveryEntry, EndsInAResultAMessageOrIsDisabled)
{
    Workbench bench;
    QTemporaryDir folder;
    std::vector<QAction*> entries;
    std::function<void(const QList<QAction*>&)> visit = [&](const QList<QAction*>& actions) {
        for (QAction* action : actions) {
            if (action->menu()) visit(action->menu()->actions());
            if (!action->menu() && action->data().isValid() && action->isEnabled()) entries.push_back(action);
        }
    };
    visit(bench.Form().menuBar()->actions());
    ASSERT_GE(entries.size(), 50u);

    // Whatever is asked: a question whether to insert or append is answered with the last button, other messages close.
    int messages = 0;
    QTimer answers;
    QObject::connect(&answers, &QTimer::timeout, [&] {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal) return;
        messages++;
        modal->close();
    });
    answers.start(5);

    const auto start = [&] {
        while (bench.Count() > 0)
            bench.Form().Handler().DeleteToEnd(0);
        bench.ReadImage();
        bench.ReadImage();
        for (const wchar_t* name : {L"Region", L"Region", L"Blobs"})
            bench.Form().Handler().MenuItemClicked(ItemOfMethod(Engine::FindMethod(name, nullptr, L"Automatic")));
        Workbench::Settle();
        ASSERT_EQ(bench.Count(), 5);
    };
    // Of regions and blobs these find no input there: a box has no controller, and there is no path and no calibration.
    const QStringList without{"Box", "Path", "Evaluate with Calibration"};
    // The pictures are gray, the file is none of a region, and regions without a pixel come of some that are combined.
    const QRegularExpression unfit("image type \\((Gray|Rgb)\\)|is not a Region file|region is void");
    start();
    int done = 0, refused = 0;
    for (QAction* entry : entries) {
        const std::string name = entry->text().toStdString();
        const int before = bench.Count(), toldBefore = messages;
        const std::wstring owner = Engine::Tree[ClassOfNode(entry->data().toInt())]->Identifier;
        const bool isOfPixelSets = owner == L"Region" || owner == L"Blobs";
        FileDialogs::Pending() = QStringList{name.find("Write") != std::string::npos ? folder.filePath("written.png")
                                                                                     : Workbench::Picture()};
        entry->trigger();
        Workbench::Settle();
        FileDialogs::Pending().clear();
        if (bench.Count() == before) {
            // Not added: then a message said why.
            EXPECT_GT(messages, toldBefore) << name;
            refused++;
            EXPECT_TRUE(!isOfPixelSets || without.contains(entry->text())) << name;
        } else {
            ASSERT_EQ(bench.Count(), before + 1) << name;
            ASSERT_TRUE(bench.OperationWindow()) << name;
            done++;
            const QString told = bench.StatusText();
            EXPECT_TRUE(!isOfPixelSets || told.isEmpty() || told.contains(unfit)) << name << ": " << told.toStdString();
        }
        // A failed operation stops the sequence, and a long one only costs time.
        if (!bench.StatusText().isEmpty() || bench.Count() > 9) start();
    }
    RecordProperty("entries", static_cast<int>(entries.size()));
    RecordProperty("refused", refused);
    EXPECT_GT(done, refused);
}
