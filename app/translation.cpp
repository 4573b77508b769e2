#include "app/translation.h"

#include <QDir>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <memory>

namespace {

// The file for a language, such as "de-AT", for which "de" will do as well.
bool install(QCoreApplication& application, const QString& name, const QString& language,
             const QString& directory)
{
    auto translator = std::make_unique<QTranslator>(&application);
    QString file = name + QLatin1Char('_') + language;
    if (!translator->load(file.replace(QLatin1Char('-'), QLatin1Char('_')), directory)) { return false; }
    QCoreApplication::installTranslator(translator.release());  // the application's from here on
    return true;
}

bool isEnglish(const QString& language)
{
    const QString code = language.section(QLatin1Char('-'), 0, 0);
    return code == QLatin1StringView("en") || code == QLatin1StringView("C");
}

}  // namespace

void installTranslations(QCoreApplication& application, const QStringList& languages,
                         const QString& directory)
{
    for (const QString& language : languages) {
        if (isEnglish(language)) { return; }
        if (install(application, QStringLiteral("platterscope"), language, directory)) {
            // Its buttons stay English where the system has no translation of the toolkit.
            install(application, QStringLiteral("qtbase"), language,
                    QLibraryInfo::path(QLibraryInfo::TranslationsPath));
            return;
        }
    }
}

void installTranslations(QCoreApplication& application)
{
    // As for other programs, LANGUAGE counts for nothing where the locale is that of no language.
    if (QLocale::system().language() == QLocale::C) { return; }
    const QDir executables(QCoreApplication::applicationDirPath());
    installTranslations(application, QLocale::system().uiLanguages(),
                        executables.filePath(QStringLiteral("../share/platterscope/translations")));
}
