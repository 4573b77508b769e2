// What scans and refreshes ask the service, what they log, and what they give. tests/report has the titles of discs.
#include "base/log.h"
#include "scan/disc_path.h"
#include "scan/disc_scanner.h"
#include "scan/error_result.h"
#include "tests/support/golden.h"
#include "tests/support/local_service.h"
#include "tests/support/sample_bluray.h"
#include "tests/support/sample_dvd.h"
#include "tests/support/scopes.h"
#include "tests/support/scripted_server.h"

#include <QDebug>

#include <gtest/gtest.h>

#include <functional>

using namespace testsupport;
using namespace Qt::StringLiterals;

namespace {

const std::string kDvd = "/api/tessera/dvd/";
const std::string kBluray = "/api/tessera/bluray/";

class DiscScans : public testing::Test {
protected:
    DiscScans() { m_scanner.setApiKey(u"  top-secret\t"_s); }

    // Runs an operation. Gives what it asks, what it logs but for the readers' steps, and its result: of each title the
    // length without repetitions, and the sizes of the packages of both kinds.
    QString run(const std::function<DiscScanResult()>& operation)
    {
        const CapturedLog log;
        m_result = operation();
        QString text;
        const std::vector<RecordedRequest> requests = m_server.requests();
        for (; m_seenRequests < requests.size(); ++m_seenRequests) {
            const RecordedRequest& request = requests[m_seenRequests];
            text += QString::fromStdString(request.method + ' ' + request.target + '\n');
            EXPECT_EQ(request.header("apiKey"), "top-secret");
        }
        for (const std::string& line : log.lines()) {
            if (line.find("meta: info: ") == line.npos) { text += QString::fromStdString(line) + u'\n'; }
        }
        QList<quint64> lengths;
        std::ranges::transform(m_result.dvdTitles, std::back_inserter(lengths),
                               &DvdTitleInfo::distinctDurationMs);
        std::ranges::transform(m_result.blurayTitles, std::back_inserter(lengths),
                               &BlurayTitleInfo::distinctDurationMs);
        const DiscScanResult& r = m_result;
        QStringList readerErrors;
        std::ranges::transform(r.readerErrors, std::back_inserter(readerErrors), &Message::english);
        QDebug(&text).nospace() << "= ok " << r.ok << " kind " << static_cast<int>(r.discType) << ' '
                                << lengths << " packages " << r.dvdPackage.size() << ' '
                                << r.blurayPackage.size() << " found " << r.inDatabase << " disc " << r.discId
                                << ' ' << r.newDiscUrl << " with " << r.configurations.size() << ' '
                                << r.errorMessage << ' ' << readerErrors << '\n';
        EXPECT_FALSE(text.contains(u"secret"_s)) << text.toStdString();
        return text.replace(QString::fromStdString(m_server.url()), u"SERVICE"_s);
    }

    QString scan(const std::string& path, bool addIfMissing = false)
    {
        const QString given = QString::fromStdString(path);
        return run([&] { return m_scanner.scan(given, addIfMissing); }).replace(given, u"DISC"_s);
    }

    static void expectGolden(const QString& text, const std::string& name)
    {
        EXPECT_EQ(goldenDifference(text.toStdString(), "scan/golden/" + name), "");
    }

