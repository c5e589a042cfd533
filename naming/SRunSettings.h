#pragma once

#include <QString>

/// The eight settings of a processing run, with their defaults. A profile holds exactly these, in this order.
struct SRunSettings
{
    int organizeBy = 1;  ///< index into organizeChoices; not range-checked, profiles may hold any number
    int renameIndex = 2; ///< index into renameChoices; not range-checked either
    QString customRenameScheme = QStringLiteral("[Track] [Artist]-[Title] ([Album], [Year], [Genre])");
    bool skipOrganize = false;   ///< only edit tags, copy nothing
    bool fixManually = false;    ///< ask the user about each file instead of fixing tags from its name
    bool onlyEditInvalid = true; ///< with fixManually: ask about incomplete files only
    QString outputFolder;        ///< root of the output paths, with "/" separators
    bool deleteOriginal = false; ///< delete each source file after copying

    /// Whether the user is asked about complete files, too.
    bool AsksAboutEveryFile() const { return fixManually && !onlyEditInvalid; }
};

/// @p text without line feeds and carriage returns, which no setting that is typed or pasted may hold: a profile has a
/// line for each.
inline QString WithoutLineBreaks(QString text)
{
    return text.remove(QLatin1Char('\n')).remove(QLatin1Char('\r'));
}
