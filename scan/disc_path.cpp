#include "scan/disc_path.h"

#include <QFileInfo>
#include <QStorageInfo>

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>

namespace scan {

namespace {

constexpr char kNotMounted[] = QT_TRANSLATE_NOOP(
    "Messages", "The device is not mounted. Mount it with this command: udisksctl mount -b %1");

// The files of a disc. Other files in a directory BDMV or VIDEO_TS, such as images, are discs of their own.
constexpr std::array kDiscFileSuffixes = {"bdmv", "bdjo", "mpls", "clpi", "m2ts",
                                          "ssif", "ifo",  "bup",  "vob"};

// The length of the path's root, its last separator included; 0 for a relative path.
qsizetype rootLength(const QString& path, QChar native)
{
    const auto separatorFrom = [&path, native](qsizetype begin) {
        qsizetype at = begin;
        while (at < path.size() && path.at(at) != u'/' && path.at(at) != native) {
            ++at;
        }
        return at;
    };
    if (native == u'\\') {
        if (path.size() > 1 && path.at(1) == u':') { return 3; }
        if (separatorFrom(0) == 0 && separatorFrom(1) == 1) {
            return separatorFrom(separatorFrom(2) + 1) + 1;
        }
    }
    return separatorFrom(0) == 0 ? 1 : 0;
}

// Returns the directory BDMV or VIDEO_TS that contains the disc's file, and any other path unchanged.
QString withoutDiscFile(const QString& path)
{
    const QFileInfo file(path);
    const bool isOfDisc = std::ranges::any_of(kDiscFileSuffixes, [&file](const char* suffix) {
        return file.suffix().compare(QLatin1StringView(suffix), Qt::CaseInsensitive) == 0;
    });
    if (!isOfDisc) { return path; }
    QFileInfo directory(file.absolutePath());
    while (!directory.fileName().isEmpty()) {
        if (isNavigationDirectory(directory.fileName())) { return directory.filePath(); }
        directory.setFile(directory.path());
    }
    return path;
}

DiscPath mountedDisc(const QString& device)
{
    const QString canonical = QFileInfo(device).canonicalFilePath();
    for (const QStorageInfo& volume : QStorageInfo::mountedVolumes()) {
        if (QFileInfo(QFile::decodeName(volume.device())).canonicalFilePath() == canonical) {
            return {volume.rootPath(), {}};
        }
    }
    return {{}, Message(kNotMounted, {canonical})};
}

}  // namespace

DiscPath discPathOf(const QString& given)
{
    const QString path = withoutTrailingSeparators(given);
    if (isBlockDevice(path)) { return mountedDisc(path); }
    return {withoutDiscFile(path), {}};
}

bool isBlockDevice(const QString& path)
{
    std::error_code noDevice;
    return std::filesystem::is_block_file(QFileInfo(path).filesystemFilePath(), noDevice);
}

bool isNavigationDirectory(const QString& name)
{
    return name.compare(QLatin1StringView("BDMV"), Qt::CaseInsensitive) == 0 ||
           name.compare(QLatin1StringView("VIDEO_TS"), Qt::CaseInsensitive) == 0;
}

QString withoutTrailingSeparators(const QString& path, QChar native)
{
    qsizetype size = path.size();
    const qsizetype root = rootLength(path, native);
    while (size > root && (path.at(size - 1) == u'/' || path.at(size - 1) == native)) {
        --size;
    }
    return path.first(size);
}

}  // namespace scan
