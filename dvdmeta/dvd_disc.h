// The navigation files of a DVD-Video: the manager's title table (VIDEO_TS.IFO), the streams and titles of every
// title set (VTS_01_0.IFO to VTS_99_0.IFO), and the raw bytes of these files.
#pragma once

#include "discio/error_text.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace dvdmeta {

inline constexpr std::size_t kMaxTitles = 99;
inline constexpr std::size_t kMaxTitleSets = 99;
inline constexpr std::size_t kMaxRawIfos = 100;
inline constexpr std::size_t kMaxAudioStreams = 8;
inline constexpr std::size_t kMaxSubpictureStreams = 32;
inline constexpr std::size_t kIdentifierSize = 32;

// An ISO 639-1 code as stored; both bytes are zero if the stream declares no language.
using DvdLanguage = std::array<char, 2>;

struct DvdVideoAttributes {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::string formatName;  // the coding mode's name
    std::uint8_t codingMode = 0;
};

struct DvdAudioStream {
    DvdLanguage language = {};
    std::string codingName;
    std::string channels;  // "2 channels"
    std::string sampleRateName;
    std::uint8_t codingMode = 0;
    std::uint8_t channelsMinusOne = 0;
    std::uint8_t sampleRateCode = 0;
};

struct DvdSubpictureStream {
    DvdLanguage language = {};
    std::string codingName;
    std::uint8_t codingMode = 0;
};

// The streams that a title set declares for all its titles.
struct DvdStreamAttributes {
    DvdVideoAttributes video;
    std::vector<DvdAudioStream> audio;            // at most 8
    std::vector<DvdSubpictureStream> subpicture;  // at most 32
};

// A cell of a program chain: a piece of the title's video and how long it plays.
struct DvdCell {
    std::uint64_t durationMs = 0;
    std::uint32_t firstSector = 0;  // counted from the first sector of the title VOBs, like lastSector
    std::uint32_t lastSector = 0;
};

struct DvdTitle {
    // From the manager's title table.
    std::uint32_t titleNumber = 0;     // 1-based
    std::uint32_t titleSetNumber = 0;  // VTSN
    std::uint32_t vtsTtn = 0;          // the title's number within its title set
    std::uint32_t angleCount = 0;
    // Deliberate: one bit of the table sets two fields. The first means that the title has several or random
    // PGCs, the second that its size counts the entry PGC only.
    std::uint32_t multiOrRandomPgc = 0;
    std::uint32_t sizeFromEntryPgcOnly = 0;

    // From the title set.
    std::uint32_t chapterCount = 0;  // PTT entries; the title table's own count is not used
    std::uint32_t complexAngle = 0;  // 1: the size leaves out later cells of an angle block
    std::uint32_t programCount = 0;
    std::uint32_t cellCount = 0;
    std::uint64_t durationMs = 0;
    std::uint64_t playbackSizeBytes = 0;  // of angle 1
    std::uint64_t firstSector = 0;        // counted from the title set's start, like lastSector
    std::uint64_t lastSector = 0;
    std::vector<DvdCell> cells;  // of angle 1, from the title's first on
    DvdStreamAttributes streams;

    // True if several angles or PGCs share the title's sectors, so that the size of angle 1 is an estimate.
    [[nodiscard]] bool isSizeEstimated() const { return complexAngle != 0 || sizeFromEntryPgcOnly != 0; }
};

struct DvdTitleSet {
    std::uint32_t number = 0;  // 1 to 99
    DvdStreamAttributes streams;
};

struct DvdRawIfo {
    std::string name;
    std::vector<std::uint8_t> bytes;
};

struct DvdDisc {
    std::string providerText;  // trimmed
    std::string volumeLabel;   // trimmed; images only
    std::array<std::uint8_t, kIdentifierSize> providerRaw = {};
    std::array<std::uint8_t, kIdentifierSize> volumeRaw = {};
    bool hasVolumeInfo = false;
    std::vector<DvdTitle> titles;        // title i at index i - 1
    std::vector<DvdTitleSet> titleSets;  // in ascending number
    std::vector<DvdRawIfo> rawIfos;      // VIDEO_TS.IFO, then each title set's
};

// Reads the disc directory or ISO image at `path` into `disc`. Returns 0; or -1 with `disc` empty and a message
// in `error`. The message is "" if a title's numbers are 0 or memory does not suffice. One bad file fails the
// whole disc, and so does a bound that is reached (discio/read_budget.h). The buffer may be null.
[[nodiscard]] int readDvdDisc(const char* path, DvdDisc* disc, const discio::ErrorText& error);
[[nodiscard]] inline int readDvdDisc(const char* path, DvdDisc* disc, char* errorText,
                                     std::size_t errorCapacity)
{
    return readDvdDisc(path, disc, discio::ErrorText(errorText, errorCapacity));
}

// Empties the record and frees its memory.
void releaseDvdDisc(DvdDisc& disc);

}  // namespace dvdmeta
