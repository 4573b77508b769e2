// A whole DVD-Video disc by field: its manager and its title sets.
#pragma once

#include "tests/support/disc_tree.h"
#include "tests/support/ifo_spec.h"

#include <map>
#include <string>

namespace testsupport {

// "VTS_01_0.IFO" for 1.
[[nodiscard]] std::string vtsFileName(unsigned number);

struct DvdSpec {
    VmgSpec vmg = {};
    std::map<unsigned, VtsSpec> titleSets = {{1, VtsSpec{}}};

    // VIDEO_TS with the IFO files.
    [[nodiscard]] DiscTree tree() const;
};

}  // namespace testsupport
