// One title set's IFO: what its size claims beyond the bytes that are there, 2 bytes, little-endian; then the bytes.
#include "dvdmeta/title_set.h"
#include "fuzz/target.h"

void fuzz::target(Input input)
{
    if (input.size() < 2) { return; }
    const std::uint64_t claimedBytes = input.size() - 2 + input[0] + 256U * input[1];
    const dvdmeta::IfoFile ifo("VTS_01_0.IFO", {{input.begin() + 2, input.end()}, claimedBytes});
    char text[256] = {};
    for (std::uint32_t vtsTtn = 1; vtsTtn <= 3; ++vtsTtn) {
        dvdmeta::DvdTitle title;
        title.vtsTtn = vtsTtn;
        const bool isRead = readTitle(ifo, title, {text, sizeof(text)}) == 0;
        require(isRead ? title.cellCount < 256 && title.programCount < 256 : text[0] != '\0');
    }
    dvdmeta::DvdDisc disc;
    const bool isRead = readTitleSet(ifo, 1, disc, {text, sizeof(text)}) == 0;
    require(disc.titleSets.size() == (isRead ? 1 : 0));
}
