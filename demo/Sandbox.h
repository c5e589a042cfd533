#pragma once

#include "app/NativeLookingApplication.h"

#include <QStringList>
#include <QTemporaryDir>

/// A home of its own for a test program, made before the application object exists: settings, music and documents of
/// the user are out of reach. It also keeps what Qt warns of, so that tests can demand that it is nothing.
class Sandbox
{
public:
    Sandbox();

    static QString Home();
    /// Empties the home and the settings store.
    static void Reset();
    /// What Qt has warned of since the last call.
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
