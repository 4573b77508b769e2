// VIDEO_TS.IFO, beside title sets that are as they should be: titles 1 to 3 of title sets 1 and 2.
#include "dvdmeta/dvd_disc.h"
#include "fuzz/scratch_file.h"
#include "tests/support/sample_dvd.h"

#include <array>
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const testsupport::TemporaryFolder folder;
    static const bool areTitleSetsWritten = [] {
        testsupport::sampleDvd().writeDirectory(folder.path());
        return true;
    }();
    fuzz::abortUnless(areTitleSetsWritten);
    static const std::string path = folder / "VIDEO_TS/VIDEO_TS.IFO";
    fuzz::ScratchFile(path).write(0, {data, size});

    dvdmeta::DvdDisc disc;
    std::array<char, 256> text = {};
    if (readDvdDisc(folder.path().c_str(), &disc, text.data(), text.size()) != 0) {
        fuzz::abortUnless(disc.titles.empty() && disc.rawIfos.empty());
        return 0;
    }
    fuzz::abortUnless(disc.titles.size() <= 99 && disc.titleSets.size() == 2);
    fuzz::abortUnless(disc.rawIfos.size() == 3 && disc.rawIfos[0].bytes.size() == size);
    return 0;
}
