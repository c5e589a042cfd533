#pragma once

#include "app/NativeLookingApplication.h"

#include <QStringList>
#include <QTemporaryDir>

/// A home of its own for a test program, created before the application object: the user's settings, music and
/// documents are out of reach. It also collects Qt's warnings, so that tests can demand that there are none.
class Sandbox
{
public:
    Sandbox();

    static QString Home();
    /// Empties the home and the settings store.
    static void Reset();
    /// Qt's warnings since the last call.
    static QStringList TakeWarnings();

private:
    QTemporaryDir folder;
};

/// The main function of a test program with windows.
#define ORVANTO_TEST_MAIN(TestClass)                                                                                   \
    int main(int argc, char** argv)                                                                                    \
    {                                                                                                                  \
        const Sandbox sandbox;                                                                                         \
        NativeLookingApplication::Prepare();                                                                           \
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);                                                   \
        NativeLookingApplication application(argc, argv);                                                              \
        TestClass test;                                                                                                \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }
