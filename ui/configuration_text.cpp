#include "ui/configuration_text.h"

#include "text/title_text.h"
#include "ui/plain_text.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <limits>

using service::ConfigurationTitle;
using service::DiscConfiguration;

namespace configurationtext {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(ConfigurationText)
};

// How much of a text from the service is shown. The header shares its row with buttons, so it shows little; a message
// box has shown its text before.
constexpr qsizetype kHeaderCharacters = 200;
constexpr qsizetype kHeaderLines = 4;
constexpr qsizetype kCellCharacters = 200;
constexpr qsizetype kPathCharacters = 2000;
constexpr qsizetype kNoteCharacters = 10'000;
constexpr qsizetype kNoteLines = 500;

// The index is the number of the type in the service's data. 0 and numbers beyond the table are "Unknown".
constexpr std::array kTypeNames = {
    QT_TRANSLATE_NOOP("ConfigurationText", "Unknown"),
    QT_TRANSLATE_NOOP("ConfigurationText", "Movie"),
    QT_TRANSLATE_NOOP("ConfigurationText", "Episode"),
    QT_TRANSLATE_NOOP("ConfigurationText", "Video"),
    QT_TRANSLATE_NOOP("ConfigurationText", "Music Video"),
    QT_TRANSLATE_NOOP("ConfigurationText", "Concert"),
    QT_TRANSLATE_NOOP("ConfigurationText", "Movie Extra"),
    QT_TRANSLATE_NOOP("ConfigurationText", "Series Extra"),
    QT_TRANSLATE_NOOP("ConfigurationText", "Season Extra"),
    QT_TRANSLATE_NOOP("ConfigurationText", "Video Extra"),
    QT_TRANSLATE_NOOP("ConfigurationText", "Movie Trailer"),
    QT_TRANSLATE_NOOP("ConfigurationText", "Series Trailer"),
    QT_TRANSLATE_NOOP("ConfigurationText", "Season Trailer"),
    QT_TRANSLATE_NOOP("ConfigurationText", "Game Trailer"),
    QT_TRANSLATE_NOOP("ConfigurationText", "Other"),
};

QString typeName(int type)
{
    const bool hasName = type >= 0 && type < static_cast<int>(kTypeNames.size());
    return Texts::tr(kTypeNames.at(hasName ? static_cast<std::size_t>(type) : 0));
}

QString kindName(DiscType type)
{
    switch (type) {
    case DiscType::Dvd:
        return Texts::tr("DVD");
    case DiscType::Bluray:
        return Texts::tr("Blu-ray");
    case DiscType::None:
        break;
    }
    return Texts::tr("Unknown");
}

QString pathLine(const ConfigurationTitle& title, const DiscConfiguration& configuration)
{
    const QString path =
        title.pathIndex ? plaintext::oneLine(configuration.paths.value(*title.pathIndex), kPathCharacters)
                        : QString();
    return path.trimmed().isEmpty() ? Texts::tr("(no path information)\n")
                                    : Texts::tr("File: %1\n").arg(path);
}

QString noteLine(const ConfigurationTitle& title)
{
    if (title.note.isEmpty()) { return {}; }
    return Texts::tr("Note: %1\n").arg(plaintext::bounded(title.note, kNoteCharacters, kNoteLines));
}

QString chapterLine(const ConfigurationTitle& title)
{
    const bool hasFirst = title.firstChapter != 0;
    const bool hasLast = title.lastChapter != 0;
    if (hasFirst && hasLast) {
        return Texts::tr("Chapters: %1-%2\n").arg(title.firstChapter).arg(title.lastChapter);
    }
    if (hasLast) { return Texts::tr("Chapters: up to %1\n").arg(title.lastChapter); }
    if (hasFirst) { return Texts::tr("Chapters: from %1\n").arg(title.firstChapter); }
    return {};
}

template <typename Titles, typename Number>
QString matchingDetails(const Titles& titles, Number number, int id)
{
    const auto title = std::find_if(titles.begin(), titles.end(),
                                    [&](const auto& candidate) { return qint64{candidate.*number} == id; });
    return title == titles.end() ? Texts::tr("Matching disc title information is unavailable.\n")
                                 : titletext::matchingDetails(*title);
}

}  // namespace

QString header(const DiscScanResult& disc)
{
    const QString id = disc.discId == 0 ? Texts::tr("(none)") : QString::number(disc.discId);
    QString text = Texts::tr("Type: %1\nDisc ID: %2").arg(kindName(disc.discType), id);
    if (disc.error.isEmpty()) { return text; }
    const QString message = plaintext::bounded(disc.error.translated(), kHeaderCharacters, kHeaderLines);
    return text + (disc.ok != 0 ? Texts::tr("\nNote: %1") : Texts::tr("\nError: %1")).arg(message);
}

QString name(const DiscConfiguration& configuration)
{
    const QString name = plaintext::oneLine(configuration.discName, kCellCharacters);
    return name.trimmed().isEmpty() ? Texts::tr("(unnamed disc)") : name;
}

QString language(const DiscConfiguration& configuration)
{
    return plaintext::oneLine(configuration.languageCode, kCellCharacters);
}

QString addedBy(const DiscConfiguration& configuration)
{
    const QString user = plaintext::oneLine(configuration.addedByUsername, kCellCharacters);
    return user.trimmed().isEmpty() ? QString::number(configuration.addedByUid) : user;
}

QString titleName(const ConfigurationTitle& title)
{
    const QString name = plaintext::oneLine(title.name, kCellCharacters);
    return name.trimmed().isEmpty() ? Texts::tr("(unnamed title)") : name;
}

QString details(const ConfigurationTitle& title, const DiscConfiguration& configuration,
                const DiscScanResult& disc)
{
    return Texts::tr("Type: %1\n").arg(typeName(title.type)) + pathLine(title, configuration) +
           noteLine(title) + chapterLine(title) +
           (disc.discType == DiscType::Bluray
                ? matchingDetails(disc.blurayTitles, &BlurayTitleInfo::playlistId, title.id)
                : matchingDetails(disc.dvdTitles, &DvdTitleInfo::titleNumber, title.id));
}

}  // namespace configurationtext
