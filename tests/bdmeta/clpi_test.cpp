#include "bdmeta/clpi.h"
#include "tests/bdmeta/built_records.h"
#include "tests/support/fault_table.h"

using bdmeta::BlurayClip;
using testsupport::Bytes;
using testsupport::ClpiSpec;

namespace {

// Two programs and two ATC sequences, the longest presentation in the second.
ClpiSpec richClip()
{
    ClpiSpec spec;
    spec.programs = {{.streams = {{0x1011, testsupport::videoAttributes(36, 8, 1)},
                                  {0x1100, testsupport::audioAttributes("jpn", 0x80, 3, 1)}}},
                     {.streams = {{0x1200, testsupport::graphicsAttributes("eng")}}}};
    spec.programs[0].streams[0].codingInfo = {36, 0x81, 0b0101'1010, 0xC7};
    spec.atcSequences = {{.stcSequences = {{.presentationStartTime = 1000, .presentationEndTime = 46000}}},
                         {.offsetStcId = 1,
                          .stcSequences = {{.presentationStartTime = 0, .presentationEndTime = 90044},
                                           {.presentationStartTime = 5, .presentationEndTime = 4}}}};
    return spec;
}

bool parses(const ClpiSpec& spec)
{
    return bdmeta::parseClipInfoBytes(spec.build()).has_value();
}

std::uint64_t maxStcDurationMs(const Bytes& bytes)
{
    const auto clip = bdmeta::parseClipInfoBytes(bytes);
    EXPECT_TRUE(clip);
    return clip ? clip->maxStcDurationMs : UINT64_MAX;
}

TEST(Clpi, Fields)
{
    ClpiSpec spec = richClip();
    spec.clipStreamType = 3;
    spec.applicationType = 6;
    spec.tsRecordingRate = 12345678;
    spec.numberOfSourcePackets = 0x89ABCDEF;
    const BlurayClip clip = clipOf(spec);
    EXPECT_EQ(clip.version.view(), "0200");
    EXPECT_EQ(clip.clipStreamType, 3);
    EXPECT_EQ(clip.applicationType, 6);
    EXPECT_EQ(clip.tsRecordingRate, 12345678U);
    EXPECT_EQ(clip.sourcePacketCount, 0x89ABCDEFU);
}

TEST(Clpi, StreamsOfAllProgramsInFileOrder)
{
    const BlurayClip clip = clipOf(richClip());
    EXPECT_EQ(clip.programCount, 2);
    ASSERT_EQ(clip.streams.size(), 3U);
    EXPECT_EQ(clip.streams[0].pid, 0x1011);
    EXPECT_EQ(clip.streams[0].height, 2160);
    EXPECT_EQ(clip.streams[0].dynamicRangeType, 0b1011) << "as clip information lays it out";
    EXPECT_EQ(clip.streams[1].language.view(), "jpn");
    EXPECT_EQ(clip.streams[2].pid, 0x1200);
    for (const bdmeta::BlurayStream& stream : clip.streams) {
        EXPECT_EQ(stream.entryType, 0);
        EXPECT_EQ(stream.category, bdmeta::StreamCategory::None);
    }
}

TEST(Clpi, ProgramInfoMustBeWhole)
{
    const ClpiSpec rich = richClip();
    const auto size = static_cast<std::uint32_t>(rich.build().size());
    for (const std::uint32_t address : {0U, size - 5, size, size + 1, UINT32_MAX}) {
        ClpiSpec spec = richClip();
        spec.programInfoAddress = address;
        EXPECT_FALSE(parses(spec)) << address;
    }
    const auto toEnd = static_cast<std::uint32_t>(size - rich.programInfoStart() - 4);
    const auto exact = static_cast<std::uint32_t>(rich.cpiStart() - rich.programInfoStart() - 4);
    for (const auto& [length, isParsed] : std::vector<std::pair<std::uint32_t, bool>>{{exact, true},
                                                                                      {exact - 1, false},
                                                                                      {toEnd, true},
                                                                                      {toEnd + 1, false},
                                                                                      {1, false},
                                                                                      {UINT32_MAX, false}}) {
        ClpiSpec spec = richClip();
        spec.programInfoLength = length;
        EXPECT_EQ(parses(spec), isParsed) << length;
    }
    EXPECT_TRUE(parses({.programInfoLength = 2, .numberOfPrograms = 0}));
    EXPECT_FALSE(parses({.programInfoLength = 1, .numberOfPrograms = 0}));
}

TEST(Clpi, ProgramsAndStreamsMustFit)
{
    ClpiSpec spec = richClip();
    spec.numberOfPrograms = 3;
    EXPECT_FALSE(parses(spec));
    spec = richClip();
    spec.programs[1].numberOfStreams = 2;
    EXPECT_FALSE(parses(spec));
    spec = richClip();
    spec.programs[0].streams[1].length = 0;
    EXPECT_FALSE(parses(spec));
    spec = richClip();
    spec.programs[1].streams[0].length = 6;  // it has 5 bytes
    EXPECT_FALSE(parses(spec));
    spec = richClip();
    spec.programs[1].streams[0].codingInfo = {0xEB};
    const BlurayClip clip = clipOf(spec);
    EXPECT_STREQ(clip.streams[2].codingName, "Unknown");
    EXPECT_EQ(clip.streams[2].kind, bdmeta::StreamKind::Unknown);
}

TEST(Clpi, LongestStcSequenceCounts)
{
    EXPECT_EQ(maxStcDurationMs(richClip().build()), 2000U)
        << "in whole milliseconds, ends before starts left out";
    ClpiSpec spec;
    spec.atcSequences[0].stcSequences = {{.presentationStartTime = 0, .presentationEndTime = UINT32_MAX}};
    EXPECT_EQ(maxStcDurationMs(spec.build()), 95443717U);
    spec.atcSequences[0].stcSequences = {{.presentationStartTime = 1, .presentationEndTime = 0}};
    EXPECT_EQ(maxStcDurationMs(spec.build()), 0U);
    spec.atcSequences.clear();
    EXPECT_EQ(maxStcDurationMs(spec.build()), 0U);
}

TEST(Clpi, SequenceInfoNeverFailsAClip)
{
    const ClpiSpec rich = richClip();
    const auto size = static_cast<std::uint32_t>(rich.build().size());
    for (const std::uint32_t address : {0U, size - 5, size, size + 1, UINT32_MAX}) {
        ClpiSpec spec = richClip();
        spec.sequenceInfoAddress = address;
        EXPECT_EQ(maxStcDurationMs(spec.build()), 0U) << address;
    }
    // Cut within: the ATC head, the first STC entry, the second ATC's first entry (at 26, 32 and 46).
    for (const auto& [length, duration] : std::vector<std::pair<std::uint32_t, std::uint64_t>>{
             {0, 0}, {7, 0}, {21, 0}, {22, 1000}, {41, 1000}, {42, 2000}}) {
        ClpiSpec spec = richClip();
        spec.sequenceInfoLength = length;
        EXPECT_EQ(maxStcDurationMs(spec.build()), duration) << length;
    }
    ClpiSpec spec = richClip();
    spec.sequenceInfoLength = size - testsupport::kSequenceInfoStart - 4;
    spec.numberOfAtcSequences = 2;
    EXPECT_EQ(maxStcDurationMs(spec.build()), 2000U);
    spec.sequenceInfoLength = *spec.sequenceInfoLength + 1;
    EXPECT_EQ(maxStcDurationMs(spec.build()), 0U) << "it ends beyond the file";
}

TEST(Clpi, HeadersThatAreNone)
{
    EXPECT_FALSE(parses({.magic = "HDMX"}));
    Bytes bytes = ClpiSpec().build();
    bytes.resize(59);
    EXPECT_FALSE(bdmeta::parseClipInfoBytes(bytes));

    // The sections may overlap the header: 60 bytes are enough.
    bytes = Bytes(60);
    testsupport::putText(bytes, 0, "HDMV0200");
    testsupport::putBe32(bytes, 12, 54);
    testsupport::putBe32(bytes, 54, 2);
    EXPECT_TRUE(bdmeta::parseClipInfoBytes(bytes));
}

TEST(Clpi, EveryPrefixFailsOrParses)
{
    ClpiSpec spec = richClip();
    spec.epStreams = {testsupport::epStream({{256, 1}, {512, 2}})};
    const Bytes bytes = spec.build();
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        const auto clip = bdmeta::parseClipInfoBytes(std::span(bytes).first(size));
        ASSERT_EQ(clip.has_value(), size >= spec.cpiStart()) << size;
    }
    testsupport::recordFault("File: cut off after any byte", "malformed", spec.cpiStart());
    testsupport::recordFault("File: cut off after any byte", "read: what it says is there",
                             bytes.size() - spec.cpiStart());
}

}  // namespace
