#include "demo/AudioSamples.h"
#include "demo/Driver.h"
#include "demo/Sandbox.h"
#include "tests/Rows.h"

#include <QListWidget>

#define main StartProgram
#include "app/main.cpp"
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
        AddRows({"paths", "warning", "seen"},
                {{"a profile", "p.ovp", "", "Orvanto - p|"},
                 {"no such profile", "missing.ovp", "Could not load profile.", "Orvanto|"},
                 {"no such music, and a folder", "missing.mp3 in", "", "Orvanto|in/1.mp3"}});
    }
    void start()
    {
        QFETCH(QString, paths);
        QFETCH(QString, warning);
        QFETCH(QString, seen);
        Sandbox::Reset();
        PutSample("full.mp3", Sandbox::Home() + "/in/1.mp3");
        QVERIFY(QFile(Sandbox::Home() + "/p.ovp").open(QIODevice::WriteOnly));
        QVERIFY(QDir::setCurrent(Sandbox::Home())); // a shell's paths may be relative
        AtStep("starting with " + paths, __FILE__, __LINE__);

        std::unique_ptr<Answers> answers;
        QTimer looks;
        int count = 0;
        QString last;
        looks.callOnTimeout([&] {
            MainWindow* window = nullptr;
            for (QWidget* const widget : QApplication::topLevelWidgets())
                window = qobject_cast<MainWindow*>(widget) ? qobject_cast<MainWindow*>(widget) : window;
            const auto* const row = Child<QListWidget>(*window, "listAudioFiles")->item(0);
            last = window->windowTitle() + '|' + (row ? QDir().relativeFilePath(row->text()) : "");
            if (last != seen && ++count < 500)
                return;
            looks.stop();
            answers->Finish();
            QCoreApplication::quit();
        });
        onStart = [&] {
            answers = std::make_unique<Answers>(warning.isEmpty() ? QList<Answer>() : QList<Answer>{Warning(warning)});
            looks.start(10);
        };
        QByteArrayList words = ("orvanto " + paths).toLocal8Bit().split(' ');
        std::vector<char*> arguments;
        for (QByteArray& word : words)
            arguments.push_back(word.data());
        QCOMPARE(StartProgram(static_cast<int>(arguments.size()), arguments.data()), 0);
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
