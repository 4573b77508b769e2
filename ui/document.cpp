#include "ui/document.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QStringList>
#include <QUrl>

namespace document {

QString path(const QString& fileName, Place first, const QString& executableDirectory)
{
    const QDir executables(executableDirectory);
    const QString shared = QStringLiteral("share/doc/platterscope/") + fileName;
    const QString beside = executables.filePath(fileName);
    const QString above = QDir::cleanPath(executables.filePath(QStringLiteral("../") + shared));
    QStringList candidates{beside, above, executables.filePath(shared)};
    if (first == Place::SharedDocuments) { candidates.swapItemsAt(0, 1); }
    for (const QString& candidate : std::as_const(candidates)) {
        if (QFileInfo(candidate).isFile()) { return candidate; }
    }
    return candidates.first();
}

bool open(const QString& path)
{
    return QFileInfo(path).isFile() && QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

}  // namespace document
