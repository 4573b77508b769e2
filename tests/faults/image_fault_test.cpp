// Discs in every form, and images above all, of which reads fail.
#include "tests/faults/disc_on_disk.h"
#include "tests/support/fault_table.h"

using faults::DiscOnDisk;
using faults::Family;
using faults::FileRead;
using faults::InterposedReads;
using testsupport::DiscForm;
using testsupport::recordFault;
namespace fs = std::filesystem;

namespace {

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
        answers.push_back(m_disc.readUnder(faults::failingFrom(m_disc.path(), offset, isHit)));
        ASSERT_TRUE(answers.back() == m_whole || isHit) << offset;
    }
    for (std::uint64_t offset = answers.size() * 2048; offset > 0;) {
        offset -= 2048;
        fs::resize_file(m_disc.path(), offset);
        const std::string& answer = answers[offset / 2048];
        ASSERT_EQ(answer, m_disc.read()) << offset;
        ASSERT_NE(answer, "") << offset;
        ASSERT_NE(answer, faults::kNotEmpty) << offset;
        const bool isWarned = answer.ends_with(faults::kWarned);
        ASSERT_EQ(isWarned, faults::isSummary(answer) && answer != m_whole) << offset << ' ' << answer;
        ++cases;
        if (answer != m_whole) { ++failed; }
    }
    EXPECT_GT(failed, 5U);
    recordFault("Image: a read error from any sector on", "fails, or is read, as if the image ended there",
                cases);
    recordFault("Image: cut off anywhere",
                "fails with a message, or is read, with a warning where something is missing", cases);
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

}  // namespace
