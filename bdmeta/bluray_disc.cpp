// BDMV/index.bdmv:
//      0  "INDX", 4 version                         8  address of Indexes(): 28 number of titles
//
// CERTIFICATE/id.bdmv:
//      0  "BDID"                                   40  organization identifier, 4 bytes
//                                                  44  disc identifier, 16 bytes
#include "bdmeta/bluray_disc.h"

#include "bdmeta/clpi.h"
#include "bdmeta/field_text.h"
#include "bdmeta/mpls.h"
#include "discio/bluray_source.h"
#include "discio/error_text.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <optional>
#include <span>

namespace bdmeta {

using discio::ByteReader;
using discio::ErrorText;
using discio::ReadBudget;

namespace {

constexpr char kPlaylistDirectory[] = "BDMV/PLAYLIST";
constexpr char kClipInfoDirectory[] = "BDMV/CLIPINF";

constexpr std::size_t kIndexMinimumSize = 16;
constexpr std::size_t kIdMinimumSize = 60;
constexpr std::size_t kTitleCountOffset = 28;

constexpr std::size_t kMaxReadWarnings = 100;  // the rest share one

std::string hexText(std::span<const std::uint8_t> bytes)
{
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 0x0FU];
    }
    return text;
}

bool beginsWith(std::span<const std::uint8_t> bytes, std::string_view magic)
{
    ByteReader reader(bytes);
    return readText<4>(reader).view() == magic;
}

void parseIndex(std::span<const std::uint8_t> bytes, BlurayDisc& disc)
{
    if (bytes.size() < kIndexMinimumSize || !beginsWith(bytes, "INDX")) { return; }
    ByteReader reader(bytes);
    reader.skip(4);
    std::ranges::copy(reader.bytes(disc.indexVersion.size()), disc.indexVersion.begin());
    const std::uint32_t address = reader.be32();
    reader.seek(address);
    reader.skip(kTitleCountOffset);
    disc.titleCount = reader.be16();
}

void parseId(std::span<const std::uint8_t> bytes, BlurayDisc& disc)
{
    if (bytes.size() < kIdMinimumSize || !beginsWith(bytes, "BDID")) { return; }
    disc.organizationId = hexText(bytes.subspan(40, 4));
    disc.discId = hexText(bytes.subspan(44, 16));
}

// A path on the disc. A longer path is cut, also for the look-up.
using DiscPath = std::array<char, 64>;

DiscPath discPath(const char* directory, const std::string& name, const char* suffix)
{
    DiscPath path = {};
    std::snprintf(path.data(), path.size(), "%s/%s%s", directory, name.c_str(), suffix);
    return path;
}

// Reads one disc in steps; fail() writes the message of the failed step.
class DiscRead {
public:
    DiscRead(BlurayDisc& disc, const ErrorText& error)
        : m_disc(disc)
        , m_error(error)
    {}

    bool run(const char* path)
    {
        if (openBluraySource(path, m_source, m_error) != 0) { return false; }
        m_streamTables.emplace(*m_source.budget);
        m_disc.volumeId = m_source.volumeId;
        readIdentity();

        m_step = Step::Listing;
        std::vector<std::string> playlists;
        std::vector<std::string> clips;
        if (!listSorted(kPlaylistDirectory, ".mpls", playlists) ||
            !listSorted(kClipInfoDirectory, ".clpi", clips)) {
            return false;
        }
        m_step = Step::Playlists;
        const bool arePlaylistsRead =
            std::ranges::all_of(playlists, [this](const std::string& name) { return readPlaylist(name); });
        if (!arePlaylistsRead) { return false; }
        m_step = Step::Clips;
        // An optional file, or the size of a stream file, can have reached a bound without a failure.
        return std::ranges::all_of(clips, [this](const std::string& name) { return readClip(name); }) &&
               m_source.budget->reached() == nullptr;
    }

    int fail() const
    {
        const char* const bound = m_source.budget ? m_source.budget->reached() : nullptr;
        if (bound != nullptr) { return m_error.fail(bound); }
        switch (m_step) {
        case Step::Opening:  // openBluraySource() has written the message
            break;
        case Step::Listing:
            return m_error.fail(
                MESSAGE_NOOP("Messages", "cannot enumerate BDMV playlist or clip information files"));
        case Step::Playlists:
            return m_error.fail(MESSAGE_NOOP("Messages", "cannot parse playlist '%1'"), {m_path.data()});
        case Step::Clips:
            return m_error.fail(MESSAGE_NOOP("Messages", "cannot parse clip information '%1'"),
                                {m_path.data()});
        }
        return -1;
    }

