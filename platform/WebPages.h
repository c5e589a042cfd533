#pragma once

#include <QString>

/// Every web address that the program opens. Whoever publishes the program sets the hosts here, and that of the home
/// page in CMakeLists.txt, from where the package takes it, too.
namespace WebPage
{
inline const QString discogsName = QStringLiteral("discogs.com");
inline const QString discogsSearch = QStringLiteral("http://www.discogs.com/search/?q=");
inline const QString allmusicName = QStringLiteral("allmusic.com");
inline const QString allmusicSearch = QStringLiteral("http://www.allmusic.com/search/all/");
inline const QString home = QStringLiteral(ORVANTO_HOMEPAGE);
inline const QString onlineHelp = home + QStringLiteral("/help-mac.html");
inline const QString videoTutorial = home + QStringLiteral("/feature.html");
inline const QString onlineSupport = home + QStringLiteral("/contact.html");
inline const QString facebook = QStringLiteral("http://www.facebook.example/orvanto");
inline const QString googlePlus = QStringLiteral("http://plus.google.example/orvanto");
} // namespace WebPage

/// Opens @p address, parsed tolerantly, in the user's web browser. A failure is ignored.
void OpenWebPage(const QString& address);
