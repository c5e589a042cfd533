#include "demo/AudioSamples.h"
#include "demo/Driver.h"
#include "demo/Sandbox.h"
#include "tests/Rows.h"

#include <csignal>

#define main StartProgram
#include "app/main.cpp" // NOLINT(bugprone-suspicious-include): its main() is what is tested
#undef main

namespace
{
QString expected;
QString seen;

/// @return whether the window shows what is expected
bool Look()
{
    if (const QWidget* const window = QApplication::activeWindow())
        seen = Visible(*window).filter(QRegularExpression("^(title|listAudioFiles)=")).join("; ");
    return seen == expected;
}

/// The program then ends with 0 if it did.
void LeaveAfterALook()
{
    QTimer::singleShot(0, qApp, [] { QCoreApplication::exit(QTest::qWaitFor(Look) ? 0 : 1); });
}
} // namespace
Q_COREAPP_STARTUP_FUNCTION(LeaveAfterALook)

/// Starts the program with paths, as a shell or a desktop does, waits for what its window is to show, and leaves.
class TestStart : public QObject
{
    Q_OBJECT

    const Sandbox sandbox;

private slots:
    void start_data()
    {
        AddRows({"paths", "window"},
                {{"a profile", "p.ovp", "title=Orvanto - p; listAudioFiles="},
                 {"no such music, and a folder", "missing.mp3 in", "title=Orvanto; listAudioFiles=~/in/1.mp3"}});
    }
    void start()
    {
        QFETCH(QString, paths);
        QFETCH(QString, window);
        expected = window;
        PutBytes(Sandbox::Home() + "/in/1.mp3", SampleBytes("full.mp3"));
        PutBytes(Sandbox::Home() + "/p.ovp", "");
        QVERIFY(QDir::setCurrent(Sandbox::Home())); // a shell's paths may be relative
        QList<QByteArray> words = ("orvanto " + paths).toLocal8Bit().split(' ');
        char* arguments[] = {words[0].data(), words[1].data(), words.size() > 2 ? words[2].data() : nullptr};
        const int exitCode = StartProgram(static_cast<int>(words.size()), arguments);
        QVERIFY2(exitCode == 0, qPrintable(seen));
        QVERIFY(std::signal(SIGXFSZ, SIG_DFL) == SIG_IGN); // or a limit on the size of files would end a run
    }
};

QTEST_APPLESS_MAIN(TestStart)

#include "tst_start.moc"
