#include "discio/bluray_source.h"
#include "discio/directory_list.h"
#include "discio/dvd_source.h"
#include "discio/file_stream.h"
#include "tests/native/folder_fixture.h"

#include <array>

using discio::listDirectory;
namespace fs = std::filesystem;

namespace {

using Names = std::vector<std::string>;
using DirectoryList = native_test::FolderTest;

TEST_F(DirectoryList, HasEverythingInBytewiseOrder)
{
    EXPECT_EQ(listDirectory(text(m_folder)), Names());
    Names names = {".hidden", "B.x", "_", "a b", "b", "sub.dir"};
    for (int i = 2000; i > 1000; --i) {
        names.insert(names.begin() + 6, "x" + std::to_string(i) + std::string(60, 'x'));
    }
    fs::create_directories(m_folder / "sub.dir");
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
        if (*name != "sub.dir") { write(m_folder / *name, ""); }
    }
    EXPECT_EQ(listDirectory(text(m_folder)), names);
    EXPECT_EQ(listDirectory(text(m_folder) + '/'), names);
    write(m_folder / "sub.dir" / u8"stra\u00DFe", "content");
    const auto listed = listDirectory(text(m_folder) + "/sub.dir");
    ASSERT_TRUE(listed && listed->size() == 1);
    EXPECT_EQ(discio::openRegularFile(text(m_folder) + "/sub.dir/" + listed->front()).sizeBytes, 7U);
    for (const char* name : {"b", "none", "none/deeper", "su*", "sub.di?", "*"}) {
        EXPECT_EQ(listDirectory(text(m_folder) + '/' + name), std::nullopt) << name;
    }
}

TEST_F(DirectoryList, DiscsAreReadThroughIt)
{
    fs::create_directories(m_folder / "bdmv" / "Playlist");
    write(m_folder / "bdmv/Playlist/00001.MPLS", "playlist");
    fs::create_directories(m_folder / "VIDEO_TS");
    write(m_folder / "VIDEO_TS/VIDEO_TS.IFO", "manager");
    std::array<char, 256> problem = {};

    discio::BlurayDiscSource bluray;
    ASSERT_EQ(openBluraySource(text(m_folder).c_str(), bluray, problem.data(), problem.size()), 0)
        << problem.data();
    std::vector<std::uint8_t> bytes;
    EXPECT_EQ(readWholeFile(bluray, "BDMV/PLAYLIST/00001.mpls", bytes), 0);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "playlist");

    discio::DvdDiscSource dvd;
    discio::DiscFileRef file;
    ASSERT_EQ(openDvdSource(text(m_folder).c_str(), dvd, problem.data(), problem.size()), 0)
        << problem.data();
    EXPECT_EQ(openDvdFile(dvd, "VIDEO_TS.IFO", file, problem.data(), problem.size()), 0) << problem.data();
    EXPECT_EQ(file.sizeBytes, 7U);
    const std::string separated = text(m_folder / "VIDEO_TS") + '/';
    EXPECT_EQ(openDvdSource(separated.c_str(), dvd, problem.data(), problem.size()), -1);
    EXPECT_EQ(problem.data(), "'" + separated + "' has no VIDEO_TS directory");
}

}  // namespace
