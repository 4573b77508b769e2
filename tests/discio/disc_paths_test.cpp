// Paths and files of the system: what opens as a Blu-ray disc or as a DVD, and with which message it does not.
#include "discio/dvd_source.h"
#include "tests/discio/bluray_test.h"
#include "tests/support/scopes.h"

#include <sys/stat.h>

#include <cerrno>
#include <regex>

using namespace testsupport;
using namespace discio_test;
namespace fs = std::filesystem;

namespace {

const Bytes kContent = {'m', 'a', 'n', 'a', 'g', 'e', 'r'};

class DiscPaths : public BlurayTest {
protected:
    // A text of a row, in which "~" is a path: the test's folder.
    [[nodiscard]] std::string full(const std::string& text) const { return full(text, m_folder.path()); }
    static std::string full(const std::string& text, const std::string& path)
    {
        return std::regex_replace(text, std::regex("~"), path);
    }

    // The directory that the disc is read from, "image", or the message. "none": the directory is no disc.
    std::string bluray(const std::string& path)
    {
        std::string problem = open(path);
        if (problem == "'" + path + "' has no BDMV directory") { return "none"; }
        if (!problem.empty()) { return problem; }
        return m_source.mode == discio::BluraySourceMode::Directory ? m_source.rootPath : "image";
    }
    std::string dvd(const std::string& path)
    {
        if (openDvdSource(path.c_str(), m_dvd, m_text.data(), m_text.size()) != 0) {
            EXPECT_FALSE(m_dvd.image);
            const std::string problem = m_text.data();
            return problem == "'" + path + "' has no VIDEO_TS directory" ? "none" : problem;
        }
        return m_dvd.isImage ? "image" : m_dvd.videoTsPath;
    }

    // The file's bytes or the message, and whether the file is one that may be absent.
    std::string dvdFile(const std::string& name)
    {
        discio::DiscFileRef file;
        if (openDvdFile(m_dvd, name, file, m_text.data(), m_text.size()) == 0) {
            const Bytes bytes = readDiscFile(file, *m_dvd.budget).bytes;
            EXPECT_EQ(openDvdFileOptional(m_dvd, name, file, m_text.data(), m_text.size()), 1);
            EXPECT_EQ(readDiscFile(file, *m_dvd.budget).bytes, bytes);
            return {bytes.begin(), bytes.end()};
        }
        const std::string problem = m_text.data();
        const int result = openDvdFileOptional(m_dvd, name, file, m_text.data(), m_text.size());
        EXPECT_FALSE(file.stream);
        EXPECT_EQ(m_text.data(), result == 0 ? "" : problem);
        return problem + (result == 0 ? ", absent" : result == -1 ? "" : ", neither");
    }

