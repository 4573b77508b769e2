// Images of discs that claim far more than they hold, or lead in circles.
#pragma once

#include "tests/faults/disc_reading.h"

#include <cstdint>
#include <string>
#include <vector>

namespace faults {

// The small Blu-ray disc as UDF, with these identifiers in place of a directory's.
[[nodiscard]] testsupport::BuiltImage
withDirectory(const std::string& path, const std::vector<testsupport::UdfFileIdentifierSpec>& identifiers);

// `count` clips of one file entry, whose descriptors take a megabyte and record one extent.
[[nodiscard]] testsupport::SparseImage sharedDescriptorArea(std::uint32_t count);

// Clips by the hundred thousand, which are one file, each with a stream file of its own name.
[[nodiscard]] testsupport::SparseImage udfClips(std::uint32_t count);

// Playlists of a hundred thousand extents of a byte each.
[[nodiscard]] testsupport::SparseImage oneByteExtents();

// A root directory in which every directory is the root itself.
[[nodiscard]] testsupport::SparseImage rootInItself(testsupport::SparseImage image);

// 99 titles of 49 title sets, the first in a directory of 16 MiB; 50 more are not there.
[[nodiscard]] testsupport::SparseImage titleSetsOfALongDirectory();

// A directory of ISO-9660 of 16 MiB of names, all of one file.
[[nodiscard]] testsupport::SparseImage isoNames(const std::string& path, const testsupport::DiscTree& tree,
                                                const std::string& suffix, const testsupport::Bytes& file);

// A thousand directories below `top`, each in the one before.
[[nodiscard]] testsupport::DiscTree nested(testsupport::DiscTree tree, const std::string& top);

}  // namespace faults
