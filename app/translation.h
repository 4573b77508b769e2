// The program's texts in the user's language.
#pragma once

#include <QCoreApplication>
#include <QString>
#include <QStringList>

// Installs the translations of the program and of the toolkit for the first of `languages` that the program is
// translated into. English needs no translation and ends the search. Call it once, before any text is shown.
// `directory` contains the program's .qm files.
void installTranslations(QCoreApplication& application, const QStringList& languages,
                         const QString& directory);

// The same for the languages of the system's settings and for ../share/platterscope/translations, as seen from the
// executable's folder in an installation and in a build tree.
void installTranslations(QCoreApplication& application);
