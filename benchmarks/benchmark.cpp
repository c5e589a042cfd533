#include "app/MainWindow.h"
#include "platform/UserSettings.h"
#include "support/AudioSamples.h"
#include "support/Driver.h"
#include "support/Sandbox.h"

#include <QLineEdit>
#include <QListWidget>

#include <cstdio>

namespace
{
/// The longest time between two turns of the event loop since it was made.
class Freeze
{
public:
    Freeze()
    {
        QObject::connect(&timer, &QTimer::timeout, [this] { longest = qMax(longest, sinceLast.restart()); });
        sinceLast.start();
        timer.start(0);
    }
    qint64 Longest() const { return qMax(longest, sinceLast.elapsed()); } // milliseconds

private:
    QTimer timer;
    QElapsedTimer sinceLast;
    qint64 longest = 0;
};

/// Prints one row: what was done with how many files, how long it took, how long the window stood still at the most.
void Measure(const char* work, int count, const std::function<void()>& perform)
{
    const Freeze freeze;
    QElapsedTimer clock;
    clock.start();
    perform();
    const double seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    std::printf("%-16s %7d %10.3f %12.0f %12lld\n", work, count, seconds, count / seconds, freeze.Longest());
    std::fflush(stdout);
}

/// Times the real window, shown, on @p count small complete files: adding them, rebuilding the rows, processing.
void Benchmark(int count)
{
    const QTemporaryDir folder;
    for (int i = 0; i < count; ++i)
        PutSample("full.spx", folder.filePath("in/" + QString::number(i) + ".spx"));
    MainWindow window(nullptr);
    window.show();
    auto* const list = Child<QListWidget>(window, "listAudioFiles");

    Measure("add", count, [&] { DropOn(window, {folder.filePath("in")}); });

    // Removing the first of the rows rebuilds all others.
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(0)).center());
    {
        Answers answers({Entry({"Selected", "All"}, "Selected"),
                         Question("Are you sure you want to remove the selected file?", QMessageBox::Yes)});
        Measure("remove a row", count, [&] {
            Click(window, "buttonRemove");
            answers.Finish();
        });
    }

    Type(window, "editOutputFolder", folder.filePath("out"));
    Choose(window, "comboRename", 0);
    OpenSettings().setValue("SkipSocial", 1);
    Answers answers(
        {Box(QMessageBox::Information, "Operation finished successfully!", QMessageBox::Ok, QMessageBox::Ok)});
    Measure("process", count, [&] {
        Click(window, "buttonOrganize");
        while (!Child<QWidget>(window, "buttonOrganize")->isEnabled())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    });
}
} // namespace

int main(int argc, char** argv)
{
    const Sandbox sandbox;
    NativeLookingApplication::Prepare();
    NativeLookingApplication application(argc, argv);
    std::printf("%-16s %7s %10s %12s %12s\n", "", "files", "seconds", "files/s", "freeze, ms");
    for (const int count : {1000, 5000, 20000})
        Benchmark(count);
}
