// Discs that fail or go away while they are read.
#include "tests/faults/disc_reading.h"
#include "tests/faults/interposed_calls.h"
#include "tests/support/fault_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

using faults::Family;
using faults::FileRead;
using faults::InterposedReads;
using faults::ReadHook;
using testsupport::DiscForm;
using testsupport::recordFault;
using testsupport::TemporaryFolder;
namespace fs = std::filesystem;

namespace {

constexpr char kCannotEnumerate[] = "cannot enumerate BDMV playlist or clip information files";

// The small disc of a family in one form, on disk; each time it is read no descriptor may be left open.
class DiscOnDisk {
public:
    DiscOnDisk(Family family, DiscForm form)
        : m_family(family)
        , m_path((family == Family::Dvd ? faults::dvdTree() : faults::blurayTree()).write(form, m_folder))
    {}

    [[nodiscard]] const std::string& path() const { return m_path; }

    [[nodiscard]] std::string read() const
    {
        const auto before = openDescriptors();
        std::string text = faults::readDisc(m_family, m_path);
        EXPECT_EQ(openDescriptors(), before) << "left open";
        return text;
    }
    [[nodiscard]] std::string readUnder(const ReadHook& hook) const
    {
        const InterposedReads meanwhile(hook);
        return read();
    }

private:
    [[nodiscard]] static std::ptrdiff_t openDescriptors()
    {
        return std::distance(fs::directory_iterator("/proc/self/fd"), {});
    }