    discio::DvdDiscSource m_dvd;
    std::array<char, 512> m_text = {'?'};
};

TEST_F(DiscPaths, OpenAsADiscOrFailWithAMessage)
{
    DiscTree tree;
    for (const char* path :
         {"disc/BDMV", "disc/VIDEO_TS", "lower/bdmv", "lower/video_ts", "mixed/Bdmv", "mixed/Video_TS",
          "file/video_ts", "x\\BDMV", "x\\video_ts", "locked/disc", "unlisted/BDMV", "unlisted/VIDEO_TS"}) {
        tree.add(path + std::string("/file"), kContent);
    }
    tree.add("file/VIDEO_TS", kContent).add("locked.iso", kContent).add("empty.iso", {});
    tree.writeDirectory(m_folder.path());
    EXPECT_EQ(DiscTree().add("BDMV/file", {}).add("VIDEO_TS/file", {}).write(DiscForm::Iso, m_folder),
              m_folder / "disc.iso");
    ASSERT_EQ(::mkfifo((m_folder / "fifo").c_str(), 0644), 0);
    fs::permissions(m_folder.path(), fs::perms(0755));
    fs::permissions(m_folder / "unlisted", fs::perms(0311));
    fs::permissions(m_folder / "locked", fs::perms::none);
    fs::permissions(m_folder / "locked.iso", fs::perms::none);
    const fs::path before = fs::current_path();
    fs::current_path(m_folder / "disc");
    {
        const UnprivilegedUser meanwhile;
        for (const auto& row : table("disc_paths.txt")) {
            errno = 0;
            EXPECT_EQ(bluray(full(row.at(0))), full(row.at(1)));
            EXPECT_EQ(dvd(full(row.at(0))), full(row.at(2)));
        }
    }
    fs::current_path(before);
    fs::permissions(m_folder / "locked", fs::perms::owner_all);  // to be removed
    fs::permissions(m_folder / "unlisted", fs::perms::owner_all);
}

TEST_F(DiscPaths, WhatIsNoRegularFileNeitherHangsNorReads)
{
    DiscTree tree;
    for (const char* name : {"file.x", "locked.x", "b.x", "B.x", "B.X", "dir.x/file", "shut/file.x"}) {
        tree.add(std::string("BDMV/") + name, Bytes(name, name + 3));
    }
    tree.writeDirectory(m_folder.path());
    const std::string folder = m_folder / "BDMV/";
    ASSERT_EQ(::mkfifo((folder + "fifo.x").c_str(), 0644), 0);
    ASSERT_EQ(::mknod((folder + "socket.x").c_str(), S_IFSOCK | 0644, 0), 0);
    fs::create_symlink("/dev/zero", folder + "device.x");
    fs::create_symlink("nowhere", folder + "dangling.x");
    fs::create_symlink("loop.x", folder + "loop.x");
    fs::create_symlink("file.x", folder + "link.x");
    fs::create_symlink("BDMV", m_folder / "VIDEO_TS");
    fs::permissions(m_folder.path(), fs::perms(0755));
    fs::permissions(folder + "locked.x", fs::perms::none);
    fs::permissions(folder + "shut", fs::perms::none);
    {
        const UnprivilegedUser meanwhile;
        EXPECT_EQ(bluray(m_folder.path()), m_folder.path());
        EXPECT_EQ(list("BDMV"), "B B b dangling device dir fifo file link locked loop socket");
        EXPECT_EQ(list("BDMV/shut"), "failed");
        EXPECT_EQ(dvd(m_folder.path()), m_folder / "VIDEO_TS");
        for (const auto& row : table("disc_files.txt")) {
            const std::string& name = row.at(0);
            const Bytes bytes = read("BDMV/" + name);
            const std::string content = bytes == kUnreadable ? "-" : std::string(bytes.begin(), bytes.end());
            EXPECT_EQ(content + ' ' + std::to_string(blurayFileSize(m_source, "BDMV/" + name)), row.at(1))
                << name;
            EXPECT_EQ(list("BDMV/" + name), name == "dir.x" ? "" : "failed") << name;
            EXPECT_EQ(dvdFile(name), full(row.at(2), m_folder / ("VIDEO_TS/" + name)));
        }
    }
    fs::permissions(folder + "shut", fs::perms::owner_all);  // to be removed
}

TEST_F(DiscPaths, VolumeIdHasNoPadding)
{
    using namespace std::string_literals;
    const std::string full(32, 'X');
    for (const auto& [stored, text] :
         {std::pair{"A DISC  "s, "A DISC"s}, {"D\0\0 \0"s, "D"}, {" "s, ""}, {full, full}, {"A\0B"s, "A"}}) {
        DiscTree()
            .add("BDMV/file", {})
            .image(DiscForm::Hybrid, {.volumeId = stored})
            .writeTo(m_folder / "image");
        EXPECT_EQ(open(m_folder / "image"), "");
        EXPECT_EQ(m_source.volumeId, text);
    }
}

TEST_F(DiscPaths, MessagesAreCut)
{
    std::array<char, 12> small = {};
    EXPECT_EQ(openDvdSource("/nowhere", m_dvd, small.data(), small.size()), -1);
    EXPECT_STREQ(small.data(), "cannot stat");
}

TEST_F(DiscPaths, DvdFilesOutliveTheirSource)
{
    const DiscTree tree = DiscTree().add("VIDEO_TS/VIDEO_TS.IFO", kContent).add("VIDEO_TS/DIR.IFO/file", {});
    for (const DiscForm form : kAllDiscForms) {
        dvd(tree.write(form, m_folder));
        EXPECT_EQ(dvdFile("VIDEO_TS.IFO"), "manager");
        discio::DiscFileRef file;
        ASSERT_EQ(openDvdFile(m_dvd, "VIDEO_TS.IFO", file, nullptr, 0), 0);
        m_dvd = {};
        EXPECT_EQ(file.stream.use_count(), 1);
        discio::ReadBudget budget;
        EXPECT_EQ(readDiscFile(file, budget).bytes, kContent);
        budget.lower(discio::ReadBudget::Bound::NavigationBytes, 6, "bytes");
        EXPECT_EQ(readDiscFile(file, budget).bytes, Bytes());
        EXPECT_STREQ(budget.reached(), "bytes");
    }
    dvd(m_folder / "disc.iso");
    EXPECT_EQ(dvdFile("video_ts.ifo"), "manager");
    EXPECT_EQ(dvdFile("DIR.IFO"), "ISO image has no VIDEO_TS/DIR.IFO, absent");
}

}  // namespace
