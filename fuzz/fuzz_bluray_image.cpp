// Blu-ray images: what the reader of a disc asks of its source, held to what it promises, and the reader itself.
#include "bdmeta/bluray_disc.h"
#include "discio/bluray_source.h"
#include "fuzz/abort_unless.h"
#include "fuzz/image_cells.h"
#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::size_t kFilesRead = 16;  // of a directory, which may have thousands over the same bytes

// A file that can be read is as long as it says.
void readFile(const discio::BlurayDiscSource& source, const std::string& path)
{
    std::vector<std::uint8_t> bytes;
    const std::uint64_t sizeBytes = blurayFileSize(source, path);
    const bool isRead = readWholeFile(source, path, bytes) == 0;
    fuzz::abortUnless(!isRead || bytes.size() == sizeBytes);
}

void readFiles(const discio::BlurayDiscSource& source)
{
    readFile(source, "BDMV/index.bdmv");
    constexpr std::array<std::array<const char*, 2>, 2> kDirectories = {
        {{"BDMV/PLAYLIST", ".mpls"}, {"BDMV/CLIPINF", ".clpi"}}};
    for (const auto& [directory, suffix] : kDirectories) {
        std::vector<std::string> names;
        if (listFilesWithSuffix(source, directory, suffix, names) != 0) { continue; }
        names.resize(std::min(names.size(), kFilesRead));
        for (const std::string& name : names) {
            readFile(source, std::string(directory) + '/' + name + suffix);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const testsupport::TemporaryFolder folder;
    static const std::string path = folder / "image";
    fuzz::writeImage({data, size}, path);
    discio::BlurayDiscSource source;
    std::array<char, 256> text = {};
    if (openBluraySource(path.c_str(), source, text.data(), text.size()) != 0) { return 0; }
    readFiles(source);
    bdmeta::BlurayDisc disc;
    const int outcome = readBlurayDisc(path.c_str(), &disc, text.data(), text.size());
    fuzz::abortUnless(outcome == 0 || (disc.playlists.empty() && disc.clips.empty()));
    return 0;
}
