// A DVD's record as text, to compare with golden files: a line for the disc, each title, stream and file.
#pragma once

#include "dvdmeta/distinct_play_time.h"
#include "dvdmeta/dvd_disc.h"

#include <cstdio>
#include <sstream>
#include <string>

// Characters that cannot be printed stand as \0 or \xNN.
inline std::string textOf(const auto& characters)
{
    std::string text;
    for (const auto character : characters) {
        const auto byte = static_cast<unsigned char>(character);
        char code[5] = {static_cast<char>(byte)};
        if (byte < 0x20 || byte > 0x7E) {
            std::snprintf(code, sizeof(code), byte == 0 ? "\\0" : "\\x%02X", byte);
        }
        text += code;
    }
    return text;
}

inline std::string textOf(const dvdmeta::DvdStreamAttributes& streams)
{
    const dvdmeta::DvdVideoAttributes& video = streams.video;
    std::ostringstream out;
    out << "  " << +video.codingMode << ' ' << video.formatName << ' ' << video.width << 'x' << video.height
        << '\n';
    for (const dvdmeta::DvdAudioStream& audio : streams.audio) {
        out << "  audio " << textOf(audio.language) << ", " << +audio.codingMode << ' ' << audio.codingName
            << ", " << +audio.channelsMinusOne << ' ' << audio.channels << ", " << +audio.sampleRateCode
            << ' ' << audio.sampleRateName << '\n';
    }
    for (const dvdmeta::DvdSubpictureStream& subpicture : streams.subpicture) {
        out << "  subpicture " << textOf(subpicture.language) << ", " << +subpicture.codingMode << ' '
            << subpicture.codingName << '\n';
    }
    return out.str();
}

// What a title takes from its title set, but for the streams.
inline std::string textOf(const dvdmeta::DvdTitle& title)
{
    std::ostringstream out;
    out << title.chapterCount << " chapters, " << title.programCount << " programs, " << title.cellCount
        << " cells, " << title.durationMs << " ms, " << title.playbackSizeBytes << " bytes, sectors "
        << title.firstSector << " to " << title.lastSector
        << (title.complexAngle == 1 ? ", complex angles" : "");
    if (const auto ms = dvdmeta::distinctPlayTimeMs(title.cells); ms > 0) {
        out << ", distinct " << ms << " ms";
    }
    return out.str();
}

inline std::string textOf(const dvdmeta::DvdDisc& disc)
{
    std::ostringstream out;
    if (disc.hasVolumeInfo) {
        out << "volume " << disc.volumeLabel << '|' << textOf(disc.volumeRaw) << "|\n";
    }
    out << "provider " << disc.providerText << '|' << textOf(disc.providerRaw) << "|\n";
    for (const dvdmeta::DvdTitle& title : disc.titles) {
        out << "title " << title.titleNumber << ": title " << title.vtsTtn << " of set "
            << title.titleSetNumber << ", " << title.angleCount << " angles, PGC flags "
            << title.multiOrRandomPgc << title.sizeFromEntryPgcOnly
            << (title.isSizeEstimated() ? ", estimated" : "") << "\n  " << textOf(title) << '\n'
            << textOf(title.streams);
    }
    for (const dvdmeta::DvdTitleSet& titleSet : disc.titleSets) {
        out << "title set " << titleSet.number << '\n' << textOf(titleSet.streams);
    }
    for (const dvdmeta::DvdRawIfo& ifo : disc.rawIfos) {
        out << ifo.name << ", " << ifo.bytes.size() << " bytes\n";
    }
    return out.str();
}
