// Finds the path that the readers open from the path that a user gives.
#pragma once

#include "base/message.h"

#include <QDir>
#include <QString>

namespace scan {

struct DiscPath {
    QString path;     // the disc to open; empty if there is a problem
    Message problem;  // empty if there is none
};

// Takes a path from the command line, a file dialog or a drop. Removes the separators at its end. A file inside BDMV or
// VIDEO_TS ("BDMV/index.bdmv", a playlist, an IFO) gives that directory. A block device gives the directory at which it
// is mounted, or the problem that it is not. Any other path stays, whether it exists or not.
[[nodiscard]] DiscPath discPathOf(const QString& given);

// Whether the path is a block device, such as a drive, or a symbolic link to one.
[[nodiscard]] bool isBlockDevice(const QString& path);

// Whether a directory of this name holds the navigation files of a disc: BDMV or VIDEO_TS, in any letter case.
[[nodiscard]] bool isNavigationDirectory(const QString& name);

// Removes the separators at the end of a path, but not those of a root ("/", "D:\", "\\server\share\"). A `native`
// separator of '\\' selects the rules of Windows.
[[nodiscard]] QString withoutTrailingSeparators(const QString& path, QChar native = QDir::separator());

}  // namespace scan
