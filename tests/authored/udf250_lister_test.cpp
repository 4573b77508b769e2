// The builder of UDF 2.50 images against a reader that others wrote: 7-Zip finds the same files in them as this program
// does. It is strict about the descriptors, but knows metadata files of one piece alone and no mirror. Where it is not
// installed, the test is skipped.
#include "tests/support/sample_bluray.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

using testsupport::Udf250Spec;
namespace fs = std::filesystem;

namespace {

// The command that package 7zip or package p7zip-full has; empty where neither is installed.
std::string sevenZip()
{
    for (const char* const program : {"7zz", "7z"}) {
        if (std::system((std::string("command -v ") + program + " >/dev/null 2>&1").c_str()) == 0) {
            return program;
        }
    }
    return "";
}

std::string contentOf(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::size_t fileCount(const fs::path& root)
{
    std::size_t count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        if (entry.is_regular_file()) { ++count; }
    }
    return count;
}

TEST(Udf250Lister, ExtractsTheVeryFiles)
{
    const std::string program = sevenZip();
    if (program.empty()) { GTEST_SKIP() << "7-Zip is not installed: nobody else reads the images"; }
    const std::array<Udf250Spec, 5> specs = {
        Udf250Spec{}, Udf250Spec{.duplicateMetadata = false}, Udf250Spec{.isMetadataMapFirst = true},
        Udf250Spec{.directoryKind = 1, .partitionNumber = 7}, Udf250Spec{.directoryKind = 3}};
    for (const Udf250Spec& spec : specs) {
        const testsupport::TemporaryFolder folder;
        testsupport::DiscTree tree = testsupport::sampleBluray();
        if (spec.directoryKind != 3) {
            for (int i = 1000; i < 1200; ++i) {  // a directory of several blocks
                tree.add("BDMV/AUXDATA/" + std::to_string(i) + ".otf", {static_cast<std::uint8_t>(i)});
            }
        }
        tree.writeDirectory(folder / "disc");
        tree.udf250(spec).image.writeTo(folder / "disc.iso");
        const std::string extract =
            program + " x -y -o" + folder / "extracted" + ' ' + folder / "disc.iso" + " >" + folder / "log";
        ASSERT_EQ(std::system(extract.c_str()), 0) << contentOf(folder / "log");
        EXPECT_NE(contentOf(folder / "log").find("*OSTA UDF Compliant::2.50"), std::string::npos);
        for (const auto& entry : fs::recursive_directory_iterator(folder / "disc")) {
            if (!entry.is_regular_file()) { continue; }
            const fs::path path = fs::relative(entry.path(), folder / "disc");
            EXPECT_EQ(contentOf(folder / "extracted" / path), contentOf(entry.path())) << path;
        }
        EXPECT_EQ(fileCount(folder / "extracted"), fileCount(folder / "disc"));
    }
}

}  // namespace
