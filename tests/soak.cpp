#include "demo/AudioSamples.h"
#include "files/FilePath.h"
#include "processing/ProcessThread.h"
#include "tags/AudioTypes.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

/// Tries at length what no test shows: runs, in child processes, that are killed.

namespace
{
constexpr int pieces = 40;

void Demand(bool ok, const QString& evidence)
{
    if (!ok)
        qFatal("Failed: %s", qPrintable(evidence));
}

/// Audio of a sample: half of what the tagged and the untagged one share, the half that is farther from the tags. The
/// first 12 bytes hold the length of the file in some types.
QByteArray SharedAudio(const QString& extension)
{
    const QByteArray bare = SampleBytes(QString("bare.") + extension).mid(12);
    const QByteArray full = SampleBytes(QString("full.") + extension).mid(12);
    const auto front = std::mismatch(bare.begin(), bare.end(), full.begin(), full.end()).first - bare.begin();
    const auto back = std::mismatch(bare.rbegin(), bare.rend(), full.rbegin(), full.rend()).first - bare.rbegin();
    return front > back ? bare.left(static_cast<int>(front / 2)) : bare.right(static_cast<int>(back / 2));
}

/// The audio of one piece of music, with its number in the middle; long where the type allows, so that a kill meets it.
QByteArray Audio(int piece, const QString& extension)
{
    QByteArray audio = SharedAudio(extension).repeated(extension == "mp3" || extension == "flac" ? 1000 : 1);
    return audio.replace(audio.size() / 2, 4, QByteArray::number(1000 + piece));
}

/// In a child, which may be killed after some microseconds.
void Organise(const char* from, const char* to, int killAfter = -1)
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(300); // a hang is a bad end, too
        ProcessThread worker(nullptr);
        for (const QString& path : FilesBelow(from)) {
            // The rest is in the name, so that the worker asks nobody.
            if (AudioExtensions().contains(ExtensionOf(path))) {
                const SAudioFile file = worker.tagManager.ReadFile(path);
                worker.files += {file.Title, file.Artist, "Album", "1968", "Folk", "3", path};
            }
        }
        worker.settings = {1, 2, {}, false, false, true, to, true};
        worker.start();
        worker.wait();
        std::exit(0);
    }
    if (killAfter >= 0 && usleep(static_cast<useconds_t>(killAfter)) == 0)
        kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    Demand(status == 0 || (killAfter >= 0 && WIFSIGNALED(status)), "a run ended badly");
}

/// Every piece must be whole somewhere, and every file a whole piece, but for the hidden ones that a kill may leave.
void DemandAudio(const char* folder)
{
    static const QRegularExpression unfinished("/\\.orvanto-\\w{6}$");
    QSet<int> found;
    for (const QString& path : FilesBelow(folder)) {
        int piece = 0;
        for (const QByteArray file = Bytes(path); piece < pieces && !file.contains(Audio(piece, ExtensionOf(path)));)
            ++piece;
        Demand(piece < pieces || unfinished.match(path).hasMatch(), "no whole piece: " + path);
        found.insert(piece);
    }
    Demand(found.size() == pieces + found.contains(pieces), QString("only %1 pieces are left").arg(found.size()));
}

void TryKills(int tries)
{
    // Pieces without tags, so that there is no room for any.
    for (int piece = 0; piece < pieces; ++piece) {
        const QString type = AudioExtensions().at(piece % AudioExtensions().size());
        PutBytes(QString("library/Ann %1-Song.").arg(piece) + type,
                 SampleBytes(QString("bare.") + type).replace(SharedAudio(type), Audio(piece, type)));
    }
    for (int i = 0, undisturbed = 0; i <= tries; ++i) {
        Demand(std::system("rm -rf try && mkdir -p try/out && cp -a library try/in && ln -s out try/link") == 0, "try");
        QElapsedTimer clock;
        clock.start();
        Organise("try/in", "try/out", i ? QRandomGenerator::global()->bounded(undisturbed) : -1);
        undisturbed = i ? undisturbed : static_cast<int>(clock.nsecsElapsed() / 1000); // microseconds
        DemandAudio("try");
        Organise("try/in", "try/out");
        Organise("try/out", "try/link"); // each file is its own destination
        DemandAudio("try");
        if (i == 0)
            Demand(QDir("try/in").isEmpty(), "an original is left");
    }
}
} // namespace

int main(int argc, char**)
{
    const QTemporaryDir folder; // stays when something fails
    Demand(QDir::setCurrent(folder.path()), folder.path());
    TryKills(argc > 1 ? 20 : 300);
}
