#include "service/disc_requests.h"
#include "tests/service/service_fixture.h"
#include "tests/support/fault_table.h"

#include <QCryptographicHash>

#include <zlib.h>

#include <random>

using namespace Qt::StringLiterals;
using service::DiscKind;
using service::TitlePackage;
using testsupport::RecordedRequest;

namespace {

TitlePackage makePackage(DiscKind kind, const QByteArray& bytes)
{
    return {
        .kind = kind, .bytes = bytes, .sha256 = QCryptographicHash::hash(bytes, QCryptographicHash::Sha256)};
}

// Bytes that do not compress.
QByteArray noise(qsizetype size)
{
    std::minstd_rand generator;
    QByteArray bytes(size, Qt::Uninitialized);
    for (char& byte : bytes) {
        byte = static_cast<char>(generator() >> 8U);
    }
    return bytes;
}

// What the zlib stream `body` holds; an error text of zlib if it is none or anything follows it.
std::string inflated(const std::string& body, std::size_t expectedSize)
{
    std::string bytes(expectedSize + 1, '\0');
    uLongf size = bytes.size();
    uLong consumed = body.size();
    const int result = uncompress2(reinterpret_cast<Bytef*>(bytes.data()), &size,
                                   reinterpret_cast<const Bytef*>(body.data()), &consumed);
    if (result != Z_OK || consumed != body.size()) { return "no zlib stream: " + std::to_string(result); }
    bytes.resize(size);
    return bytes;
}

class DiscRequests : public ServiceTest {
protected:
    const TitlePackage m_package = makePackage(DiscKind::Dvd, "package bytes");
};

}  // namespace

TEST_F(DiscRequests, PostsThePackageDeflatedBesideTheDigestOfItsBytes)
{
    struct Case {
        DiscKind kind;
        bool isAdd;
        QByteArray bytes;
        const char* target;
        const char* contentType;
    };
    const char* const dvdType = "Content-Type: application/vnd.platterscope.dvd-title-package";
    const char* const blurayType = "Content-Type: application/vnd.platterscope.bluray-title-package";
    // The library announces a body of more than 1 MiB first and waits for leave to send it.
    const Case cases[] = {
        {DiscKind::Dvd, false, QByteArray(5000, 'd'), "/api/tessera/dvd/find/", dvdType},
        {DiscKind::Dvd, true, QByteArray(1, '\0'), "/api/tessera/dvd/add/", dvdType},
        {DiscKind::Bluray, false, noise(1'500'000), "/api/tessera/bluray/find/", blurayType},
        {DiscKind::Bluray, true, noise(300), "/api/tessera/bluray/add/", blurayType},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.target);
        const TitlePackage package = makePackage(c.kind, c.bytes);
        m_server.play({.body = c.isAdd ? "1" : "{}"});
        EXPECT_TRUE(c.isAdd ? service::addDisc(package, u"some key"_s).ok
                            : service::findDisc(package, u"some key"_s).ok);
        const RecordedRequest request = m_server.requests().back();
        EXPECT_EQ(request.method, "POST");
        EXPECT_EQ(request.target, c.target);
        const std::string digest = package.sha256.toHex().toStdString();
        EXPECT_EQ(digest.size(), 64U);
        EXPECT_EQ(ownHeaderLines(request),
                  (Strings{"User-Agent: Platterscope/1.2.1", "apiKey: some key", c.contentType,
                           "Content-Encoding: deflate", "X-Platterscope-Package-SHA256: " + digest}));
        EXPECT_EQ(request.header("Content-Length"), std::to_string(request.body.size()));
        EXPECT_EQ(inflated(request.body, static_cast<std::size_t>(c.bytes.size())), c.bytes.toStdString());
    }
    // Level 9 of zlib: 5,000 equal bytes are some 30.
    EXPECT_EQ(m_server.requests()[0].body.substr(0, 2), "\x78\xDA");
}

TEST_F(DiscRequests, IncompletePackagesAreNotSent)
{
    TitlePackage noBytes = m_package;
    noBytes.bytes.clear();
    TitlePackage shortDigest = m_package;
    shortDigest.sha256.chop(1);
    TitlePackage longDigest = m_package;
    longDigest.sha256.append('\0');
    const std::string missing = "Tessera title package request is missing required data.";
    for (const TitlePackage& package : {noBytes, shortDigest, longDigest}) {
        EXPECT_EQ(service::findDisc(package, u"key"_s).errorText.toStdString(), missing);
        EXPECT_EQ(service::addDisc(package, u"key"_s).errorText.toStdString(), missing);
    }
    EXPECT_EQ(service::findDisc(m_package, {}).errorText.toStdString(), missing);
    EXPECT_EQ(service::findDisc(m_package, u"a\nb"_s).errorText.toStdString(),
              "Unable to prepare the Tessera authentication request.");
    EXPECT_TRUE(m_server.requests().empty());
}

