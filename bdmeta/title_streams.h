// A title's streams, from the stream tables of its PlayItems.
#pragma once

#include "bdmeta/bluray_titles.h"

#include <unordered_map>

namespace bdmeta {

// Derives the streams of titles. The streams of a table that many titles share are visited once.
class TitleStreams {
public:
    // Sets the title's stream counts, its picture size and its lists of distinct streams.
    void addTo(BlurayTitle& title, const std::vector<BlurayPlayItem>& playItems);

private:
    // By shared table: the streams of a title with that table alone.
    std::unordered_map<const void*, BlurayTitle> m_shared;
    BlurayTitle m_own;  // likewise, of the last table that is not shared
};

}  // namespace bdmeta
