#include "app/MainWindow.h"
#include "app/NativeLookingApplication.h"

#include <QCommandLineParser>
#include <QTimer>
#include <QWindow>

int main(int argc, char* argv[])
{
    NativeLookingApplication::Prepare();

    QCommandLineParser commandLine;
    commandLine.setApplicationDescription(QStringLiteral("Sorts music files into folders by their tags."));
    // Qt's own options, such as -platform, begin with one dash.
    commandLine.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    commandLine.addHelpOption();
    commandLine.addVersionOption();
    commandLine.addPositionalArgument(
        QStringLiteral("PATH"), QStringLiteral("A file or folder to add to the list; a single .ovp file is loaded."),
        QStringLiteral("[PATH...]"));

    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments += QString::fromLocal8Bit(argv[i]);
    commandLine.parse(arguments);
    if (commandLine.isSet(QStringLiteral("help")) || commandLine.isSet(QStringLiteral("help-all")) ||
        commandLine.isSet(QStringLiteral("version"))) {
        // QApplication needs a display, QCoreApplication does not.
        const QCoreApplication answering(argc, argv);
        QCoreApplication::setApplicationVersion(QStringLiteral(ORVANTO_VERSION));
        commandLine.process(answering);
    }

    NativeLookingApplication application(argc, argv);
    commandLine.process(application);
    MainWindow window(nullptr);
    QObject::connect(&application, &NativeLookingApplication::OpenRequested, &window, &MainWindow::OpenPaths);
    window.show();

    const QStringList paths = commandLine.positionalArguments();
    // Not before the window is on the screen: adding keeps this thread busy, and a profile that cannot be read opens a
    // message box.
    QTimer untilShown;
    QObject::connect(&untilShown, &QTimer::timeout, &window, [&] {
        if (!window.windowHandle()->isExposed())
            return;
        untilShown.stop();
        window.OpenPaths(paths);
    });
    if (!paths.isEmpty())
        untilShown.start(10);
    return application.exec();
}
