// Finds the documents that are installed with the program, and opens them in the desktop's viewer.
#pragma once

#include <QCoreApplication>
#include <QString>

namespace document {

enum class Place { BesideExecutable, SharedDocuments };

// Returns the path of the document in the first of these folders that contains it:
//   the executable's folder
//   ../share/doc/platterscope from there, as in an installation and in a build tree
//   share/doc/platterscope from there
// `first` chooses which of the first two comes first. If no folder contains the document, returns its path in the
// first.
[[nodiscard]] QString path(const QString& fileName, Place first,
                           const QString& executableDirectory = QCoreApplication::applicationDirPath());

// Returns whether the file exists and the desktop accepted it.
[[nodiscard]] bool open(const QString& path);

}  // namespace document