    TemporaryFolder m_folder;
    Family m_family;
    std::string m_path;
};

// A read fails from this place of a file on; before it the system gives what is there.
ReadHook failingFrom(std::string path, std::uint64_t offset, bool& isHit)
{
    return [path = std::move(path), offset, &isHit](FileRead& read) {
        if (read.path != path) { return 0; }
        if (read.offset >= offset) {
            isHit = true;
            return EIO;
        }
        read.sizeBytes =
            static_cast<std::size_t>(std::min<std::uint64_t>(read.sizeBytes, offset - read.offset));
        return 0;
    };
}

struct BadFile {
    Family family = Family::Dvd;
    std::string path;
    std::uint64_t offset = 0;
    std::string expected;
};

const BadFile kBadFiles[] = {
    {Family::Dvd, "VIDEO_TS/VIDEO_TS.IFO", 0, "VIDEO_TS.IFO is not a DVD-Video manager IFO"},
    {Family::Dvd, "VIDEO_TS/VIDEO_TS.IFO", 2048, "VIDEO_TS.IFO has no readable title table"},
    {Family::Dvd, "VIDEO_TS/VIDEO_TS.IFO", 2048 + 8, "cannot read title 1"},
    {Family::Dvd, "VIDEO_TS/VIDEO_TS.IFO", 2048 + 8 + 24, "cannot read VIDEO_TS/VIDEO_TS.IFO"},
    {Family::Dvd, "VIDEO_TS/VTS_01_0.IFO", 0, "VTS_01_0.IFO is not a valid VTS IFO"},
    {Family::Dvd, "VIDEO_TS/VTS_01_0.IFO", 984, "VTS_01_0.IFO has invalid title PTT data"},
    {Family::Dvd, "VIDEO_TS/VTS_02_0.IFO", 0, "VTS_02_0.IFO is not a valid VTS IFO"},
    {Family::Bluray, "BDMV/index.bdmv", 50, "id 0001 titles 0 playlists 3 clips 3 bytes 1502 streams 18432"},
    {Family::Bluray, "CERTIFICATE/id.bdmv", 0, "id  titles 2 playlists 3 clips 3 bytes 1502 streams 18432"},
    {Family::Bluray, "BDMV/PLAYLIST/00000.mpls", 0, "cannot parse playlist 'BDMV/PLAYLIST/00000.mpls'"},
    {Family::Bluray, "BDMV/PLAYLIST/00801.mpls", 100, "cannot parse playlist 'BDMV/PLAYLIST/00801.mpls'"},
    {Family::Bluray, "BDMV/CLIPINF/00001.clpi", 0, "cannot parse clip information 'BDMV/CLIPINF/00001.clpi'"},
    {Family::Bluray, "BDMV/CLIPINF/00003.clpi", 100,
     "cannot parse clip information 'BDMV/CLIPINF/00003.clpi'"},
};

std::string answerTo(const std::string& text)
{
    return text.rfind("id ", 0) == 0 ? "read, without what the file would have said"
                                     : "fails, with its message";
}

TEST(ReadFaults, AFileThatCannotBeReadFromSomewhereOn)
{
    for (const BadFile& file : kBadFiles) {
        const DiscOnDisk disc(file.family, DiscForm::Directory);
        const std::string path = disc.path() + '/' + file.path;
        bool isHit = false;
        EXPECT_EQ(disc.readUnder(failingFrom(path, file.offset, isHit)), file.expected) << file.path;
        EXPECT_TRUE(isHit) << file.path;
        if (!HasFailure()) { recordFault("Directory: a read error in a file", answerTo(file.expected)); }
    }
}

TEST(ReadFaults, AFileThatShrinksWhenItIsRead)
{
    for (const BadFile& file : kBadFiles) {
        const DiscOnDisk disc(file.family, DiscForm::Directory);
        const std::string path = disc.path() + '/' + file.path;
        EXPECT_EQ(disc.readUnder([&](const FileRead& read) {
            if (read.path == path) { fs::resize_file(path, file.offset); }
            return 0;
        }),
                  file.expected)
            << file.path;
        if (!HasFailure()) {
            recordFault("Directory: a file that shrinks while it is read", answerTo(file.expected));
        }
    }
}

TEST(ReadFaults, AFileThatVanishesBeforeItIsOpened)
{
    const std::vector<BadFile> files = {
        {Family::Dvd, "VIDEO_TS/VTS_02_0.IFO", 0, "cannot open '%s': No such file or directory"},
        {Family::Bluray, "CERTIFICATE/id.bdmv", 0,
         "id  titles 2 playlists 3 clips 3 bytes 1502 streams 18432"},
        {Family::Bluray, "BDMV/STREAM/00002.m2ts", 0,
         "id 0001 titles 2 playlists 3 clips 3 bytes 1502 streams 12288"},
    };
    for (const BadFile& file : files) {
        const DiscOnDisk disc(file.family, DiscForm::Directory);
        const std::string path = disc.path() + '/' + file.path;
        std::string expected = file.expected;
        if (expected.find("%s") != std::string::npos) { expected.replace(expected.find("%s"), 2, path); }
        EXPECT_EQ(disc.readUnder([&](const FileRead&) {
            fs::remove(path);
            return 0;
        }),
                  expected);
        if (!HasFailure()) {
            recordFault("Directory: a file that vanishes before it is opened", answerTo(file.expected));
        }
    }
}

// A file that is open can be read whatever becomes of its name, and so can an image.
TEST(ReadFaults, ADiscThatIsRemovedAtAnyRead)
{
    const auto playlist = [](const char* name) {
        return "cannot parse playlist 'BDMV/PLAYLIST/" + std::string(name) + ".mpls'";
    };
    const auto clip = [](const char* name) {
        return "cannot parse clip information 'BDMV/CLIPINF/" + std::string(name) + ".clpi'";
    };
    const std::vector<std::string> dvd = {"cannot open '%s/VIDEO_TS/VTS_01_0.IFO': No such file or directory",
                                          "cannot open '%s/VIDEO_TS/VTS_02_0.IFO': No such file or directory",
                                          faults::wholeDisc(Family::Dvd)};
    // Playlists and clip information are listed in front of the first of them.
    const std::vector<std::string> bluray = {
        kCannotEnumerate,  kCannotEnumerate,
        playlist("00800"), playlist("00801"),
        clip("00001"),     clip("00002"),
        clip("00003"),     "id 0001 titles 2 playlists 3 clips 3 bytes 1502 streams 18432"};
    for (const Family family : {Family::Dvd, Family::Bluray}) {
        const std::vector<std::string>& answers = family == Family::Dvd ? dvd : bluray;
        for (std::size_t n = 0; n < answers.size(); ++n) {
            const DiscOnDisk disc(family, DiscForm::Directory);
            std::size_t number = 0;
            const std::string text = disc.readUnder([&](const FileRead&) {
                if (number++ == n) { fs::remove_all(disc.path()); }
                return 0;
            });
            std::string expected = answers[n];
            if (expected.find("%s") != std::string::npos) {
                expected.replace(expected.find("%s"), 2, disc.path());
            }
            EXPECT_EQ(text, expected) << "removed at read " << n;
            EXPECT_GT(number, n);
            if (!HasFailure()) {
                recordFault("Directory: a disc that is removed while it is read",
                            n + 1 == answers.size() ? "read: its last file is open already"
                                                    : "fails, with its message");
            }
        }
    }
}

struct Form {
    Family family = Family::Dvd;
    DiscForm form = DiscForm::Directory;
    std::string name;

