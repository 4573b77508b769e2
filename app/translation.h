// The program's texts in the user's language.
#pragma once

#include <QCoreApplication>
#include <QString>
#include <QStringList>

// Installs the translation of the program, and the toolkit's own beside it, for the first of the user's languages
// that has one; English, in which all texts are written, needs none and ends the search. To be called once, before
// any text is shown. `directory` holds the program's .qm files: ../share/platterscope/translations as seen from the
// executable, which is how an installation and a build tree are laid out.
void installTranslations(QCoreApplication& application, const QStringList& languages,
                         const QString& directory);

// The same for the languages of the system's settings and the program's own directory.
void installTranslations(QCoreApplication& application);
