// A title's streams, from the stream tables of its PlayItems.
#pragma once

#include "bdmeta/bluray_titles.h"

#include <unordered_map>

namespace bdmeta {

// Many titles of a disc share one stream table; its streams are looked at once.
class TitleStreams {
public:
    // Sets the title's stream counts, its picture size and its lists of distinct streams.
    void addTo(BlurayTitle& title, const std::vector<BlurayPlayItem>& playItems);

private:
    // What a title of one table alone would have, for the tables that several PlayItems share.
    std::unordered_map<const void*, BlurayTitle> m_shared;
    BlurayTitle m_own;  // likewise, for the table that was met last
};

}  // namespace bdmeta
