// A DVD's record as text, to compare with golden files: a line for the disc, each title, stream and file.
#pragma once

#include "dvdmeta/distinct_play_time.h"
#include "dvdmeta/dvd_disc.h"

#include <cstdio>
#include <sstream>
#include <string>

// Unprintable characters become \0 or \xNN.
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
    std::ostringstream out;
    const auto& [width, height, formatName, codingMode] = streams.video;
    out << "  " << +codingMode << ' ' << formatName << ' ' << width << 'x' << height << '\n';
    for (const auto& a : streams.audio) {
        out << "  audio " << textOf(a.language) << ", " << +a.codingMode << ' ' << a.codingName << ", "
            << +a.channelsMinusOne << ' ' << a.channels << ", " << +a.sampleRateCode << ' '
            << a.sampleRateName << '\n';
    }
    for (const auto& s : streams.subpicture) {
        out << "  subpicture " << textOf(s.language) << ", " << +s.codingMode << ' ' << s.codingName << '\n';
    }
    return out.str();
}

// What a title takes from its title set, but for the streams.
inline std::string textOf(const dvdmeta::DvdTitle& t)
{
    std::ostringstream out;
    out << t.chapterCount << " chapters, " << t.programCount << " programs, " << t.cellCount << " cells, "
        << t.durationMs << " ms, " << t.playbackSizeBytes << " bytes, sectors " << t.firstSector << " to "
        << t.lastSector << (t.complexAngle == 1 ? ", complex angles" : "");
    if (const auto ms = dvdmeta::distinctPlayTimeMs(t.cells); ms > 0) { out << ", distinct " << ms << " ms"; }
    return out.str();
}

inline std::string textOf(const dvdmeta::DvdDisc& disc)
{
    std::ostringstream out;
    if (disc.hasVolumeInfo) {
        out << "volume " << disc.volumeLabel << '|' << textOf(disc.volumeRaw) << "|\n";
    }
    out << "provider " << disc.providerText << '|' << textOf(disc.providerRaw) << "|\n";
    for (const dvdmeta::DvdTitle& t : disc.titles) {
        out << "title " << t.titleNumber << ": title " << t.vtsTtn << " of set " << t.titleSetNumber << ", "
            << t.angleCount << " angles, PGC flags " << t.multiOrRandomPgc << t.sizeFromEntryPgcOnly
            << (t.isSizeEstimated() ? ", estimated" : "") << "\n  " << textOf(t) << '\n'
            << textOf(t.streams);
    }
    for (const dvdmeta::DvdTitleSet& titleSet : disc.titleSets) {
        out << "title set " << titleSet.number << '\n' << textOf(titleSet.streams);
    }
    for (const dvdmeta::DvdRawIfo& ifo : disc.rawIfos) {
        out << ifo.name << ", " << ifo.bytes.size() << " bytes\n";
    }
    return out.str();
}
