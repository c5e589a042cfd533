#include <QApplication>
#include <QListWidget>
#include <QMainWindow>
#include <QTest>

/// What the start of Orvanto is measured against: a window with a list, until it is painted.
int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    QMainWindow window;
    window.setCentralWidget(new QListWidget);
    window.show();
    const bool exposed = QTest::qWaitForWindowExposed(&window);
    window.repaint();
    return exposed ? 0 : 1;
}
