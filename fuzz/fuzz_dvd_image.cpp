// A DVD's ISO-9660 image, read as a whole.
#include "dvdmeta/dvd_disc.h"
#include "fuzz/abort_unless.h"
#include "fuzz/image_cells.h"
#include "tests/support/temporary_folder.h"

#include <array>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const testsupport::TemporaryFolder folder;
    static const std::string path = folder / "image";
    fuzz::writeImage({data, size}, path);
    dvdmeta::DvdDisc disc;
    std::array<char, 256> text = {};
    const int outcome = readDvdDisc(path.c_str(), &disc, text.data(), text.size());
    fuzz::abortUnless(outcome == 0 ? !disc.rawIfos.empty() : disc.rawIfos.empty());
    return 0;
}
