// VIDEO_TS.IFO, beside title sets that are as they should be: titles 1 to 3 of title sets 1 and 2.
#include "dvdmeta/dvd_disc.h"
#include "fuzz/target.h"
#include "tests/support/sample_dvd.h"

void fuzz::target(Input input)
{
    static const testsupport::TemporaryFolder folder;
    static const std::string path = testsupport::sampleDvd().write(testsupport::DiscForm::Directory, folder);
    testsupport::writeFile(path + "/VIDEO_TS/VIDEO_TS.IFO", {input.begin(), input.end()});
    dvdmeta::DvdDisc disc;
    if (readDvdDisc(path.c_str(), &disc, nullptr, 0) != 0) {
        require(disc.titles.empty() && disc.rawIfos.empty());
        return;
    }
    require(disc.titles.size() <= 99 && disc.titleSets.size() == 2);
    require(disc.rawIfos.size() == 3 && disc.rawIfos[0].bytes.size() == input.size());
}
