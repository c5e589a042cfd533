#pragma once

#include <QFile>
#include <QMap>
#include <QString>

#include <sys/inotify.h>
#include <unistd.h>

/// Counts how often each file of one folder is opened while it lives, as Linux reports it. An opening within another
/// one of the same file does not count.
class Openings
{
public:
    explicit Openings(const QString& folder)
    {
        inotify_add_watch(queue, QFile::encodeName(folder).constData(), IN_OPEN | IN_CLOSE);
        // Without a closing between them, equal events become one.
    }
    ~Openings() { close(queue); }
    Q_DISABLE_COPY(Openings)

    /// The openings of each file since the last call, by its name.
    QMap<QString, int> Take()
    {
        QMap<QString, int> openings;
        alignas(inotify_event) char events[1 << 16];
        for (ssize_t size = 0; (size = read(queue, events, sizeof events)) > 0;) {
            for (const char* at = events; at < events + size;) {
                const auto* const event = reinterpret_cast<const inotify_event*>(at);
                if (event->mask & IN_OPEN && !(event->mask & IN_ISDIR))
                    ++openings[QFile::decodeName(event->name)];
                at += sizeof(inotify_event) + event->len;
            }
        }
        return openings;
    }

private:
    const int queue = inotify_init1(IN_NONBLOCK);
};
