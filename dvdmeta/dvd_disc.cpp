// Reads VIDEO_TS.IFO, the manager's IFO, and with it the whole disc.
//
//     0x00  "DVDVIDEO-VMG"        0x40  provider identifier, 32 bytes
//     0xC4  sector of the title table (TT_SRPT): u16 titles, u32 end address at 4, then 12 bytes
//           for each title: byte 0 bit 6 several or random PGCs, 1 angles, 2-3 chapters, 6 title set,
//           7 title within it
#include "dvdmeta/dvd_disc.h"

#include "discio/dvd_source.h"
#include "discio/error_text.h"
#include "discio/text.h"
#include "dvdmeta/ifo_file.h"
#include "dvdmeta/title_set.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <new>

namespace dvdmeta {

using discio::ByteReader;
using discio::ErrorText;

namespace {

constexpr char kManagerName[] = "VIDEO_TS.IFO";
constexpr std::string_view kVmgMagic = "DVDVIDEO-VMG";
constexpr std::uint64_t kVmgHeaderSize = 2048;
constexpr std::uint64_t kProviderOffset = 0x40;
constexpr std::uint64_t kTitleTableSectorOffset = 0xC4;
constexpr std::uint64_t kTitleTableHeaderSize = 8;
constexpr std::uint64_t kTitleEntrySize = 12;

// The numbers 100 to 255 give a name of 13 characters.
std::string titleSetFileName(std::uint32_t number)
{
    std::array<char, 16> name = {};
    std::snprintf(name.data(), name.size(), "VTS_%02u_0.IFO", number);
    return name.data();
}

// Reads one disc: first the titles, then the title sets. It keeps the files that the titles need in memory, so
// that each file is read once.
class DiscRead {
public:
    DiscRead(DvdDisc& disc, const ErrorText& error)
        : m_disc(disc)
        , m_error(error)
    {}

    int run(const char* path)
    {
        const int outcome = read(path);
        const char* const bound = m_source.budget->reached();
        return bound == nullptr ? outcome : m_error.fail(bound);
    }

private:
    int read(const char* path)
    {
        if (openDvdSource(path, m_source, m_error) != 0) { return -1; }
        discio::DiscFileRef ref;
        if (openDvdFile(m_source, kManagerName, ref, m_error) != 0) { return -1; }
        IfoFile manager = load(kManagerName, ref);
        if (readManager(manager) != 0 || retain(std::move(manager)) != 0 || readTitleSets() != 0) {
            return -1;
        }
        readVolumeId();
        return 0;
    }

    IfoFile load(const std::string& name, const discio::DiscFileRef& ref)
    {
        return {name, readDiscFile(ref, *m_source.budget)};
    }

    int readManager(const IfoFile& manager)
    {
        if (manager.sizeBytes() < kVmgHeaderSize || !manager.at(0, kVmgHeaderSize).ok() ||
            !manager.beginsWith(kVmgMagic)) {
            return m_error.fail(MESSAGE_NOOP("Messages", "VIDEO_TS.IFO is not a DVD-Video manager IFO"));
        }
        std::ranges::copy(manager.at(kProviderOffset, kIdentifierSize).bytes(kIdentifierSize),
                          m_disc.providerRaw.begin());
        m_disc.providerText = discio::fixedFieldText(m_disc.providerRaw);

        const std::uint64_t table = manager.at(kTitleTableSectorOffset, 4).be32() * kSectorSize;
        ByteReader header = manager.at(table, kTitleTableHeaderSize);
        if (table == 0 || !header.ok()) {
            return m_error.fail(MESSAGE_NOOP("Messages", "VIDEO_TS.IFO has no readable title table"));
        }
        const std::uint64_t declaredCount = header.be16();
        header.skip(2);
        std::uint64_t endAddress = header.be32();
        if (endAddress == 0) { endAddress = declaredCount * kTitleEntrySize + 7; }
        if (endAddress < 7 || endAddress + 1 > manager.sizeBehind(table)) {
            return m_error.fail(MESSAGE_NOOP("Messages", "VIDEO_TS.IFO has an invalid title table"));
        }
        const std::uint64_t count =
            std::min({declaredCount, (endAddress - 7) / kTitleEntrySize, std::uint64_t{kMaxTitles}});
        return readTitles(manager, table + kTitleTableHeaderSize, count);
    }