TEST_F(DiscRequests, FindTellsKnownFromUnknownDiscs)
{
    struct Case {
        const char* body;
        bool isFound;
        qint64 discId;
    };
    const Case cases[] = {
        {"{}", false, 0},
        {R"( {"Disc ID": null, "Configurations": [{}]} )", false, 0},
        {R"({"disc id": 5})", false, 0},
        {R"({"Disc ID": 0})", true, 0},
        {R"({"Disc ID": 17})", true, 17},
        {R"({"Disc ID": "-9223372036854775808"})", true, std::numeric_limits<qint64>::min()},
    };
    for (const Case& c : cases) {
        m_server.play({.body = c.body});
        const service::FindOutcome outcome = service::findDisc(m_package, u"key"_s);
        EXPECT_TRUE(outcome.ok) << c.body;
        EXPECT_EQ(outcome.reply.isFound, c.isFound) << c.body;
        EXPECT_EQ(outcome.reply.discId, c.discId) << c.body;
        EXPECT_TRUE(outcome.reply.configurations.isEmpty()) << c.body;
    }
}

TEST_F(DiscRequests, FindRefusesOtherReplies)
{
    const char* const bodies[] = {"",
                                  "17",
                                  "[]",
                                  "{",
                                  R"({"Disc ID": ""})",
                                  R"({"Disc ID": 1.5})",
                                  R"({"Disc ID": "1 "})",
                                  R"({"Disc ID": {}})",
                                  R"({"Disc ID": false})"};
    for (const char* const body : bodies) {
        m_server.play({.body = body});
        const service::FindOutcome outcome = service::findDisc(m_package, u"key"_s);
        EXPECT_FALSE(outcome.ok) << body;
        EXPECT_EQ(outcome.errorText.toStdString(), "Tessera returned an invalid find response.") << body;
    }
    testsupport::recordFault("Service: a reply with status 200 that says nothing of use",
                             "refused, in words of the operation", std::size(bodies));
}

TEST_F(DiscRequests, AddTakesOneWholeDecimal)
{
    const std::pair<std::string, qint64> accepted[] = {
        {"12345", 12345}, {"+7", 7}, {"-3", -3}, {"0", 0}, {"9223372036854775807", 9223372036854775807}};
    for (const auto& [body, discId] : accepted) {
        m_server.play({.body = body});
        const service::AddOutcome outcome = service::addDisc(m_package, u"key"_s);
        EXPECT_TRUE(outcome.ok) << body;
        EXPECT_EQ(outcome.discId, discId) << body;
    }
    const std::string refused[] = {"",
                                   "\n",
                                   "5\n",
                                   " 5",
                                   "5.0",
                                   "0x5",
                                   "5 6",
                                   "+-5",
                                   "+",
                                   "-",
                                   std::string("5\0", 2),
                                   "9223372036854775808"};
    for (const std::string& body : refused) {
        m_server.play({.body = body});
        const service::AddOutcome outcome = service::addDisc(m_package, u"key"_s);
        EXPECT_FALSE(outcome.ok) << body;
        EXPECT_EQ(outcome.errorText.toStdString(), "Tessera returned an invalid disc identifier.") << body;
    }
    testsupport::recordFault("Service: a reply with status 200 that says nothing of use",
                             "refused, in words of the operation", std::size(refused));
}

TEST_F(DiscRequests, TransportFailuresKeepTheirText)
{
    m_server.play({.status = 413, .body = "Too large."});
    EXPECT_EQ(service::findDisc(m_package, u"key"_s).errorText.toStdString(), "Too large.");
    m_server.play({.status = 503});
    EXPECT_EQ(service::addDisc(m_package, u"key"_s).errorText.toStdString(), "Tessera returned HTTP 503.");
}

TEST_F(DiscRequests, NewDiscPageIsOnTheServiceInForce)
{
    EXPECT_EQ(service::newDiscUrl(DiscKind::Dvd, 17).toStdString(),
              m_server.url() + "/tessera/dvd/new/?uid=17");
    EXPECT_EQ(service::newDiscUrl(DiscKind::Bluray, -1).toStdString(),
              m_server.url() + "/tessera/bluray/new/?uid=-1");
    EXPECT_TRUE(service::newDiscUrl(DiscKind::Dvd, 0).isEmpty());
}
