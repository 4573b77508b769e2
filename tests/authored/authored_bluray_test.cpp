// A Blu-ray tree packed by programs that make disc images: genisoimage (ISO-9660 and UDF 1.02 over the same
// data) and xorriso (ISO-9660). Where one of them is not installed, its test is skipped.
#include "discio/bluray_source.h"
#include "tests/support/disc_tree.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <string>

using testsupport::Bytes;
namespace fs = std::filesystem;

namespace {

struct Tool {
    const char* program;
    const char* command;
    discio::BluraySourceMode mode;
};

void PrintTo(const Tool& tool, std::ostream* out)
{
    *out << tool.program;
}

constexpr std::array<Tool, 2> kTools = {{
    {"genisoimage", "genisoimage -quiet -iso-level 3 -udf", discio::BluraySourceMode::Udf},
    {"xorriso", "xorriso -as mkisofs -quiet -iso-level 3", discio::BluraySourceMode::Iso},
}};

// Enough names for directories of many blocks.
testsupport::DiscTree manyFiles()
{
    testsupport::DiscTree tree;
    tree.add("BDMV/index.bdmv", Bytes(100, 1)).add("CERTIFICATE/id.bdmv", Bytes(104, 2));
    for (std::size_t i = 1000; i < 1400; ++i) {
        const std::string name = "0" + std::to_string(i);
        const auto content = static_cast<std::uint8_t>(i);
        tree.add("BDMV/PLAYLIST/" + name + ".mpls", Bytes(i, content));
        tree.add("BDMV/CLIPINF/" + name + ".clpi", Bytes(i % 3 * 2048, content));
        tree.add("BDMV/STREAM/" + name + ".m2ts", Bytes(i % 7, content));
    }
    return tree;
}

class AuthoredBluray : public testing::TestWithParam<Tool> {
protected:
    void SetUp() override
    {
        const Tool tool = GetParam();
        const std::string find = std::string("command -v ") + tool.program + " >/dev/null 2>&1";
        if (std::system(find.c_str()) != 0) {
            GTEST_SKIP() << tool.program << " is not installed: there is no image of its making to read";
        }
        manyFiles().writeDirectory(m_folder / "disc");
        const std::string image = m_folder / "disc.iso";
        const std::string make =
            std::string(tool.command) + " -V AUTHORED -o " + image + ' ' + m_folder / "disc";
        ASSERT_EQ(std::system((make + " 2>" + m_folder / "log").c_str()), 0) << make;
        ASSERT_EQ(open(image, m_image), 0);
        ASSERT_EQ(open(m_folder / "disc", m_directory), 0);
    }

    static int open(const std::string& path, discio::BlurayDiscSource& source)
    {
        std::array<char, 256> text = {};
        const int result = openBluraySource(path.c_str(), source, text.data(), text.size());
        EXPECT_STREQ(text.data(), "");
        return result;
    }

    testsupport::TemporaryFolder m_folder;
    discio::BlurayDiscSource m_image;
    discio::BlurayDiscSource m_directory;
};

TEST_P(AuthoredBluray, ImageGivesWhatTheDirectoryGives)
{
    EXPECT_EQ(m_image.mode, GetParam().mode);
    EXPECT_EQ(m_image.volumeId, "AUTHORED");
    std::size_t files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(m_folder / "disc")) {
        if (!entry.is_regular_file()) { continue; }
        const std::string path = fs::relative(entry.path(), m_folder / "disc");
        Bytes fromImage;
        Bytes fromDirectory;
        ASSERT_EQ(readWholeFile(m_image, path, fromImage), 0) << path;
        ASSERT_EQ(readWholeFile(m_directory, path, fromDirectory), 0) << path;
        ASSERT_EQ(fromImage, fromDirectory) << path;
        ASSERT_EQ(blurayFileSize(m_image, path), entry.file_size()) << path;
        ++files;
    }
    EXPECT_EQ(files, 1202U);

    for (const auto& [directory, suffix] : std::array<std::array<const char*, 2>, 3>{
             {{"BDMV/PLAYLIST", ".mpls"}, {"BDMV/CLIPINF", ".clpi"}, {"BDMV/STREAM", ".m2ts"}}}) {
        std::vector<std::string> inImage;
        std::vector<std::string> inDirectory;
        ASSERT_EQ(listFilesWithSuffix(m_image, directory, suffix, inImage), 0) << directory;
        ASSERT_EQ(listFilesWithSuffix(m_directory, directory, suffix, inDirectory), 0) << directory;
        EXPECT_EQ(inDirectory.size(), 400U);
        std::ranges::sort(inImage);
        EXPECT_EQ(inImage, inDirectory) << directory;
    }
}

INSTANTIATE_TEST_SUITE_P(Tools, AuthoredBluray, testing::ValuesIn(kTools),
                         [](const auto& tool) { return std::string(tool.param.program); });

}  // namespace