    // Returns whether the failed step's file or directory lies after the image's limit of reading.
    [[nodiscard]] bool isBeyondImageLimit() const
    {
        const auto isBeyondLimit = [this](const char* path, discio::BlurayUse use) {
            const auto unreadable = findUnreadable(m_source, path, use);
            return unreadable && unreadable->isBeyondLimit;
        };
        switch (m_step) {
        case Step::Opening:
            break;
        case Step::Listing:
            return isBeyondLimit(kPlaylistDirectory, discio::BlurayUse::Directory) ||
                   isBeyondLimit(kClipInfoDirectory, discio::BlurayUse::Directory);
        case Step::Playlists:
        case Step::Clips:
            return isBeyondLimit(m_path.data(), discio::BlurayUse::File);
        }
        return false;
    }

private:
    enum class Step { Opening, Listing, Playlists, Clips };

    // Both files are optional; a malformed one is ignored.
    void readIdentity()
    {
        std::vector<std::uint8_t> bytes;
        if (readOptional("BDMV/index.bdmv", bytes)) { parseIndex(bytes, m_disc); }
        if (readOptional("CERTIFICATE/id.bdmv", bytes)) { parseId(bytes, m_disc); }
    }

    bool readOptional(const char* path, std::vector<std::uint8_t>& bytes)
    {
        if (readWholeFile(m_source, path, bytes) == 0) { return true; }
        warnOfUnreadable(path, discio::BlurayUse::File);
        return false;
    }

    std::uint64_t streamFileSize(const std::string& name)
    {
        const DiscPath path = discPath("BDMV/STREAM", name, ".m2ts");
        const std::uint64_t sizeBytes = blurayFileSize(m_source, path.data());
        if (sizeBytes == 0) { warnOfUnreadable(path.data(), discio::BlurayUse::Size); }
        return sizeBytes;
    }

    // Adds no warning if the path does not exist.
    void warnOfUnreadable(const char* path, discio::BlurayUse use)
    {
        std::vector<discio::Message>& warnings = m_disc.readWarnings;
        if (m_source.budget->reached() != nullptr || warnings.size() > kMaxReadWarnings) { return; }
        auto unreadable = findUnreadable(m_source, path, use);
        if (!unreadable || std::ranges::find(warnings, unreadable->message) != warnings.end()) { return; }
        if (warnings.size() == kMaxReadWarnings) {
            unreadable->message = {MESSAGE_NOOP("Messages", "more of the disc cannot be read"), {}};
        }
        warnings.push_back(std::move(unreadable->message));
    }

    bool listSorted(const char* directory, const char* suffix, std::vector<std::string>& names)
    {
        if (listFilesWithSuffix(m_source, directory, suffix, names) != 0) { return false; }
        std::ranges::sort(names);
        return true;
    }

    // Reads the file of a listed name. A name in an image can contain the separator of paths; its path would be that of
    // another file.
    bool readListed(const std::string& name, std::vector<std::uint8_t>& bytes)
    {
        return name.find('/') == std::string::npos && readWholeFile(m_source, m_path.data(), bytes) == 0;
    }

    bool readPlaylist(const std::string& name)
    {
        m_path = discPath(kPlaylistDirectory, name, ".mpls");
        std::vector<std::uint8_t> bytes;
        if (!readListed(name, bytes)) { return false; }
        auto playlist = parsePlaylistBytes(bytes, *m_streamTables);
        if (!playlist) { return false; }
        playlist->name = FixedText<5>(name);
        playlist->rawData = std::move(bytes);
        m_disc.playlists.push_back(std::move(*playlist));
        return true;
    }

    bool readClip(const std::string& name)
    {
        m_path = discPath(kClipInfoDirectory, name, ".clpi");
        const std::uint64_t sizeBytes = streamFileSize(name);
        std::vector<std::uint8_t> bytes;
        if (!readListed(name, bytes)) { return false; }
        auto clip = parseClipInfoBytes(bytes);
        if (!clip) { return false; }
        if (!m_source.budget->spend(ReadBudget::Bound::Streams, clip->streams.size())) { return false; }
        clip->name = ClipName(name);
        clip->streamFileSize = sizeBytes;
        clip->rawData = std::move(bytes);
        m_disc.clips.push_back(std::move(*clip));
        return true;
    }

    BlurayDisc& m_disc;
    const ErrorText& m_error;
    discio::BlurayDiscSource m_source;
    std::optional<StreamTables> m_streamTables;
    Step m_step = Step::Opening;
    DiscPath m_path = {};  // of the file being read
};

}  // namespace

int readBlurayDisc(const char* path, BlurayDisc* disc, const ErrorText& error)
{
    if (path == nullptr || disc == nullptr) {
        return error.fail(MESSAGE_NOOP("Messages", "path and disc are required"));
    }
    releaseBlurayDisc(*disc);
    DiscRead read(*disc, error);
    try {
        if (read.run(path)) { return 0; }
        releaseBlurayDisc(*disc);
        if (read.isBeyondImageLimit()) { disc->readWarnings = {{discio::kBeyondImageLimit, {}}}; }
    } catch (const std::bad_alloc&) {  // fails the step in which it is thrown
        releaseBlurayDisc(*disc);
    }
    return read.fail();
}

void releaseBlurayDisc(BlurayDisc& disc)
{
    disc = {};
}

}  // namespace bdmeta
