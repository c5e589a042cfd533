#include "naming/ProfileText.h"

#include "files/FilePath.h"

namespace
{
constexpr qint64 longestLine = 1 << 17; // bytes: more than a line edit can hold in UTF-8, with its key and line feed

QString Value(const QByteArray& line)
{
    const QString text = QString::fromUtf8(line);
    return text.mid(text.indexOf(QLatin1Char('=')) + 1);
}
} // namespace

QByteArray ProfileText(const SRunSettings& settings)
{
    const auto flag = [](bool value) { return value ? QStringLiteral("1") : QStringLiteral("0"); };
    const struct
    {
        const char* key;
        QString value;
    } lines[] = {
        {"organizeBy=", QString::number(settings.organizeBy)},
        {"rename=", QString::number(settings.renameIndex)},
        {"customRenameScheme=", settings.customRenameScheme},
        {"skipOrganize=", flag(settings.skipOrganize)},
        {"tagFixManual=", flag(settings.fixManually)},
        {"onlyEditInvalidTags=", flag(settings.onlyEditInvalid)},
        {"outputFolder=", settings.outputFolder},
        {"deleteOriginal=", flag(settings.deleteOriginal)},
    };
    QByteArray text;
    for (const auto& line : lines)
        text += line.key + line.value.toUtf8() + '\n';
    return text;
}

SRunSettings ReadProfile(QIODevice& device)
{
    bool atEnd = false;
    const auto text = [&device, &atEnd] {
        const QByteArray line = atEnd ? QByteArray() : device.readLine(longestLine);
        atEnd = atEnd || !line.endsWith('\n');
        return Value(line);
    };
    const auto number = [&text] { return text().toInt(); };
    const auto flag = [&number] { return number() != 0; };
    const auto verbatim = [&text] { return text().remove(QLatin1Char('\n')); };

    SRunSettings settings;
    settings.organizeBy = number();
    settings.renameIndex = number();
    settings.customRenameScheme = verbatim();
    settings.skipOrganize = flag();
    settings.fixManually = flag();
    settings.onlyEditInvalid = flag();
    settings.outputFolder = verbatim();
    settings.deleteOriginal = flag();
    return settings;
}

QString ProfileName(const QString& path)
{
    return BaseNameOf(path);
}
