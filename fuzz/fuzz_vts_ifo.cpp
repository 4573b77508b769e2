// One title set's IFO: what its size claims beyond the bytes that are there, 2 bytes, little-endian; then the bytes.
#include "dvdmeta/ifo_file.h"
#include "dvdmeta/title_set.h"
#include "fuzz/abort_unless.h"

#include <array>
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2) { return 0; }
    discio::DiscFileBytes file;
    file.bytes.assign(data + 2, data + size);
    file.sizeBytes = file.bytes.size() + data[0] + std::uint64_t{256} * data[1];
    const dvdmeta::IfoFile ifo("VTS_01_0.IFO", std::move(file));

    std::array<char, 256> text = {};
    const discio::ErrorText error(text.data(), text.size());
    for (std::uint32_t vtsTtn = 1; vtsTtn <= 3; ++vtsTtn) {
        dvdmeta::DvdTitle title;
        title.titleSetNumber = 1;
        title.vtsTtn = vtsTtn;
        if (readTitle(ifo, title, error) == 0) {
            fuzz::abortUnless(title.cellCount < 256 && title.programCount < 256);
        } else {
            fuzz::abortUnless(text[0] != '\0');
        }
    }
    dvdmeta::DvdDisc disc;
    if (readTitleSet(ifo, 1, disc, error) == 0) { fuzz::abortUnless(disc.titleSets.size() == 1); }
    return 0;
}
