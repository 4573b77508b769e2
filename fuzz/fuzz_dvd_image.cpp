// A DVD's ISO-9660 image, read as a whole.
#include "dvdmeta/dvd_disc.h"
#include "fuzz/scratch_disc.h"

void fuzz::target(Input input)
{
    dvdmeta::DvdDisc disc;
    const bool isRead = readDvdDisc(writeImage(input), &disc, nullptr, 0) == 0;
    require(isRead == !disc.rawIfos.empty());
}
