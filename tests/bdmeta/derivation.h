// The titles of a disc that a test has put together.
#pragma once

#include "bdmeta/bluray_titles.h"
#include "tests/bdmeta/built_records.h"

struct Derivation {
    int code = 0;
    std::vector<bdmeta::BlurayTitle> titles;
    bdmeta::BlurayDiscSummary summary;
    bdmeta::SizeFallback fallback;
    std::string bound;  // that was reached
};

inline Derivation derive(const bdmeta::BlurayDisc& disc)
{
    Derivation derivation;
    derivation.titles.resize(2);  // of a disc before, like the rest
    derivation.summary.totalClips = 7;
    derivation.fallback.count = 7;
    discio::ReadBudget budget;
    derivation.code =
        deriveBlurayTitles(&disc, &derivation.titles, &derivation.summary, &derivation.fallback, budget);
    derivation.bound = budget.reached() == nullptr ? "" : budget.reached();
    return derivation;
}

// The one title of a disc without clips.
inline bdmeta::BlurayTitle titleOf(const testsupport::MplsSpec& spec)
{
    bdmeta::BlurayDisc disc;
    disc.playlists = {playlistOf(spec)};
    Derivation derivation = derive(disc);
    EXPECT_EQ(derivation.titles.size(), 1U);
    return derivation.titles.empty() ? bdmeta::BlurayTitle{} : derivation.titles.front();
}

inline testsupport::StnStreamSpec video(std::uint16_t pid, std::uint8_t codingType = 27,
                                        std::uint8_t format = 6)
{
    return {.pid = pid, .attributes = testsupport::videoAttributes(codingType, format)};
}

inline testsupport::StnStreamSpec audio(std::uint16_t pid, const std::string& language = "eng",
                                        std::uint8_t codingType = 0x81)
{
    return {.pid = pid, .attributes = testsupport::audioAttributes(language, codingType)};
}

inline testsupport::StnStreamSpec graphics(std::uint16_t pid, const std::string& language = "eng")
{
    return {.pid = pid, .attributes = testsupport::graphicsAttributes(language)};
}