    ScriptedServer m_server;
    ScopedEnvironment m_address{"PLATTERSCOPE_SERVICE_URL", m_server.url()};
    TemporaryFolder m_folder;
    DiscScanner m_scanner;
    DiscScanResult m_result;
    std::size_t m_seenRequests = 0;
};

TEST_F(DiscScans, AreAnsweredByTheService)
{
    const struct {
        const char* name;
        ScriptedReply find;
        ScriptedReply add = {};
        bool addIfMissing = true;
    } rows[] = {
        {"found", {.body = R"({"Disc ID": 17, "Configurations": [{"UID": 3}, {"UID": 4}]})"}},
        {"found as number 0", {.body = R"({"Disc ID": 0})"}},
        {"not found", {.body = "{}"}, {}, false},
        {"added", {.body = R"({"Disc ID": null})"}, {.body = "23"}},
        {"find refused", {.status = 403, .body = "Revoked.\r\n<b>Ask</b>\n\ta\rb\u202E"}},
        {"find cut off", {.rawBytes = ""}},
        {"find without sense", {.body = "<html>"}},
        {"add refused", {.body = "{}"}, {.status = 409, .body = "busy"}},
        {"add without sense", {.body = "{}"}, {.body = "23\n"}},
    };
    // The files of the Blu-ray come beside those of the DVD: a disc of both kinds is a Blu-ray.
    for (const bool isDvd : {true, false}) {
        const DiscTree disc = isDvd ? sampleDvd() : sampleBluray();
        const std::string path = disc.write(DiscForm::Directory, m_folder);
        QString text;
        for (const auto& row : rows) {
            m_server.playFor((isDvd ? kDvd : kBluray) + "find/", row.find);
            m_server.playFor((isDvd ? kDvd : kBluray) + "add/", row.add);
            text += QLatin1String(row.name) + u":\n"_s + scan(path, row.addIfMissing);
        }
        expectGolden(text, isDvd ? "dvd.txt" : "bluray.txt");
    }
}

TEST_F(DiscScans, RefuseWhatCannotBeReadOrPackaged)
{
    const DiscTree bluray = sampleBluray();
    DiscTree noPlaylists = DiscTree(bluray).add("BDMV/PLAYLIST/note.txt", {});
    for (const char* name : {"00000", "00800", "00801"}) {
        noPlaylists.remove(std::string("BDMV/PLAYLIST/") + name + ".mpls");
    }
    MplsSpec crowded{.playItems = std::vector<PlayItemSpec>(20)};
    for (std::uint16_t pid = 0; pid < 5000; ++pid) {
        crowded.playItems[pid / 250U].stn.primaryAudio.push_back(
            {.pid = pid, .attributes = audioAttributes("")});
    }
    DiscTree tooMuch = bluray;
    for (int name = 10'000; name < 10'050; ++name) {
        tooMuch.add("BDMV/PLAYLIST/" + std::to_string(name) + ".mpls", crowded.build());
    }
    const std::pair<const char*, DiscTree> rows[] = {
        {"a DVD without titles", DvdSpec{.vmg = {.titles = {}}, .titleSets = {}}.tree()},
        // Its title is in a title set beyond the last that a disc can have.
        {"a DVD without title sets",
         DvdSpec{.vmg = {.titles = {{.vtsn = 100}}}, .titleSets = {{100, VtsSpec()}}}.tree()},
        {"a Blu-ray without playlists", noPlaylists},
        {"too many streams", tooMuch},
        {"a short playlist name", DiscTree(bluray).add("BDMV/PLAYLIST/1.mpls", MplsSpec().build())},
        {"a broken playlist", DiscTree(bluray).add("BDMV/PLAYLIST/00800.mpls", {'M', 'P', 'L', 'S'})},
    };
    QString text;
    for (const auto& [name, disc] : rows) {
        const std::string path = disc.write(DiscForm::Directory, m_folder);
        text += QLatin1String(name) + u":\n"_s + scan(path);
        std::filesystem::remove_all(path);
    }
    text += u"no file:\n"_s + scan(m_folder / "disc");

    BuiltImage built = bluray.image(DiscForm::Iso);
    const std::uint64_t place = built.placeOf("BDMV/PLAYLIST/00800.mpls").record + 2;  // in both byte orders
    const std::string image = m_folder / "disc.iso";
    built.putLe(place, 1U << 20U, 4).putBe(place + 4, 1U << 20U, 4).writeTo(image, (1U << 31U) + 4096U);
    text += u"a playlist behind 2 GiB of an image:\n"_s + scan(image);

    const std::string good = sampleDvd().write(DiscForm::Directory, m_folder);
    {
        const ScopedEnvironment address("PLATTERSCOPE_SERVICE_URL", "http://192.0.2.1");
        text += u"a refused address:\n"_s + scan(good);
    }
    for (const char* key : {" \t", "REPLACE_WITH_YOUR_API_KEY"}) {
        m_scanner.setApiKey(QString::fromUtf8(key));
        text += u"no key:\n"_s + scan(good);
    }
    expectGolden(text, "refused.txt");
}

TEST_F(DiscScans, EveryFormIsOneDiscToTheService)
{
    const LocalService service(TESSERA_LOCAL_EXECUTABLE, m_folder / "service.db", {"top-secret=ada"});
    ASSERT_TRUE(service.isReady()) << service.log();
    const ScopedEnvironment address("PLATTERSCOPE_SERVICE_URL", service.baseUrl());
    QStringList names;
    const auto expectOne = [&](const DiscTree& disc, const auto& forms) {
        QString first;
        for (const DiscForm form : forms) {
            const std::string path = disc.write(form, m_folder);
            if (first.isEmpty()) {
                scan(path);
                EXPECT_TRUE(m_result.ok == 1 && !m_result.inDatabase);
                scan(path, true);
                first = scan(path);
            }
            EXPECT_EQ(scan(path), first);  // with the package's SHA-256 and the service's number
            EXPECT_TRUE(m_result.ok == 1 && m_result.inDatabase);
            names.append(m_result.blurayDiscName + u'/' + m_result.blurayDiscLabel);
        }
    };
    expectOne(sampleDvd(), kAllDiscForms);
    expectOne(sampleBluray(), kAllBlurayForms);
    EXPECT_EQ(names.count(u"TEST_DISC/TEST_DISC"_s), 2) << "the forms with ISO-9660";
}

TEST_F(DiscScans, AreRefreshedInTheirConfigurationsAlone)
{
    DiscScanResult known;
    known.ok = 1;
    known.discType = DiscType::Dvd;
    known.discId = 9'007'199'254'740'993;
    known.inDatabase = true;
    known.configurations.resize(1);
    known.newDiscUrl = u"https://example.org/new"_s;
    known.dvdPackage = "package";
    known.dvdTitles.resize(2);
    using Change = void (*)(DiscScanResult&);
    const std::tuple<const char*, ScriptedReply, Change> rows[] = {
        {"two", {.body = R"([{"UID": 5, "Disc ID": "17"}, {"UID": 6}])"}, nullptr},
        {"refused", {.status = 404, .body = "No such\ndisc."}, nullptr},
        {"without sense", {.body = "{}"}, nullptr},
        {"too many",
         {.body = ('[' + QByteArray("{},").repeated(service::kMaximumConfigurations) + "{}]").toStdString()},
         nullptr},
        {"a Blu-ray", {.body = "[]"}, [](DiscScanResult& r) { r.discType = DiscType::Bluray; }},
        {"no kind", {}, [](DiscScanResult& r) { r.discType = DiscType::None; }},
        {"number 0", {}, [](DiscScanResult& r) { r.discId = 0; }},
        {"not in the database", {}, [](DiscScanResult& r) { r.inDatabase = false; }},
        {"after a note", {.body = "[]"}, [](DiscScanResult& r) { scan::setError(r, "a note"); }},
        {"after an error",
         {.body = "[]"},
         [](DiscScanResult& r) { r.ok = 0, scan::setError(r, "an error"); }},
    };
    QString text;
    const auto refresh = [&](const char* name, const DiscScanResult& disc) {
        text += QLatin1String(name) + u":\n"_s + run([&] { return m_scanner.refreshConfigurations(disc); });
    };
    for (const auto& [name, reply, change] : rows) {
        m_server.playFor(kDvd + "configurations/get/", reply);
        m_server.playFor(kBluray + "configurations/get/", reply);
        DiscScanResult disc = known;
        if (change != nullptr) { change(disc); }
        refresh(name, disc);
    }
    m_scanner.setApiKey(u" "_s);
    refresh("no key", known);
    expectGolden(text, "refresh.txt");
}

TEST_F(DiscScans, FollowTheScannersSwitchAndRestoreTheThreads)
{
    m_server.playFor(kDvd + "find/", {.body = "{}"});
    const QString path = QString::fromStdString(sampleDvd().write(DiscForm::Directory, m_folder));
    const std::function<bool()> operations[] = {
        [&] { return m_scanner.scan(path, false).ok == 1; },
        [&] { return m_scanner.scan(u"/no/such/path"_s, false).ok == 0; },
        [&] { return !m_scanner.authenticate().ok; },
        [&] { return m_scanner.refreshConfigurations({}).ok == 0; },
    };
    for (const bool isOn : {false, true}) {
        const logging::ScopedSwitch other(!isOn);
        m_scanner.setLoggingEnabled(isOn);
        for (const auto& operation : operations) {
            const CapturedLog log;
            EXPECT_TRUE(operation());
            EXPECT_EQ(log.lines().empty(), !isOn);
            EXPECT_EQ(logging::isEnabled(), !isOn);
        }
    }
}

TEST(DiscPath, OnlyARootKeepsASeparatorAtItsEnd)
{
    const std::tuple<char, const char*, const char*> rows[] = {{'/', "/a//", "/a"},
                                                               {'/', "//", "/"},
                                                               {'/', "/a\\", "/a\\"},
                                                               {'/', "//a/b/", "//a/b"},
                                                               {'/', "", ""},
                                                               {'\\', "D:\\", "D:\\"},
                                                               {'\\', "D:/BDMV\\", "D:/BDMV"},
                                                               {'\\', "\\\\a\\b\\", "\\\\a\\b\\"},
                                                               {'\\', "//a/b/c/", "//a/b/c"},
                                                               {'\\', "\\", "\\"}};
    for (const auto& [native, given, path] : rows) {
        EXPECT_EQ(scan::withoutTrailingSeparators(QLatin1StringView(given), QLatin1Char(native)),
                  QLatin1StringView(path))
            << given;
    }
}

}  // namespace
