#include "discio/dvd_source.h"

#include "discio/error_text.h"
#include "discio/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

namespace discio {

namespace {

constexpr std::string_view kVideoTs = "VIDEO_TS";
constexpr std::uint32_t kDvdBlockSize = 2048;

int openDirectory(const std::string& path, DvdDiscSource& source, const ErrorText& error)
{
    const std::size_t separator = path.find_last_of("/\\");
    if (separator != std::string::npos &&
        equalIgnoringCase(std::string_view(path).substr(separator + 1), kVideoTs)) {
        source.videoTsPath = path;
        return 0;
    }
    for (const char* child : {"/VIDEO_TS", "/video_ts"}) {
        std::string candidate = path + child;
        if (queryPath(candidate).kind == PathKind::Directory) {
            source.videoTsPath = std::move(candidate);
            return 0;
        }
    }
    return error.fail(MESSAGE_NOOP("Messages", "'%1' has no VIDEO_TS directory"), {path});
}

int openImage(const std::string& path, DvdDiscSource& source, const ErrorText& error)
{
    source.isImage = true;
    const OpenedFile opened = openRegularFile(path);
    if (!opened.stream) {
        return error.fail(MESSAGE_NOOP("Messages", "cannot open '%1': %2"),
                          {path, systemErrorText(opened.errorNumber)});
    }
    source.budget->holdToImage(opened.sizeBytes);
    const std::optional<IsoVolume> volume = readPrimaryVolumeDescriptor(*opened.stream);
    if (!volume) {
        return error.fail(MESSAGE_NOOP("Messages", "'%1' is not a supported ISO-9660 image"), {path});
    }
    if (volume->blockSize != kDvdBlockSize || volume->rootRecordLength < kIsoRecordMinimum) {
        return error.fail(MESSAGE_NOOP("Messages", "'%1' has an unsupported ISO block size"), {path});
    }
    const auto videoTs =
        findDirectoryRecord(*opened.stream, volume->blockSize, volume->root, kVideoTs, *source.budget);
    if (const char* const bound = source.budget->reached()) { return error.fail(bound); }
    if (!videoTs || !videoTs->isDirectory) {
        return error.fail(MESSAGE_NOOP("Messages", "ISO image has no VIDEO_TS directory"));
    }

    source.image = opened.stream;
    source.blockSize = volume->blockSize;
    source.videoTsExtent = videoTs->extent;
    IsoDirectoryWalk walk(*source.image, source.blockSize, source.videoTsExtent, *source.budget);
    while (auto record = walk.next()) {
        source.videoTs.add(
            {std::move(record->name), record->isDirectory, record->extent.block, record->extent.sizeBytes});
    }
    const char* const bound = source.budget->reached();
    return bound == nullptr ? 0 : error.fail(bound);
}

// Finds the file in the image: the first record with its name must be a file's.
std::optional<DiscFileRef> findInImage(const DvdDiscSource& source, const std::string& name)
{
    const DiscEntry* const entry = source.videoTs.find(name);
    if (entry == nullptr || entry->isDirectory) { return std::nullopt; }
    return DiscFileRef{source.image, std::uint64_t{source.blockSize} * entry->block, entry->sizeBytes};
}

// Opens a file of the directory. If the file is missing and `absent` is not null, sets `*absent` instead of a message.
int openInDirectory(const DvdDiscSource& source, const std::string& name, DiscFileRef& ref, bool* absent,
                    const ErrorText& error)
{
    const std::string path = source.videoTsPath + '/' + name;
    const OpenedFile opened = openRegularFile(path);
    if (!opened.stream) {
        if (opened.isSpecial) {
            return error.fail(MESSAGE_NOOP("Messages", "cannot determine size of '%1'"), {path});
        }
        if (absent != nullptr && opened.errorNumber == ENOENT) {
            *absent = true;
            return -1;
        }
        return error.fail(MESSAGE_NOOP("Messages", "cannot open '%1': %2"),
                          {path, systemErrorText(opened.errorNumber)});
    }
    const std::optional<std::uint64_t> sizeBytes = streamSize(*opened.stream);
    if (!sizeBytes) { return error.fail(MESSAGE_NOOP("Messages", "cannot determine size of '%1'"), {path}); }
    ref = {opened.stream, 0, *sizeBytes};
    return 0;
}

}  // namespace

int openDvdSource(const char* path, DvdDiscSource& source, const ErrorText& error)
{
    source = {};
    source.budget = std::make_shared<ReadBudget>();
    const PathStatus status = queryPath(path);
    switch (status.kind) {
    case PathKind::Missing:
        return error.fail(MESSAGE_NOOP("Messages", "cannot stat '%1': %2"),
                          {path, systemErrorText(status.errorNumber)});
    case PathKind::Directory:
        return openDirectory(path, source, error);
    case PathKind::RegularFile:
        return openImage(path, source, error);
    case PathKind::Other:
        break;
    }
    return error.fail(MESSAGE_NOOP("Messages", "'%1' is neither a directory nor an ISO image"), {path});
}

int openDvdFile(const DvdDiscSource& source, const std::string& name, DiscFileRef& ref,
                const ErrorText& error)
{
    ref = {};
    if (!source.isImage) { return openInDirectory(source, name, ref, nullptr, error); }
    const auto found = findInImage(source, name);
    if (!found) { return error.fail(MESSAGE_NOOP("Messages", "ISO image has no VIDEO_TS/%1"), {name}); }
    ref = *found;
    return 0;
}

int openDvdFileOptional(const DvdDiscSource& source, const std::string& name, DiscFileRef& ref,
                        const ErrorText& error)
{
    ref = {};
    if (!source.isImage) {
        bool absent = false;
        if (openInDirectory(source, name, ref, &absent, error) == 0) { return 1; }
        return absent ? 0 : -1;
    }
    const auto found = findInImage(source, name);
    if (!found) { return 0; }
    ref = *found;
    return 1;
}

DiscFileBytes readDiscFile(const DiscFileRef& ref, ReadBudget& budget)
{
    DiscFileBytes file;
    file.sizeBytes = ref.sizeBytes;
    const std::uint64_t streamEnd = streamSize(*ref.stream).value_or(0);
    const std::uint64_t available = streamEnd > ref.offset ? streamEnd - ref.offset : 0;
    const std::uint64_t wanted = std::min(ref.sizeBytes, available);
    if (!budget.spend(ReadBudget::Bound::NavigationBytes, wanted)) { return file; }
    try {
        file.bytes.resize(static_cast<std::size_t>(wanted));
    } catch (const std::bad_alloc&) {  // the reader's message names the file
        return file;
    }
    file.bytes.resize(readUpTo(*ref.stream, ref.offset, file.bytes));
    return file;
}

}  // namespace discio
