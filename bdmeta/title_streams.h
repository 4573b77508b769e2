// A title's streams, from the stream tables of its PlayItems.
#pragma once

#include "bdmeta/bluray_titles.h"

namespace bdmeta {

// Sets the title's stream counts, its picture size and its lists of distinct streams. A table that several
// PlayItems share is looked at once; the later ones add its counts. How many streams were looked at.
std::size_t addTitleStreams(BlurayTitle& title, const std::vector<BlurayPlayItem>& playItems);

}  // namespace bdmeta
