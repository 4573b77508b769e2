// The documents that come with the program, opened by the desktop's own viewer.
#pragma once

#include <QCoreApplication>
#include <QString>

namespace document {

enum class Place { BesideExecutable, SharedDocuments };

// Where the document is: in the first place that has it, or belongs, where none has it, to the first of all. It
// may stand beside the executable; in ../share/doc/platterscope, as seen from there, which is how an
// installation and a build tree are laid out; or in share/doc/platterscope. `first` is looked at first.
[[nodiscard]] QString path(const QString& fileName, Place first,
                           const QString& executableDirectory = QCoreApplication::applicationDirPath());

// Whether the desktop took the file, which must exist, to open it.
[[nodiscard]] bool open(const QString& path);

}  // namespace document
