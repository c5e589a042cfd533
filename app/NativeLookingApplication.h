#pragma once

#include <QApplication>
#include <QStringList>

/// The application object. Text controls are drawn in the platform's small control size unless a size was
/// chosen for them; harmless where the platform has only one size. In our own windows, captions of fixed size are made
/// to fit (FitCaptions()).
class NativeLookingApplication : public QApplication
{
    Q_OBJECT

public:
    NativeLookingApplication(int& argc, char** argv);

    /// What must be decided before the application object exists: scaling, sharp pictures, the encoding of file names,
    /// and the one signal that would end the program while it writes.
    static void Prepare();

    bool notify(QObject* receiver, QEvent* event) override;

signals:
    /// On macOS the desktop asks a running program to open files, all of one request together.
    void OpenRequested(const QStringList& paths);

protected:
    bool event(QEvent* event) override;

private:
    QStringList requestedPaths; ///< of the request that is coming in
};
