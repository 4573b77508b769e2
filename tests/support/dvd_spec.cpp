#include "tests/support/dvd_spec.h"

namespace testsupport {

std::string vtsFileName(unsigned number)
{
    return std::string(number < 10 ? "VTS_0" : "VTS_") + std::to_string(number) + "_0.IFO";
}

DiscTree DvdSpec::tree() const
{
    DiscTree tree;
    tree.add("VIDEO_TS/VIDEO_TS.IFO", vmg.build());
    for (const auto& [number, titleSet] : titleSets) {
        tree.add("VIDEO_TS/" + vtsFileName(number), titleSet.build());
    }
    return tree;
}

}  // namespace testsupport
