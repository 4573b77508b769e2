#include "app/translation.h"

#include <QDir>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <memory>

namespace {

// Installs the file of a language such as "de-AT", or else of "de". Returns false without one.
bool install(QCoreApplication& application, const QString& name, const QString& language,
             const QString& directory)
{
    auto translator = std::make_unique<QTranslator>(&application);
    QString file = name + QLatin1Char('_') + language;
    if (!translator->load(file.replace(QLatin1Char('-'), QLatin1Char('_')), directory)) { return false; }
    QCoreApplication::installTranslator(translator.release());  // the application owns it now
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
            // Without a translation of the toolkit its buttons stay English.
            install(application, QStringLiteral("qtbase"), language,
                    QLibraryInfo::path(QLibraryInfo::TranslationsPath));
            return;
        }
    }
}

void installTranslations(QCoreApplication& application)
{
    // As in other programs, LANGUAGE has no effect in the C locale.
    if (QLocale::system().language() == QLocale::C) { return; }
    const QDir executables(QCoreApplication::applicationDirPath());
    installTranslations(application, QLocale::system().uiLanguages(),
                        executables.filePath(QStringLiteral("../share/platterscope/translations")));
}
