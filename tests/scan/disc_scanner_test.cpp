#include "app/log.h"
#include "scan/disc_path.h"
#include "scan/disc_scanner.h"
#include "tests/scan/stored_package.h"
#include "tests/support/captured_log.h"
#include "tests/support/fault_table.h"
#include "tests/support/local_service.h"
#include "tests/support/sample_dvd.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/scripted_server.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace {

using testsupport::CapturedLog;
using testsupport::DiscForm;
using testsupport::ScopedEnvironment;
using testsupport::ScriptedReply;
using Lines = std::vector<std::string>;

constexpr char kFindPath[] = "/api/tessera/dvd/find/";
constexpr char kAddPath[] = "/api/tessera/dvd/add/";

QString text(const std::string& utf8)
{
    return QString::fromStdString(utf8);
}

class DiscScannerTest : public testing::Test {
protected:
    DiscScannerTest() { m_scanner.setApiKey(QStringLiteral("the-key")); }

    // Scans the sample disc; the lines it logged, the first ("scan started") and what a disc's reading logs
    // taken off.
    Lines scanSample(bool addIfMissing)
    {
        const CapturedLog log;
        m_result = m_scanner.scan(text(m_path), addIfMissing);
        Lines lines = log.lines();
        const Lines head = {"platterscope: info: scan started: " + m_path, "bdmeta: info: started parsing",
                            "bdmeta: info: not a Blu-ray source; trying DVD parsing",
                            "dvdmeta: info: started parsing", "dvdmeta: info: finished parsing: 2 titles"};
        const auto headEnd = lines.begin() + static_cast<std::ptrdiff_t>(std::min(lines.size(), head.size()));
        EXPECT_EQ(Lines(lines.begin(), headEnd), head);
        lines.erase(lines.begin(), headEnd);
        return lines;
    }

    [[nodiscard]] std::string finishedLine() const
    {
        return "platterscope: info: scan finished: DVD, 2 titles, package SHA-256 " +
               m_result.dvdPackageSha256.toHex().toStdString();
    }

    testsupport::ScriptedServer m_server;
    ScopedEnvironment m_address{"PLATTERSCOPE_SERVICE_URL", m_server.url()};
    testsupport::TemporaryFolder m_folder;
    std::string m_path = testsupport::sampleDvd().write(DiscForm::Directory, m_folder);
    DiscScanner m_scanner;
    DiscScanResult m_result;
};

TEST_F(DiscScannerTest, WithoutAKeyReadsNothingAndAsksNobody)
{
    for (const char* key : {"", "  ", "REPLACE_WITH_YOUR_API_KEY"}) {
        m_scanner.setApiKey(QString::fromUtf8(key));
        const CapturedLog log;
        const DiscScanResult result = m_scanner.scan(QStringLiteral("/no/such/path"), true);
        EXPECT_EQ(log.lines(), (Lines{"platterscope: info: scan started: /no/such/path",
                                      "platterscope: error: Tessera API key is not configured."}));
        EXPECT_EQ(result.ok, 0);
        EXPECT_EQ(result.discType, DiscType::None);
        EXPECT_EQ(result.errorMessage, QStringLiteral("Tessera API key is not configured."));
    }
    EXPECT_TRUE(m_server.requests().empty());
}

TEST_F(DiscScannerTest, APathThatIsNoDiscNamesBothReadersReasons)
{
    const CapturedLog log;
    const DiscScanResult result = m_scanner.scan(QStringLiteral("/no/such/path"), false);
    EXPECT_EQ(
        log.lines(),
        (Lines{"platterscope: info: scan started: /no/such/path", "bdmeta: info: started parsing",
               "bdmeta: info: not a Blu-ray source; trying DVD parsing", "dvdmeta: info: started parsing",
               "bdmeta: error: cannot stat '/no/such/path': No such file or directory",
               "dvdmeta: error: cannot stat '/no/such/path': No such file or directory",
               "platterscope: error: Path is not a valid Blu-ray or DVD."}));
    EXPECT_EQ(result.errorMessage, QStringLiteral("Path is not a valid Blu-ray or DVD."));
    EXPECT_EQ(result.readerErrors,
              QStringList(2, QStringLiteral("cannot stat '/no/such/path': No such file or directory")));
    EXPECT_EQ(result.discType, DiscType::None);
    EXPECT_TRUE(m_server.requests().empty());
}

