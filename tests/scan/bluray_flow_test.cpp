#include "scan/bluray_flow.h"
#include "scan/disc_scanner.h"
#include "tests/scan/stored_package.h"
#include "tests/support/captured_log.h"
#include "tests/support/local_service.h"
#include "tests/support/sample_bluray.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/scripted_server.h"

#include <QCryptographicHash>

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace {

using testsupport::CapturedLog;
using testsupport::DiscForm;
using testsupport::DiscTree;
using testsupport::ScopedEnvironment;
using Lines = std::vector<std::string>;

bdmeta::BlurayDisc read(const DiscTree& tree)
{
    const testsupport::TemporaryFolder folder;
    std::array<char, 256> error = {};
    bdmeta::BlurayDisc disc;
    EXPECT_EQ(
        readBlurayDisc(tree.write(DiscForm::Directory, folder).c_str(), &disc, error.data(), error.size()), 0)
        << error.data();
    return disc;
}

TEST(BlurayFlow, DescribesEveryPlaylistWithItsStreams)
{
    const bdmeta::BlurayDisc disc = read(testsupport::sampleBluray());
    const CapturedLog log;
    const DiscScanResult result = scan::describeBluray(&disc);
    EXPECT_EQ(log.lines(), Lines{"bdmeta: info: title sizes calculated from CPI packet ranges"});
    ASSERT_EQ(result.blurayTitles.size(), 3);

    const BlurayTitleInfo& film = result.blurayTitles.at(1);
    EXPECT_EQ(film.playlistId, 800U);
    EXPECT_EQ(film.label, QStringLiteral("#2 00800 (2 angles)"));
    EXPECT_EQ(film.videoWidth, 1920U);
    EXPECT_EQ(film.videoHeight, 1080U);
    EXPECT_EQ(film.durationMs, 120'000U);
    EXPECT_EQ(film.distinctDurationMs, 120'000U);
    EXPECT_EQ(film.playbackSizeBytes, 2U * 6000 * 192);
    EXPECT_FALSE(film.isSizeEstimated);
    EXPECT_EQ(film.clipCount, 2U);
    EXPECT_EQ(film.angleCount, 2U);
    EXPECT_EQ(film.alternateAngleItemCount, 1U);
    EXPECT_EQ(film.chapterCount, 3U);
    EXPECT_EQ(film.playmarkCount, 3U);
    EXPECT_EQ(film.videoStreamCount, 2U) << "summed over the PlayItems";
    EXPECT_EQ(film.primaryAudioCount, 4U);
    EXPECT_EQ(film.primarySubtitleCount, 4U);
    EXPECT_EQ(film.segmentMap, (QStringList{QStringLiteral("00001"), QStringLiteral("00002")}));
    EXPECT_EQ(film.videoCodecNames, QStringList{QStringLiteral("H.264")});
    ASSERT_EQ(film.videoStreams.size(), 1);
    EXPECT_EQ(film.videoStreams.at(0).pid, 0x1011U);
    EXPECT_EQ(film.videoStreams.at(0).category, 1);
    ASSERT_EQ(film.audioTracks.size(), 2);
    EXPECT_EQ(film.audioTracks.at(0).codecName, QStringLiteral("TrueHD"));
    EXPECT_EQ(film.audioTracks.at(1).language, QStringLiteral("deu"));
    EXPECT_EQ(film.audioTracks.at(1).channelLayout, QStringLiteral("Stereo"));
    ASSERT_EQ(film.subtitleTracks.size(), 2);
    EXPECT_EQ(film.subtitleTracks.at(1).language, QStringLiteral("qqq"));

    EXPECT_EQ(result.blurayTitles.at(0).interactiveGraphicsCount, 1U);
    EXPECT_EQ(result.blurayTitles.at(2).segmentMap.first(), QStringLiteral("00002"));
    EXPECT_EQ(result.discSummary.titleCount, 3U);
    EXPECT_EQ(result.discSummary.durationMs, 270'000U);
    EXPECT_EQ(result.discSummary.chapterCount, 6U);
    EXPECT_EQ(result.blurayDiscIdBytes, QByteArray::fromHex("000102030405060708090a0b0c0d0e0f"));
    EXPECT_EQ(result.blurayPackageSha256.size(), 32);
    EXPECT_TRUE(result.dvdTitles.isEmpty());
    EXPECT_TRUE(result.dvdPackage.isEmpty());
}

TEST(BlurayFlow, WarnsOnceOfAllPlayItemsThatCountTheirWholeClip)
{
    testsupport::ClpiSpec withoutMap;
    const bdmeta::BlurayDisc disc =
        read(testsupport::sampleBluray().add("BDMV/CLIPINF/00002.clpi", withoutMap.build()));
    const CapturedLog log;
    const DiscScanResult result = scan::describeBluray(&disc);
    EXPECT_EQ(log.lines(), Lines{"bdmeta: warning: title-size calculation used the full-clip fallback for 2 "
                                 "PlayItem(s); first occurrence: playlist 00800, clip 00002"});
    EXPECT_FALSE(result.blurayTitles.at(0).isSizeEstimated);
    EXPECT_TRUE(result.blurayTitles.at(1).isSizeEstimated);
}

TEST(BlurayFlow, WhatCannotBePackagedIsACleanErrorResult)
{
    const auto expectError = [](const DiscScanResult& result, const char* message) {
        EXPECT_EQ(result.errorMessage, QString::fromUtf8(message));
        EXPECT_EQ(result.ok, 0);
        EXPECT_EQ(result.discType, DiscType::None);
        EXPECT_TRUE(result.blurayTitles.isEmpty());
        EXPECT_TRUE(result.blurayPackage.isEmpty());
    };
    const CapturedLog log;
    expectError(scan::describeBluray(nullptr), "Blu-ray scan metadata is unavailable.");
    const bdmeta::BlurayDisc empty;
    expectError(scan::describeBluray(&empty), "No titles found on Blu-ray.");
    const bdmeta::BlurayDisc shortName =
        read(testsupport::sampleBluray().add("BDMV/PLAYLIST/1.mpls", testsupport::MplsSpec().build()));
    expectError(scan::describeBluray(&shortName),
                "Blu-ray package requires five-character BDMV identifiers.");
    EXPECT_EQ(log.lines(),
              (Lines{"platterscope: error: Blu-ray scan metadata is unavailable.",
                     "bdmeta: info: title sizes calculated from CPI packet ranges",
                     "platterscope: error: No titles found on Blu-ray.",
                     "bdmeta: info: title sizes calculated from CPI packet ranges",
                     "platterscope: error: Blu-ray package requires five-character BDMV identifiers."}));
}

// Reads a package by its format: a test-side reader that shares nothing with the writer. Gives each file by name
// and each stream file's size.
class PackageFiles {
public:
    explicit PackageFiles(const QByteArray& package)
        : m_bytes(package)
    {
        m_at = 32;
        for (const char* tag : {"DISC", "CLPI", "MPLS", "TITL"}) {
            EXPECT_EQ(m_bytes.mid(m_at, 4), QByteArray(tag));
            const qint64 length = m_bytes.mid(m_at + 8, 8).toHex().toLongLong(nullptr, 16);
            const qint64 end = m_at + 16 + length;
            m_at += 16;
            if (tag == std::string("CLPI") || tag == std::string("MPLS")) {
                readFiles(tag == std::string("CLPI"));
                EXPECT_EQ(m_at, end);
            }
            m_at = end;
        }
        EXPECT_EQ(m_at, m_bytes.size());
    }

    [[nodiscard]] const std::map<QByteArray, QByteArray>& files() const { return m_files; }
    [[nodiscard]] const QList<qint64>& streamSizes() const { return m_streamSizes; }

private:
    qint64 varint()
    {
        qint64 value = 0;
        for (int shift = 0;; shift += 7) {
            const auto byte = static_cast<unsigned char>(m_bytes.at(m_at++));
            value |= static_cast<qint64>(byte & 0x7F) << shift;
            if (byte < 0x80) { return value; }
        }
    }

    QByteArray take(qint64 length)
    {
        m_at += length;
        return m_bytes.mid(m_at - length, length);
    }

    void readFiles(bool isClips)
    {
        for (qint64 count = varint(); count > 0; --count) {
            const QByteArray name = take(varint());
            const QByteArray digest = take(32);
            m_files[name] = take(varint());
            EXPECT_EQ(QCryptographicHash::hash(m_files[name], QCryptographicHash::Sha256), digest);
            if (isClips) { m_streamSizes.append(take(8).toHex().toLongLong(nullptr, 16)); }
        }
    }

    QByteArray m_bytes;
    qint64 m_at = 0;
    std::map<QByteArray, QByteArray> m_files;
    QList<qint64> m_streamSizes;
};

class BlurayScanTest : public testing::Test {
protected:
    BlurayScanTest() { m_scanner.setApiKey(QStringLiteral("the-key")); }

    testsupport::ScriptedServer m_server;
    ScopedEnvironment m_address{"PLATTERSCOPE_SERVICE_URL", m_server.url()};
    testsupport::TemporaryFolder m_folder;
    DiscScanner m_scanner;
};

TEST_F(BlurayScanTest, EveryFormIsOneDiscToTheService)
{
    m_server.playFor("/api/tessera/bluray/find/", {.body = R"({"Disc ID": "17"})"});
    QByteArray sha256;
    QByteArray package;
    for (const DiscForm form : testsupport::kAllBlurayForms) {
        const std::string path = testsupport::sampleBluray().write(form, m_folder);
        const CapturedLog log;
        const DiscScanResult result = m_scanner.scan(QString::fromStdString(path), true);
        if (sha256.isEmpty()) {
            sha256 = result.blurayPackageSha256;
            package = result.blurayPackage;
        }
        EXPECT_EQ(result.blurayPackage, package);
        EXPECT_EQ(log.lines(),
                  (Lines{"platterscope: info: scan started: " + path, "bdmeta: info: started parsing",
                         "bdmeta: info: finished parsing: 3 playlists, 3 clips",
                         "bdmeta: info: title sizes calculated from CPI packet ranges",
                         "tessera: info: Blu-ray lookup started",
                         "tessera: info: Blu-ray lookup finished: disc found",
                         "platterscope: info: scan finished: Blu-ray, 3 titles, package SHA-256 " +
                             sha256.toHex().toStdString()}));
        EXPECT_EQ(result.discType, DiscType::Bluray);
        EXPECT_EQ(result.newDiscUrl,
                  QString::fromStdString(m_server.url()) + QStringLiteral("/tessera/bluray/new/?uid=17"));
    }
}

TEST_F(BlurayScanTest, ADiscThatIsBothKindsIsABluray)
{
    m_server.playFor("/api/tessera/bluray/find/", {.body = "{}"});
    const std::string path =
        testsupport::sampleBluray().add("VIDEO_TS/VIDEO_TS.IFO", {}).write(DiscForm::Directory, m_folder);
    const CapturedLog quiet;
    EXPECT_EQ(m_scanner.scan(QString::fromStdString(path), false).discType, DiscType::Bluray);
}

TEST_F(BlurayScanTest, AFileThatCannotBeParsedNamesItselfInTheLog)
{
    const std::string path = testsupport::sampleBluray()
                                 .add("BDMV/PLAYLIST/00800.mpls", {'M', 'P', 'L', 'S'})
                                 .write(DiscForm::Directory, m_folder);
    const CapturedLog log;
    const DiscScanResult result = m_scanner.scan(QString::fromStdString(path), false);
    EXPECT_EQ(
        log.lines(),
        (Lines{"platterscope: info: scan started: " + path, "bdmeta: info: started parsing",
               "bdmeta: info: not a Blu-ray source; trying DVD parsing", "dvdmeta: info: started parsing",
               "bdmeta: error: cannot parse playlist 'BDMV/PLAYLIST/00800.mpls'",
               "dvdmeta: error: '" + path + "' has no VIDEO_TS directory",
               "platterscope: error: Path is not a valid Blu-ray or DVD."}));
    EXPECT_EQ(result.errorMessage, QStringLiteral("Path is not a valid Blu-ray or DVD."));

    const std::string image = m_folder / "large.iso";
    testsupport::sampleBluray()
        .image(testsupport::DiscForm::Iso, {.sectors = {{"BDMV/PLAYLIST/00800.mpls", 1U << 20U}}})
        .writeTo(image);
    const CapturedLog imageLog;
    EXPECT_EQ(m_scanner.scan(QString::fromStdString(image), false).discType, DiscType::None);
    EXPECT_EQ(imageLog.lines().at(4), "bdmeta: error: cannot parse playlist 'BDMV/PLAYLIST/00800.mpls'");
    EXPECT_EQ(imageLog.lines().at(5),
              "bdmeta: warning: the file lies behind the image's first 2 GiB; mount the "
              "image and open the directory");
}

TEST_F(BlurayScanTest, ARealServiceAddsTheDiscAndKeepsItsVeryFiles)
{
    const std::string database = m_folder / "service.db";
    const testsupport::LocalService service(TESSERA_LOCAL_EXECUTABLE, database, {"the-key=ada"});
    ASSERT_TRUE(service.isReady()) << service.log();
    const ScopedEnvironment address("PLATTERSCOPE_SERVICE_URL", service.baseUrl());
    const std::filesystem::path root = testsupport::sampleBluray().write(DiscForm::Directory, m_folder);
    const QString path = QString::fromStdString(root);
    const CapturedLog quiet;
    EXPECT_FALSE(m_scanner.scan(path, false).inDatabase);
    const DiscScanResult added = m_scanner.scan(path, true);
    EXPECT_EQ(added.ok, 1);
    EXPECT_NE(added.discId, 0);
    EXPECT_EQ(m_scanner.scan(path, false).discId, added.discId);

    const QByteArray stored = storedPackage(database);
    EXPECT_EQ(QCryptographicHash::hash(stored, QCryptographicHash::Sha256), added.blurayPackageSha256);
    const PackageFiles package(stored);
    std::size_t compared = 0;
    for (const char* directory : {"CLIPINF", "PLAYLIST"}) {
        for (const auto& entry : std::filesystem::directory_iterator(root / "BDMV" / directory)) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(file), {}};
            EXPECT_EQ(package.files().at(QByteArray::fromStdString(entry.path().filename())),
                      QByteArray::fromStdString(bytes));
            ++compared;
        }
    }
    EXPECT_EQ(package.files().size(), compared);
    EXPECT_EQ(compared, 6U);
    EXPECT_EQ(package.streamSizes(), (QList<qint64>{6000 * 192, 6000 * 192, 3000 * 192}));
}

}  // namespace
