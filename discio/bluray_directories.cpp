#include "discio/bluray_directories.h"

#include "discio/directory_list.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace discio {

namespace {

using Components = std::span<const std::string_view>;

std::optional<DiscDirectory> readTreeDirectory(const std::string& path)
{
    auto names = listDirectory(path);
    if (!names) { return std::nullopt; }
    DiscDirectory directory;
    directory.path = path;
    directory.isListable = true;
    for (std::string& name : *names) {
        directory.add({std::move(name)});
    }
    return directory;
}

// A directory that cannot be read to its end is not listable; the records before that place can still be found.
DiscDirectory readIsoDirectory(const BlurayDiscSource& source, const IsoExtent& extent)
{
    DiscDirectory directory;
    const std::uint64_t offset = std::uint64_t{extent.block} * source.blockSize;
    if (offset >= kImageOffsetLimit) { return directory; }
    IsoDirectoryWalk walk(*source.image.stream, source.blockSize, extent, *source.budget);
    while (auto record = walk.next()) {
        directory.add(
            {std::move(record->name), record->isDirectory, record->extent.block, record->extent.sizeBytes},
            record->position < kImageOffsetLimit);
    }
    directory.isListable = walk.isAtEnd() && isReadable(source.image, {offset, extent.sizeBytes});
    return directory;
}

std::optional<DiscDirectory> readRoot(const BlurayDiscSource& source)
{
    switch (source.mode) {
    case BluraySourceMode::Directory:
        return readTreeDirectory(source.rootPath);
    case BluraySourceMode::Iso:
        return readIsoDirectory(source, source.isoRootExtent);
    case BluraySourceMode::Udf:
        break;
    }
    return readUdfDirectory(source.image, source.udf, source.udf.rootIcb);
}

const DiscEntry* findEntry(const BlurayDiscSource& source, const DiscDirectory& directory,
                           std::string_view name)
{
    if (source.mode == BluraySourceMode::Directory) {
        const auto exact = std::ranges::lower_bound(directory.entries(), name, {}, &DiscEntry::name);
        if (exact != directory.entries().end() && exact->name == name) { return &*exact; }
    }
    return directory.find(name);
}

std::optional<DiscDirectory> readSubdirectory(const BlurayDiscSource& source, const DiscDirectory& parent,
                                              std::string_view name)
{
    const DiscEntry* const entry = findEntry(source, parent, name);
    if (entry == nullptr) { return std::nullopt; }
    switch (source.mode) {
    case BluraySourceMode::Directory:
        return readTreeDirectory(parent.path + '/' + entry->name);
    case BluraySourceMode::Iso:
        if (!entry->isDirectory) { return std::nullopt; }
        return readIsoDirectory(source, {entry->block, entry->sizeBytes});
    case BluraySourceMode::Udf:
        break;
    }
    return readUdfDirectory(source.image, source.udf, {entry->block, entry->partition});
}

}  // namespace

std::vector<std::string_view> splitPath(std::string_view path)
{
    std::vector<std::string_view> components;
    while (!path.empty()) {
        const std::string_view component = path.substr(0, path.find('/'));
        if (!component.empty()) { components.push_back(component); }
        path.remove_prefix(std::min(component.size() + 1, path.size()));
    }
    return components;
}

std::string joinPath(Components components)
{
    std::string path;
    for (const std::string_view component : components) {
        if (!path.empty()) { path += '/'; }
        path += component;
    }
    return path;
}

const DiscDirectory* directoryAt(const BlurayDiscSource& source, Components components)
{
    const std::string path = joinPath(components);
    auto known = source.directories.find(path);
    if (known == source.directories.end()) {
        std::optional<DiscDirectory> directory;
        if (components.empty()) {
            directory = readRoot(source);
        } else if (const auto* parent = directoryAt(source, components.first(components.size() - 1))) {
            directory = readSubdirectory(source, *parent, components.back());
        }
        known = source.directories.emplace(path, std::move(directory)).first;
    }
    return known->second ? &*known->second : nullptr;
}

FoundEntry entryAt(const BlurayDiscSource& source, Components components)
{
    const auto* const directory = directoryAt(source, components.first(components.size() - 1));
    if (directory == nullptr) { return {}; }
    return {directory, findEntry(source, *directory, components.back())};
}

}  // namespace discio