TEST_F(DiscScannerTest, AKnownDiscComesBackWithItsIdAndConfigurations)
{
    m_server.play({.body = R"({"Disc ID": 17, "Configurations": [{"UID": 3, "Disc ID": 17}]})"});
    const Lines lines = scanSample(true);
    EXPECT_EQ(lines, (Lines{"tessera: info: DVD lookup started",
                            "tessera: info: DVD lookup finished: disc found", finishedLine()}));
    EXPECT_EQ(m_result.ok, 1);
    EXPECT_EQ(m_result.discType, DiscType::Dvd);
    EXPECT_TRUE(m_result.inDatabase);
    EXPECT_EQ(m_result.discId, 17);
    EXPECT_EQ(m_result.newDiscUrl, text(m_server.url()) + QStringLiteral("/tessera/dvd/new/?uid=17"));
    EXPECT_EQ(m_result.configurations.size(), 1);
    EXPECT_EQ(m_server.requests().size(), 1U) << "a known disc is not added, also where adding was asked for";
}

TEST_F(DiscScannerTest, IdZeroIsKnownButHasNoPage)
{
    m_server.play({.body = R"({"Disc ID": 0})"});
    scanSample(false);
    EXPECT_TRUE(m_result.inDatabase);
    EXPECT_TRUE(m_result.newDiscUrl.isEmpty());
    EXPECT_EQ(m_result.ok, 1);
}

TEST_F(DiscScannerTest, AnUnknownDiscIsAddedOnlyWhenAskedFor)
{
    m_server.playFor(kFindPath, {.body = "{}"});
    m_server.playFor(kAddPath, {.body = "23"});
    const Lines lookupLines = scanSample(false);
    EXPECT_EQ(lookupLines, (Lines{"tessera: info: DVD lookup started",
                                  "tessera: info: DVD lookup finished: disc not found", finishedLine()}));
    EXPECT_EQ(m_result.ok, 1);
    EXPECT_FALSE(m_result.inDatabase);
    EXPECT_EQ(m_result.discId, 0);
    EXPECT_TRUE(m_result.newDiscUrl.isEmpty());

    EXPECT_EQ(
        scanSample(true),
        (Lines{"tessera: info: DVD lookup started", "tessera: info: DVD lookup finished: disc not found",
               "tessera: info: DVD add started", "tessera: info: DVD add finished", finishedLine()}));
    EXPECT_EQ(m_result.ok, 1);
    EXPECT_TRUE(m_result.inDatabase);
    EXPECT_EQ(m_result.discId, 23);
    EXPECT_EQ(m_result.newDiscUrl, text(m_server.url()) + QStringLiteral("/tessera/dvd/new/?uid=23"));
}

TEST_F(DiscScannerTest, AFailedFindKeepsTheDisc)
{
    struct Case {
        ScriptedReply reply;
        std::string message;
    };
    for (const Case& failing : {
             Case{{.status = 403, .body = "Key revoked.\n<b>Ask</b>"}, "Key revoked.\n<b>Ask</b>"},
             Case{{.status = 500}, "Tessera returned HTTP 500."},
             Case{{.status = 204}, "Tessera returned HTTP 204."},
             Case{{.body = "<html>not me</html>"}, "Tessera returned an invalid find response."},
             Case{{.body = R"({"Disc ID": 1.5})"}, "Tessera returned an invalid find response."},
             Case{{.rawBytes = ""}, "Network error: Server returned nothing (no headers, no data)"},
         }) {
        m_server.play(failing.reply);
        const Lines lines = scanSample(true);
        std::string logged;
        for (const std::string& line : lines) {
            logged += line + '\n';
        }
        const QString indented = text(failing.message).replace(QLatin1Char('\n'), QStringLiteral("\n  "));
        EXPECT_EQ(text(logged),
                  QStringLiteral("tessera: info: DVD lookup started\ntessera: error: %1\n").arg(indented));
        EXPECT_EQ(m_result.ok, 0);
        EXPECT_EQ(m_result.discType, DiscType::Dvd);
        EXPECT_EQ(m_result.errorMessage, text(failing.message));
        EXPECT_EQ(m_result.dvdTitles.size(), 2);
        EXPECT_FALSE(m_result.dvdPackage.isEmpty());
    }
    testsupport::recordFault("Scan: the service fails to find or to add the disc",
                             "an error, and the titles of the disc are shown", 6);
}

TEST_F(DiscScannerTest, AFailedAddKeepsTheDisc)
{
    struct Case {
        ScriptedReply reply;
        std::string message;
    };
    for (const Case& failing : {
             Case{{.body = "23\n"}, "Tessera returned an invalid disc identifier."},
             Case{{.status = 409, .body = "busy"}, "busy"},
             Case{{.status = 201}, "Tessera returned HTTP 201."},
         }) {
        m_server.play({.body = R"({"Disc ID": null})"});
        m_server.play(failing.reply);
        const Lines lines = scanSample(true);
        EXPECT_EQ(lines.back(), "tessera: error: " + failing.message);
        EXPECT_EQ(m_result.ok, 0);
        EXPECT_FALSE(m_result.inDatabase);
        EXPECT_EQ(m_result.errorMessage, text(failing.message));
        EXPECT_EQ(m_result.dvdTitles.size(), 2);
    }
    testsupport::recordFault("Scan: the service fails to find or to add the disc",
                             "an error, and the titles of the disc are shown", 3);
}

