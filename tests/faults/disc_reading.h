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
inline constexpr char kCannotEnumerate[] = "cannot enumerate BDMV playlist or clip information files";

// What reading the small Blu-ray disc gives (readDisc), whole and without some of its files.
inline constexpr char kWholeBluray[] = "id 0001 titles 2 playlists 3 clips 3 bytes 1502 streams 18432";
inline constexpr char kWithoutIndex[] = "id 0001 titles 0 playlists 3 clips 3 bytes 1502 streams 18432";
inline constexpr char kWithoutIdentity[] = "id  titles 2 playlists 3 clips 3 bytes 1502 streams 18432";
inline constexpr char kWithoutOneStream[] = "id 0001 titles 2 playlists 3 clips 3 bytes 1502 streams 12288";
inline constexpr char kWarned[] = " (warned)";
inline constexpr char kWithoutStreams[] = "id 0001 titles 2 playlists 3 clips 3 bytes 1502 streams 0";

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
           std::to_string(rawBytes) + " streams " + std::to_string(streamBytes) +
           (disc.readWarnings.empty() ? "" : kWarned);
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

[[nodiscard]] inline testsupport::DiscTree treeOf(Family family)
{
    return family == Family::Dvd ? dvdTree() : blurayTree();
}

// What reading the whole small disc gives.
[[nodiscard]] inline std::string wholeDisc(Family family)
{
    const testsupport::TemporaryFolder folder;
    return readDisc(family, treeOf(family).write(testsupport::DiscForm::Directory, folder));
}

// The text with the path in place of "%s".
[[nodiscard]] inline std::string filledIn(std::string text, const std::string& path)
{
    const std::size_t place = text.find("%s");
    return place == std::string::npos ? text : text.replace(place, 2, path);
}

// What reading gives where something that the disc may lack is there and cannot be read.
[[nodiscard]] inline std::string warned(const std::string& text)
{
    return text + kWarned;
}

// Whether the text is that of a Blu-ray disc that was read.
[[nodiscard]] inline bool isSummary(const std::string& text)
{
    return text.rfind("id ", 0) == 0;
}

}  // namespace faults