    friend std::ostream& operator<<(std::ostream& out, const Form& form) { return out << form.name; }
};

class EveryForm : public testing::TestWithParam<Form> {
protected:
    const DiscOnDisk m_disc = DiscOnDisk(GetParam().family, GetParam().form);
    const std::string m_whole = m_disc.read();
};

// Reads that give a byte at a time, or are interrupted at first, are no faults at all.
TEST_P(EveryForm, ShortAndInterruptedReadsAreReadOn)
{
    EXPECT_EQ(m_whole, m_disc.readUnder([](FileRead& read) {
        read.sizeBytes = 1;
        return 0;
    }));
    EXPECT_GT(InterposedReads::count(), 1000U);
    bool isInterrupted = false;
    EXPECT_EQ(m_whole, m_disc.readUnder([&isInterrupted](const FileRead&) {
        isInterrupted = !isInterrupted;
        return isInterrupted ? EINTR : 0;
    }));
    EXPECT_GT(InterposedReads::count(), 5U);
    if (!HasFailure()) { recordFault("Reads that are short or interrupted", "read whole", 2); }
}

std::string nameOf(const testing::TestParamInfo<Form>& form)
{
    return form.param.name;
}

INSTANTIATE_TEST_SUITE_P(Dvd, EveryForm,
                         testing::Values(Form{Family::Dvd, DiscForm::Directory, "Directory"},
                                         Form{Family::Dvd, DiscForm::Iso, "Iso"}),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Bluray, EveryForm,
                         testing::Values(Form{Family::Bluray, DiscForm::Directory, "Directory"},
                                         Form{Family::Bluray, DiscForm::Iso, "Iso"},
                                         Form{Family::Bluray, DiscForm::Udf, "Udf"},
                                         Form{Family::Bluray, DiscForm::Udf250, "Udf250"}),
                         nameOf);

class EveryImage : public EveryForm {};

TEST_P(EveryImage, IsReadAlsoWhenItsNameIsGone)
{
    EXPECT_EQ(m_whole, m_disc.readUnder([this](const FileRead&) {
        fs::remove(m_disc.path());
        return 0;
    }));
    if (!HasFailure()) { recordFault("Image: removed while it is read", "read whole: it is open"); }
}

// A read error from some sector on is answered as if the image ended there.
TEST_P(EveryImage, ThatFailsFromAnySectorOn)
{
    std::size_t failed = 0;
    std::size_t cases = 0;
    const std::uint64_t sizeBytes = fs::file_size(m_disc.path());
    std::vector<std::string> answers;
    for (std::uint64_t offset = 0; offset < sizeBytes; offset += 2048) {
        bool isHit = false;
        answers.push_back(m_disc.readUnder(failingFrom(m_disc.path(), offset, isHit)));
        ASSERT_TRUE(answers.back() == m_whole || isHit) << offset;
    }
    for (std::uint64_t offset = answers.size() * 2048; offset > 0;) {
        offset -= 2048;
        fs::resize_file(m_disc.path(), offset);
        const std::string& answer = answers[offset / 2048];
        ASSERT_EQ(answer, m_disc.read()) << offset;
        ASSERT_NE(answer, "") << offset;
        ASSERT_NE(answer, faults::kNotEmpty) << offset;
        ++cases;
        if (answer != m_whole) { ++failed; }
    }
    EXPECT_GT(failed, 5U);
    recordFault("Image: a read error from any sector on", "fails, or is read, as if the image ended there",
                cases);
    recordFault("Image: cut off anywhere", "fails with a message, or is read where nothing is missing",
                cases);
}

TEST_P(EveryImage, ThatShrinksToNothingAtAnyRead)
{
    std::size_t reads = 0;
    {
        const InterposedReads meanwhile([](const FileRead&) { return 0; });
        EXPECT_EQ(m_disc.read(), m_whole);
        reads = InterposedReads::count();
    }
    ASSERT_GT(reads, 3U);
    for (std::size_t n = 0; n < reads; ++n) {
        const DiscOnDisk disc(GetParam().family, GetParam().form);
        std::size_t number = 0;
        const std::string text = disc.readUnder([&](const FileRead&) {
            if (number++ == n) { fs::resize_file(disc.path(), 0); }
            return 0;
        });
        ASSERT_NE(text, "") << n;
        // The volume label of a DVD, the last that is read, is not missed.
        ASSERT_EQ(text == m_whole, GetParam().family == Family::Dvd && n + 1 == reads) << n;
        ASSERT_NE(text, faults::kNotEmpty) << n;
    }
    recordFault("Image: shrinks to nothing while it is read",
                "fails with a message, or is read without the rest", reads);
}

INSTANTIATE_TEST_SUITE_P(Dvd, EveryImage, testing::Values(Form{Family::Dvd, DiscForm::Iso, "Iso"}), nameOf);
INSTANTIATE_TEST_SUITE_P(Bluray, EveryImage,
                         testing::Values(Form{Family::Bluray, DiscForm::Iso, "Iso"},
                                         Form{Family::Bluray, DiscForm::Udf, "Udf"},
                                         Form{Family::Bluray, DiscForm::Udf250, "Udf250"}),
                         nameOf);

TEST(ReadFaults, ADirectoryWhoseListingFailsHalfWay)
{
    const std::vector<BadFile> directories = {
        {Family::Bluray, "", 0, "'%s' has no BDMV directory"},
        {Family::Bluray, "/BDMV", 0, kCannotEnumerate},
        {Family::Bluray, "/BDMV/PLAYLIST", 0, kCannotEnumerate},
        {Family::Bluray, "/BDMV/CLIPINF", 0, kCannotEnumerate},
        {Family::Bluray, "/BDMV/STREAM", 0, "id 0001 titles 2 playlists 3 clips 3 bytes 1502 streams 0"},
        {Family::Bluray, "/CERTIFICATE", 0, "id  titles 2 playlists 3 clips 3 bytes 1502 streams 18432"},
    };
    for (const BadFile& directory : directories) {
        for (const int names : {0, 2, 3}) {
            const DiscOnDisk disc(Family::Bluray, DiscForm::Directory);
            std::string expected = directory.expected;
            if (expected.find("%s") != std::string::npos) {
                expected.replace(expected.find("%s"), 2, disc.path());
            }
            const faults::InterposedListing meanwhile(disc.path() + directory.path, names);
            EXPECT_EQ(disc.read(), expected) << directory.path;
            EXPECT_TRUE(faults::InterposedListing::isHit()) << directory.path;
            if (!HasFailure()) {
                recordFault("Directory: a listing that fails half way", answerTo(directory.expected));
            }
        }
    }
}

// However many names are looked for in it, and however long it is.
TEST(ReadFaults, TheDirectoryOfAnImageIsReadOnce)
{
    const TemporaryFolder folder;
    const std::string path = folder / "disc.iso";
    constexpr std::uint32_t kSize = 16U << 20U;
    faults::dvdTree().iso({.records = {{"VIDEO_TS", {.sizeBytes = kSize}}}}).writeTo(path, 2 * kSize);
    std::uint64_t readBytes = 0;
    const InterposedReads meanwhile([&readBytes](const FileRead& read) {
        readBytes += read.sizeBytes;
        return 0;
    });
    EXPECT_EQ(faults::readDisc(Family::Dvd, path), faults::wholeDisc(Family::Dvd));
    EXPECT_GE(readBytes, kSize);
    EXPECT_LT(readBytes, 2 * kSize);
}

}  // namespace
