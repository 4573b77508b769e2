// Small discs of both families in each of their forms, and what reading one gives.
#pragma once

#include "bdmeta/bluray_disc.h"
#include "dvdmeta/dvd_disc.h"
#include "tests/support/sample_bluray.h"
#include "tests/support/sample_dvd.h"

#include <array>
#include <string>

namespace faults {

enum class Family { Dvd, Bluray };

inline constexpr char kNotEmpty[] = "(failed, and left something in the record)";

// Two titles in two title sets.
[[nodiscard]] inline testsupport::DiscTree dvdTree()
{
    return testsupport::sampleDvd();
}

// Three playlists and three clips, with stream files of a few bytes.
[[nodiscard]] inline testsupport::DiscTree blurayTree()
{
    testsupport::DiscTree tree = testsupport::sampleBluray();
    for (const char* clip : {"00001", "00002", "00003"}) {
        tree.add(std::string("BDMV/STREAM/") + clip + ".m2ts", testsupport::Bytes(6144));
    }
    return tree;
}

// A line on all that was found of the disc.
[[nodiscard]] inline std::string summary(const dvdmeta::DvdDisc& disc)
{
    std::string text = disc.providerText + " titles " + std::to_string(disc.titles.size()) + " sets " +
                       std::to_string(disc.titleSets.size());
    for (const dvdmeta::DvdRawIfo& ifo : disc.rawIfos) {
        text += ' ' + ifo.name + ' ' + std::to_string(ifo.bytes.size());
    }
    return text;
}

[[nodiscard]] inline std::string summary(const bdmeta::BlurayDisc& disc)
{
    std::uint64_t rawBytes = 0;
    std::uint64_t streamBytes = 0;
    for (const bdmeta::BlurayPlaylist& playlist : disc.playlists) {
        rawBytes += playlist.rawData.size();
    }
    for (const bdmeta::BlurayClip& clip : disc.clips) {
        rawBytes += clip.rawData.size();
        streamBytes += clip.streamFileSize;
    }
    return "id " + disc.discId.substr(0, 4) + " titles " + std::to_string(disc.titleCount) + " playlists " +
           std::to_string(disc.playlists.size()) + " clips " + std::to_string(disc.clips.size()) + " bytes " +
           std::to_string(rawBytes) + " streams " + std::to_string(streamBytes);
}

// Reads a disc into a record that held another before: the message of a failure, which must leave nothing of either,
// or a summary.
template <typename Disc, typename Read>
[[nodiscard]] std::string readInto(Disc disc, Read read, const std::string& path)
{
    std::array<char, 8192> text = {'?'};
    if (read(path.c_str(), &disc, text.data(), text.size()) == 0) { return summary(disc); }
    return summary(disc) == summary(Disc()) ? text.data() : kNotEmpty;
}

[[nodiscard]] inline std::string readDisc(Family family, const std::string& path)
{
    if (family == Family::Dvd) {
        dvdmeta::DvdDisc former;
        former.titles.resize(3);
        return readInto(former, dvdmeta::readDvdDisc, path);
    }
    bdmeta::BlurayDisc former;
    former.playlists.resize(3);
    former.discId = "old";
    return readInto(former, bdmeta::readBlurayDisc, path);
}

// What reading the whole small disc gives.
[[nodiscard]] inline std::string wholeDisc(Family family)
{
    const testsupport::TemporaryFolder folder;
    const testsupport::DiscTree tree = family == Family::Dvd ? dvdTree() : blurayTree();
    return readDisc(family, tree.write(testsupport::DiscForm::Directory, folder));
}

}  // namespace faults
