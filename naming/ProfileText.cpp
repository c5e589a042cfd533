#include "naming/ProfileText.h"

#include <variant>

namespace
{
constexpr qint64 longestLine = 1 << 17; // bytes: more than a line edit can hold in UTF-8, with its key and line feed

/// One line of a profile: its key, and the setting whose value it holds.
struct SLine
{
    const char* key;
    std::variant<int SRunSettings::*, bool SRunSettings::*, QString SRunSettings::*> setting;
};

/// The lines in their order; both writing and reading follow it. Append only: older profiles are read by position, too.
constexpr SLine lines[] = {
    {"organizeBy", &SRunSettings::organizeBy},
    {"rename", &SRunSettings::renameIndex},
    {"customRenameScheme", &SRunSettings::customRenameScheme},
    {"skipOrganize", &SRunSettings::skipOrganize},
    {"tagFixManual", &SRunSettings::fixManually},
    {"onlyEditInvalidTags", &SRunSettings::onlyEditInvalid},
    {"outputFolder", &SRunSettings::outputFolder},
    {"deleteOriginal", &SRunSettings::deleteOriginal},
};

// How each type of setting is written, and read into its place. A type in the table that lacks either does not compile.
QString Written(int value)
{
    return QString::number(value);
}

QString Written(bool value)
{
    return value ? QStringLiteral("1") : QStringLiteral("0");
}

QString Written(const QString& value)
{
    return value;
}

void Read(const QString& text, int& value)
{
    value = text.toInt();
}

void Read(const QString& text, bool& value)
{
    value = text.toInt() != 0;
}

void Read(const QString& text, QString& value)
{
    value = text;
    value.remove(QLatin1Char('\n')); // nothing else: a carriage return belongs to the value
}
} // namespace

QByteArray ProfileText(const SRunSettings& settings)
{
    QByteArray text;
    for (const SLine& line : lines) {
        const QString value =
            std::visit([&settings](auto setting) { return Written(settings.*setting); }, line.setting);
        text += QByteArray(line.key) + '=' + value.toUtf8() + '\n';
    }
    return text;
}

SRunSettings ReadProfile(QIODevice& device)
{
    SRunSettings settings;
    bool atEnd = false;
    for (const SLine& line : lines) {
        const QByteArray bytes = atEnd ? QByteArray() : device.readLine(longestLine);
        atEnd = atEnd || !bytes.endsWith('\n');
        const QString text = QString::fromUtf8(bytes);
        const QString value = text.mid(text.indexOf(QLatin1Char('=')) + 1);
        std::visit([&settings, &value](auto setting) { Read(value, settings.*setting); }, line.setting);
    }
    return settings;
}
