// Reading a disc that a test built, in one form or in each.
#pragma once

#include "dvdmeta/dvd_disc.h"
#include "tests/support/dvd_spec.h"

#include <gtest/gtest.h>

#include <array>
#include <sstream>
#include <string>

struct ReadOutcome {
    int code = 0;
    std::string message;
    dvdmeta::DvdDisc disc;
};

inline ReadOutcome readPath(const std::string& path)
{
    ReadOutcome outcome;
    std::array<char, 256> text = {'?'};
    outcome.disc.titles.resize(3);  // of a disc read before
    outcome.code = dvdmeta::readDvdDisc(path.c_str(), &outcome.disc, text.data(), text.size());
    outcome.message = text.data();
    return outcome;
}

inline ReadOutcome readTree(const testsupport::DiscTree& tree,
                            testsupport::DiscForm form = testsupport::DiscForm::Directory)
{
    const testsupport::TemporaryFolder folder;
    return readPath(tree.write(form, folder));
}

// The disc, which must be readable.
inline dvdmeta::DvdDisc discOf(const testsupport::DvdSpec& spec)
{
    ReadOutcome outcome = readTree(spec.tree());
    EXPECT_EQ(outcome.code, 0) << outcome.message;
    return std::move(outcome.disc);
}

// Its one title.
inline dvdmeta::DvdTitle titleOf(const testsupport::DvdSpec& spec)
{
    dvdmeta::DvdDisc disc = discOf(spec);
    EXPECT_EQ(disc.titles.size(), 1U);
    return disc.titles.empty() ? dvdmeta::DvdTitle{} : disc.titles.front();
}

// Checks that the disc fails with the message in every form and leaves nothing behind.
inline void expectFailure(const testsupport::DvdSpec& spec, const std::string& message)
{
    for (const testsupport::DiscForm form : testsupport::kAllDiscForms) {
        const ReadOutcome outcome = readTree(spec.tree(), form);
        EXPECT_EQ(outcome.code, -1);
        EXPECT_EQ(outcome.message, message);
        EXPECT_TRUE(outcome.disc.titles.empty() && outcome.disc.titleSets.empty());
        EXPECT_TRUE(outcome.disc.rawIfos.empty() && outcome.disc.providerText.empty());
    }
}

inline void describe(std::ostream& out, const dvdmeta::DvdStreamAttributes& streams)
{
    out << ' ' << streams.video.formatName << ' ' << streams.video.width << 'x' << streams.video.height
        << " mode " << int{streams.video.codingMode};
    for (const auto& audio : streams.audio) {
        out << "; audio " << std::string(audio.language.begin(), audio.language.end()) << ' '
            << audio.codingName << ' ' << audio.channels << ' ' << audio.sampleRateName << ' '
            << int{audio.codingMode} << ' ' << int{audio.channelsMinusOne} << ' '
            << int{audio.sampleRateCode};
    }
    for (const auto& subpicture : streams.subpicture) {
        out << "; subpicture " << std::string(subpicture.language.begin(), subpicture.language.end()) << ' '
            << subpicture.codingName << ' ' << int{subpicture.codingMode};
    }
    out << '\n';
}

// All that a disc's record says, but for what only an image has.
inline std::string describe(const dvdmeta::DvdDisc& disc)
{
    std::ostringstream out;
    out << '[' << disc.providerText << "] " << std::string(disc.providerRaw.begin(), disc.providerRaw.end())
        << '\n';
    for (const dvdmeta::DvdTitle& title : disc.titles) {
        out << title.titleNumber << ' ' << title.titleSetNumber << ' ' << title.vtsTtn << ' '
            << title.angleCount << ' ' << title.multiOrRandomPgc << ' ' << title.sizeFromEntryPgcOnly << ' '
            << title.chapterCount << ' ' << title.complexAngle << ' ' << title.programCount << ' '
            << title.cellCount << ' ' << title.durationMs << ' ' << title.playbackSizeBytes << ' '
            << title.firstSector << ' ' << title.lastSector;
        describe(out, title.streams);
    }
    for (const dvdmeta::DvdTitleSet& titleSet : disc.titleSets) {
        out << "set " << titleSet.number;
        describe(out, titleSet.streams);
    }
    for (const dvdmeta::DvdRawIfo& ifo : disc.rawIfos) {
        out << ifo.name << ' ' << std::string(ifo.bytes.begin(), ifo.bytes.end()) << '\n';
    }
    return out.str();
}