    int readTitles(const IfoFile& manager, std::uint64_t entries, std::uint64_t count)
    {
        for (std::uint64_t i = 0; i < count; ++i) {
            ByteReader entry = manager.at(entries + i * kTitleEntrySize, kTitleEntrySize);
            const std::uint8_t playbackType = entry.u8();
            DvdTitle title;
            title.titleNumber = static_cast<std::uint32_t>(i + 1);
            title.multiOrRandomPgc = (playbackType >> 6U) & 1U;
            title.sizeFromEntryPgcOnly = title.multiOrRandomPgc;
            title.angleCount = entry.u8();
            title.chapterCount = entry.be16();
            entry.skip(2);
            title.titleSetNumber = entry.u8();
            title.vtsTtn = entry.u8();
            if (!entry.ok()) {
                return m_error.fail(MESSAGE_NOOP("Messages", "cannot read title %1"),
                                    {std::to_string(title.titleNumber)});
            }
            if (title.titleSetNumber == 0 || title.vtsTtn == 0) { return -1; }

            const IfoFile* titleSet = loadTitleSet(title.titleSetNumber);
            if (titleSet == nullptr || readTitle(*titleSet, title, m_error) != 0) { return -1; }
            m_disc.titles.push_back(std::move(title));
        }
        return 0;
    }

    // Returns the file of a title set; null, with a message, if it cannot be opened.
    const IfoFile* loadTitleSet(std::uint32_t number)
    {
        const auto known = m_titleSetFiles.find(number);
        if (known != m_titleSetFiles.end()) { return &known->second; }
        const std::string name = titleSetFileName(number);
        discio::DiscFileRef ref;
        if (openDvdFile(m_source, name, ref, m_error) != 0) { return nullptr; }
        return &m_titleSetFiles.emplace(number, load(name, ref)).first->second;
    }

    int readTitleSets()
    {
        for (std::uint32_t number = 1; number <= kMaxTitleSets; ++number) {
            IfoFile file;
            if (const auto node = m_titleSetFiles.extract(number)) {
                file = std::move(node.mapped());
            } else {
                const std::string name = titleSetFileName(number);
                discio::DiscFileRef ref;
                const int opened = openDvdFileOptional(m_source, name, ref, m_error);
                if (opened < 0) { return -1; }
                if (opened == 0) { continue; }
                file = load(name, ref);
            }
            // retain() moves the bytes, so the attributes are read before it; checkRetainable() comes first so
            // that its message wins.
            if (checkRetainable(file) != 0 || readTitleSet(file, number, m_disc, m_error) != 0 ||
                retain(std::move(file)) != 0) {
                return -1;
            }
        }
        return 0;
    }

    int checkRetainable(const IfoFile& file) const
    {
        if (m_disc.rawIfos.size() >= kMaxRawIfos || file.sizeBytes() == 0) {
            return m_error.fail(MESSAGE_NOOP("Messages", "DVD has too many or invalid IFO files"));
        }
        if (!file.isComplete()) {
            return m_error.fail(MESSAGE_NOOP("Messages", "cannot read VIDEO_TS/%1"), {file.name()});
        }
        return 0;
    }

    int retain(IfoFile file)
    {
        if (checkRetainable(file) != 0) { return -1; }
        m_disc.rawIfos.push_back({file.name(), file.takeBytes()});
        return 0;
    }

    void readVolumeId()
    {
        if (!m_source.isImage) { return; }
        const auto volume = discio::readPrimaryVolumeDescriptor(*m_source.image);
        if (!volume) { return; }
        m_disc.volumeRaw = volume->volumeId;
        m_disc.volumeLabel = discio::fixedFieldText(m_disc.volumeRaw);
        m_disc.hasVolumeInfo = true;
    }

    DvdDisc& m_disc;
    const ErrorText& m_error;
    discio::DvdDiscSource m_source;
    std::map<std::uint32_t, IfoFile> m_titleSetFiles;
};

}  // namespace

int readDvdDisc(const char* path, DvdDisc* disc, const ErrorText& error)
{
    if (path == nullptr || disc == nullptr) {
        return error.fail(MESSAGE_NOOP("Messages", "path and disc are required"));
    }
    releaseDvdDisc(*disc);
    int outcome = -1;
    try {
        outcome = DiscRead(*disc, error).run(path);
    } catch (const std::bad_alloc&) {  // without a message: to format one could need memory
    }
    if (outcome != 0) { releaseDvdDisc(*disc); }
    return outcome;
}

void releaseDvdDisc(DvdDisc& disc)
{
    disc = {};
}

}  // namespace dvdmeta
