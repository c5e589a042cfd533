#include "demo/AudioSamples.h"
#include "demo/Driver.h"
#include "demo/Sandbox.h"
#include "tests/Rows.h"

#define main StartProgram
#include "app/main.cpp" // NOLINT(bugprone-suspicious-include): its main() is what is tested
#undef main

namespace
{
std::function<void()> onStart;

void OnStart()
{
    onStart();
}
} // namespace
Q_COREAPP_STARTUP_FUNCTION(OnStart)

/// Starts the program with paths, as a shell or a desktop does, waits for what its window is to show, and leaves.
class TestStart : public QObject
{
    Q_OBJECT

private slots:
    void start_data()
    {
        AddRows({"paths", "seen"},
                {{"a profile", "p.ovp", "title=Orvanto - p; listAudioFiles="},
                 {"no such music, and a folder", "missing.mp3 in", "title=Orvanto; listAudioFiles=~/in/1.mp3"}});
    }
    void start()
    {
        QFETCH(QString, paths);
        QFETCH(QString, seen);
        Sandbox::Reset();
        PutSample("full.mp3", Sandbox::Home() + "/in/1.mp3");
        PutBytes(Sandbox::Home() + "/p.ovp", "");
        QVERIFY(QDir::setCurrent(Sandbox::Home())); // a shell's paths may be relative
        AtStep("starting with " + paths, __FILE__, __LINE__);

        QTimer looks;
        int count = 0;
        QString last;
        looks.callOnTimeout([&] {
            for (const QWidget* const window : QApplication::topLevelWidgets()) {
                if (qobject_cast<const MainWindow*>(window))
                    last = Visible(*window).filter(QRegularExpression("^(title|listAudioFiles)=")).join("; ");
            }
            if (last != seen && ++count < 500)
                return;
            looks.stop();
            QCoreApplication::quit();
        });
        onStart = [&] { looks.start(10); };
        QList<QByteArray> words = ("orvanto " + paths).toLocal8Bit().split(' ');
        char* arguments[] = {words[0].data(), words[1].data(), words.size() > 2 ? words[2].data() : nullptr};
        QCOMPARE(StartProgram(static_cast<int>(words.size()), arguments), 0);
        DemandSame("the window", last, seen);
    }
};

int main(int argc, char** argv)
{
    const Sandbox sandbox;
    TestStart test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_start.moc"
