// Runs the tests inside an application that needs no screen and keeps its settings apart from the user's.
#include "tests/views/Workbench.h"

#include "image/Image.h"

#include <QSettings>

namespace TeskPlus {

QString Workbench::Picture()
{
    static const QTemporaryDir folder;
    static const QString path = folder.filePath("ramp.png");
    static const bool made = [] {
        Image ramp;
        ramp.Set(200, 120, Gray);
        for (int y = 0; y < 120; y++)
            for (int x = 0; x < 200; x++)
                ramp.Row(y)[x] = static_cast<std::uint8_t>(x);
        ramp.Write(path.toStdString().c_str());
        return Status::Error().Code == NoError;
    }();
    EXPECT_TRUE(made);
    return path;
}

} // namespace TeskPlus

namespace {

/// Each test begins as the program's first start, whatever those before it have left in the settings.
class FirstStart final : public testing::EmptyTestEventListener
{
    void OnTestStart(const testing::TestInfo&) override { QSettings("Halden", "Tesk+").clear(); }
};

} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QTemporaryDir settings;
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());
    QApplication application(argc, argv);
    Tesk::Engine::Trace = nullptr;
    testing::UnitTest::GetInstance()->listeners().Append(new FirstStart);
    return RUN_ALL_TESTS();
}