TEST_F(DiscScannerTest, ARefusedServiceAddressIsTheErrorOfTheLookup)
{
    const ScopedEnvironment address("PLATTERSCOPE_SERVICE_URL", "http://192.0.2.1");
    const Lines lines = scanSample(false);
    EXPECT_EQ(m_result.ok, 0);
    EXPECT_FALSE(m_result.errorMessage.isEmpty());
    EXPECT_EQ(m_result.dvdTitles.size(), 2);
    EXPECT_EQ(lines.back(), "tessera: error: " + m_result.errorMessage.toStdString());
}

TEST_F(DiscScannerTest, EveryOperationSetsTheThreadsSwitchAndRestoresIt)
{
    m_server.playFor(kFindPath, {.body = "{}"});
    m_scanner.setLoggingEnabled(false);
    const CapturedLog log;
    EXPECT_EQ(m_scanner.scan(text(m_path), false).ok, 1);
    EXPECT_EQ(m_scanner.scan(QStringLiteral("/no/such/path"), false).ok, 0);
    EXPECT_FALSE(m_scanner.authenticate().ok);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_TRUE(logging::isEnabled());

    const logging::ScopedSwitch off(false);
    m_scanner.setLoggingEnabled(true);
    EXPECT_EQ(m_scanner.scan(text(m_path), false).ok, 1);
    EXPECT_FALSE(log.lines().empty());
    EXPECT_FALSE(logging::isEnabled());
}

TEST_F(DiscScannerTest, TheKeyIsTrimmedAndNeverLogged)
{
    m_scanner.setApiKey(QStringLiteral("  top secret\t"));
    m_server.play({.status = 401});
    const CapturedLog log;
    const DiscScanResult result = m_scanner.scan(text(m_path), true);
    EXPECT_EQ(m_server.requests().at(0).header("apiKey"), "top secret");
    for (const std::string& line : log.lines()) {
        EXPECT_EQ(line.find("secret"), std::string::npos) << line;
    }
    EXPECT_FALSE(result.errorMessage.contains(QLatin1StringView("secret")));
}

TEST_F(DiscScannerTest, EveryFormOfADiscIsOneDiscToTheService)
{
    m_server.playFor(kFindPath, {.body = "{}"});
    scanSample(false);
    const QByteArray fromDirectory = m_result.dvdPackage;
    m_path = testsupport::sampleDvd().write(DiscForm::Iso, m_folder);
    scanSample(false);
    EXPECT_EQ(m_result.dvdPackage, fromDirectory);
}

TEST_F(DiscScannerTest, ARealServiceKeepsTheVeryPackageAndFindsTheDiscAgain)
{
    const std::string database = m_folder / "service.db";
    const testsupport::LocalService service(TESSERA_LOCAL_EXECUTABLE, database, {"the-key=ada"});
    ASSERT_TRUE(service.isReady()) << service.log();
    const ScopedEnvironment address("PLATTERSCOPE_SERVICE_URL", service.baseUrl());

    scanSample(false);
    EXPECT_EQ(m_result.ok, 1);
    EXPECT_FALSE(m_result.inDatabase);
    scanSample(true);
    EXPECT_TRUE(m_result.inDatabase);
    const qint64 addedId = m_result.discId;
    EXPECT_NE(addedId, 0);
    EXPECT_EQ(storedPackage(database), m_result.dvdPackage);
    scanSample(false);
    EXPECT_TRUE(m_result.inDatabase);
    EXPECT_EQ(m_result.discId, addedId);
}

TEST(DiscPath, OnlyARootKeepsASeparatorAtItsEnd)
{
    const struct {
        char native;
        const char* given;
        const char* path;
    } rows[] = {
        {'/', "/a//", "/a"},
        {'/', "//", "/"},
        {'/', "/a\\", "/a\\"},
        {'/', "//a/b/", "//a/b"},
        {'/', "", ""},
        {'\\', "D:\\", "D:\\"},
        {'\\', "D:/BDMV\\", "D:/BDMV"},
        {'\\', "\\\\a\\b\\", "\\\\a\\b\\"},
        {'\\', "//a/b/c/", "//a/b/c"},
        {'\\', "\\", "\\"},
    };
    for (const auto& row : rows) {
        const QChar native = QLatin1Char(row.native);
        EXPECT_EQ(scan::withoutTrailingSeparators(QLatin1StringView(row.given), native).toStdString(),
                  row.path);
    }
}

}  // namespace
