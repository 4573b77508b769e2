#include "discio/bluray_source.h"

#include "discio/bluray_directories.h"
#include "discio/directory_list.h"
#include "discio/error_text.h"
#include "discio/file_stream.h"
#include "discio/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <span>
#include <utility>

namespace discio {

namespace {

constexpr std::string_view kBdmv = "BDMV";
constexpr std::size_t kComponentLimit = 64;   // of a path in an image
constexpr std::size_t kRootPathLimit = 4096;  // of a directory tree

// Removes the padding before cutting the text at its first NUL, so blanks before an inner NUL stay. A DVD's fields are
// cut first (fixedFieldText).
std::string trimmedVolumeId(std::span<const std::uint8_t> field)
{
    std::string text(field.begin(), field.end());
    text.erase(text.find_last_not_of(std::string_view(" \0", 2)) + 1);
    text.erase(std::min(text.find('\0'), text.size()));
    return text;
}

int openTree(const std::string& path, BlurayDiscSource& source, const ErrorText& error)
{
    const std::size_t separator = path.rfind('/');
    source.rootPath = path;
    if (separator != std::string::npos &&
        equalIgnoringCase(std::string_view(path).substr(separator + 1), kBdmv)) {
        source.rootPath.resize(separator);
        if (separator >= kRootPathLimit) { return -1; }
    }
    std::string bdmvPath;
    if (resolveDirectoryPath(source, kBdmv, bdmvPath) != 0) {
        return error.fail(MESSAGE_NOOP("Messages", "'%1' has no BDMV directory"), {path});
    }
    return 0;
}

int openImage(const std::string& path, BlurayDiscSource& source, const ErrorText& error)
{
    const OpenedFile opened = openRegularFile(path);
    if (!opened.stream) {
        return error.fail(MESSAGE_NOOP("Messages", "cannot open '%1': %2"),
                          {path, systemErrorText(opened.errorNumber)});
    }
    source.image = {opened.stream, opened.sizeBytes, source.budget};
    source.budget->holdToImage(opened.sizeBytes);
    std::array<std::uint8_t, kIsoSectorSize> sector = {};
    if (readImage(source.image, kIsoDescriptorOffset, sector) == sector.size()) {
        const auto iso = parsePrimaryVolumeDescriptor(sector);
        if (iso) {
            source.mode = BluraySourceMode::Iso;
            source.blockSize = iso->blockSize;
            source.isoRootExtent = iso->root;
            source.volumeId = trimmedVolumeId(iso->volumeId);
        }
        auto udf = findUdfVolume(source.image);
        if (!udf && !iso) { udf = findMappedUdfVolume(source.image); }
        if (udf) {
            source.mode = BluraySourceMode::Udf;
            source.udf = std::move(*udf);
        }
    }
    if (const char* const bound = source.budget->reached()) { return error.fail(bound); }
    if (source.mode == BluraySourceMode::Directory) {
        return error.fail(MESSAGE_NOOP("Messages", "'%1' is not a supported ISO-9660 or UDF image"), {path});
    }
    return 0;
}

int openPath(const char* path, BlurayDiscSource& source, const ErrorText& error)
{
    source.budget = std::make_shared<ReadBudget>();
    const PathStatus status = queryPath(path);
    switch (status.kind) {
    case PathKind::Missing:
        return error.fail(MESSAGE_NOOP("Messages", "cannot stat '%1': %2"),
                          {path, systemErrorText(status.errorNumber)});
    case PathKind::Directory:
        return openTree(path, source, error);
    case PathKind::RegularFile:
        return openImage(path, source, error);
    case PathKind::Other:
        break;
    }
    // Deliberate: no call has failed here, so errno is that of an earlier failure.
    return error.fail(MESSAGE_NOOP("Messages", "cannot open '%1': %2"), {path, systemErrorText(errno)});
}

// ---- Reading ----

bool readFromTree(const BlurayDiscSource& source, std::string_view relativePath,
                  std::vector<std::uint8_t>& bytes)
{
    std::string path;
    if (resolveDirectoryPath(source, relativePath, path) != 0) { return false; }
    const OpenedFile opened = openRegularFile(path);
    if (!opened.stream || !source.budget->spend(ReadBudget::Bound::NavigationBytes, opened.sizeBytes)) {
        return false;
    }
    bytes.resize(static_cast<std::size_t>(opened.sizeBytes));
    return readExactly(*opened.stream, 0, bytes);
}

bool readFromImage(const BlurayDiscSource& source, std::string_view relativePath,
                   std::vector<std::uint8_t>& bytes)
{
    ExtentList data;
    bool isDirectory = false;
    return resolveImagePath(source, relativePath, data, isDirectory) == 0 && !isDirectory &&
           data.sizeBytes <= source.image.sizeBytes &&
           source.budget->spend(ReadBudget::Bound::NavigationBytes, data.sizeBytes) &&
           readExtents(source.image, data, bytes);
}

// ---- Unreadable entries ----

using Components = std::span<const std::string_view>;

// The reasons why something cannot be read. %1 is its path, %2 the system's text.
constexpr char kSystemReason[] = MESSAGE_NOOP("Messages", "cannot read '%1': %2");
constexpr char kUnreadableData[] = MESSAGE_NOOP("Messages", "cannot read '%1': its data cannot be read");
constexpr char kUnreadableEntry[] =
    MESSAGE_NOOP("Messages", "cannot read '%1': its file entry cannot be read");
constexpr char kNoRegularFile[] = MESSAGE_NOOP("Messages", "cannot read '%1': it is no regular file");
constexpr char kBeyondLimit[] =
    MESSAGE_NOOP("Messages", "cannot read '%1': the file lies behind the image's first 2 GiB; "
                             "mount the image and open the directory");

struct Reason {
    const char* sentence = nullptr;  // null if the file is missing, or nothing is wrong with it
    int systemError = 0;
};

Reason systemReason(int errorNumber)
{
    return errorNumber == ENOENT ? Reason() : Reason{kSystemReason, errorNumber};
}

Reason treeReason(const std::string& path, BlurayUse use)
{
    const PathStatus status = queryPath(path);
    if (status.kind == PathKind::Missing) { return systemReason(status.errorNumber); }
    if (use == BlurayUse::Directory) {
        if (status.kind != PathKind::Directory) { return systemReason(ENOTDIR); }
        errno = 0;  // Windows does not set it
        const bool isListed = listDirectory(path).has_value();
        return isListed || errno == 0 ? Reason{kUnreadableData} : systemReason(errno);
    }
    if (status.kind == PathKind::Directory) { return systemReason(EISDIR); }
    if (status.kind != PathKind::RegularFile) { return {kNoRegularFile}; }
    if (use == BlurayUse::Size) { return {}; }
    const OpenedFile opened = openRegularFile(path);
    return opened.stream ? Reason{kUnreadableData} : systemReason(opened.errorNumber);
}

Reason imageReason(const BlurayDiscSource& source, Components components, BlurayUse use)
{
    ExtentList data;
    bool isDirectory = false;
    if (resolveImagePath(source, joinPath(components), data, isDirectory) != 0) {
        const DiscEntry* const entry = entryAt(source, components).entry;
        const auto offset = udfByteOffset(source.udf, {entry->block, entry->partition});
        return {offset && *offset >= kImageOffsetLimit ? kBeyondLimit : kUnreadableEntry};
    }
    if (isDirectory != (use == BlurayUse::Directory)) { return systemReason(isDirectory ? EISDIR : ENOTDIR); }
    if (use == BlurayUse::Size) { return {}; }
    const auto isBeyondLimit = [](const ImageExtent& extent) { return extent.offset >= kImageOffsetLimit; };
    return {std::ranges::any_of(data.extents, isBeyondLimit) ? kBeyondLimit : kUnreadableData};
}

std::optional<UnreadableEntry> findUnreadableAt(const BlurayDiscSource& source, Components components,
                                                BlurayUse use)
{
    if (components.empty()) { return UnreadableEntry{{kUnreadableData, {"/"}}, false}; }
    const FoundEntry found = entryAt(source, components);
    if (found.entry == nullptr) {
        if (found.directory != nullptr && found.directory->isListable) { return std::nullopt; }
        return findUnreadableAt(source, components.first(components.size() - 1), BlurayUse::Directory);
    }
    const Reason reason = source.mode == BluraySourceMode::Directory
                              ? treeReason(found.directory->path + '/' + found.entry->name, use)
                              : imageReason(source, components, use);
    if (reason.sentence == nullptr) { return std::nullopt; }
    UnreadableEntry unreadable = {{reason.sentence, {joinPath(components)}}, reason.sentence == kBeyondLimit};
    if (reason.systemError != 0) {
        unreadable.message.arguments.emplace_back(systemErrorText(reason.systemError));
    }
    return unreadable;
}

}  // namespace

int openBluraySource(const char* path, BlurayDiscSource& source, const ErrorText& error)
{
    source = {};
    const int result = openPath(path, source, error);
    if (result != 0) { source = {}; }
    return result;
}

int resolveDirectoryPath(const BlurayDiscSource& source, std::string_view relativePath, std::string& path)
{
    if (source.mode != BluraySourceMode::Directory) { return -1; }
    const auto components = splitPath(relativePath);
    if (components.empty()) {
        path = source.rootPath;
        return 0;
    }
    const FoundEntry found = entryAt(source, components);
    if (found.entry == nullptr) { return -1; }
    path = found.directory->path + '/' + found.entry->name;
    return 0;
}

int resolveImagePath(const BlurayDiscSource& source, std::string_view relativePath, ExtentList& data,
                     bool& isDirectory)
{
    const auto components = splitPath(relativePath);
    if (source.mode == BluraySourceMode::Directory || components.empty() ||
        components.size() > kComponentLimit) {
        return -1;
    }
    const DiscEntry* const entry = entryAt(source, components).entry;
    if (entry == nullptr) { return -1; }
    if (source.mode == BluraySourceMode::Udf) {
        auto file = readUdfFileEntry(source.image, source.udf, {entry->block, entry->partition});
        if (!file) { return -1; }
        data = std::move(file->data);
        isDirectory = file->isDirectory;
        return 0;
    }
    data = {};
    data.append({std::uint64_t{source.blockSize} * entry->block, entry->sizeBytes});
    isDirectory = entry->isDirectory;
    return 0;
}

int readWholeFile(const BlurayDiscSource& source, std::string_view relativePath,
                  std::vector<std::uint8_t>& bytes)
{
    const bool isRead = source.mode == BluraySourceMode::Directory
                            ? readFromTree(source, relativePath, bytes)
                            : readFromImage(source, relativePath, bytes);
    if (!isRead) { bytes = {}; }
    return isRead ? 0 : -1;
}

std::uint64_t blurayFileSize(const BlurayDiscSource& source, std::string_view relativePath)
{
    if (source.mode == BluraySourceMode::Directory) {
        std::string path;
        if (resolveDirectoryPath(source, relativePath, path) != 0) { return 0; }
        const PathStatus status = queryPath(path);
        return status.kind == PathKind::RegularFile ? status.sizeBytes : 0;
    }
    ExtentList data;
    bool isDirectory = false;
    const bool isFile = resolveImagePath(source, relativePath, data, isDirectory) == 0 && !isDirectory;
    return isFile ? data.sizeBytes : 0;
}

std::optional<UnreadableEntry> findUnreadable(const BlurayDiscSource& source, std::string_view relativePath,
                                              BlurayUse use)
{
    return findUnreadableAt(source, splitPath(relativePath), use);
}

int listFilesWithSuffix(const BlurayDiscSource& source, std::string_view directoryPath,
                        std::string_view suffix, std::vector<std::string>& names)
{
    names.clear();
    const auto components = splitPath(directoryPath);
    const bool isImage = source.mode != BluraySourceMode::Directory;
    if (isImage && (components.empty() || components.size() > kComponentLimit)) { return -1; }
    const DiscDirectory* const directory = directoryAt(source, components);
    if (directory == nullptr || !directory->isListable) { return -1; }
    for (const DiscEntry& entry : directory->entries()) {
        const std::string_view name = entry.name;
        if (entry.isDirectory || name.size() <= suffix.size()) { continue; }
        const std::size_t stemLength = name.size() - suffix.size();
        if (equalIgnoringCase(name.substr(stemLength), suffix)) { names.emplace_back(name, 0, stemLength); }
    }
    return 0;
}

}  // namespace discio
