#include "service/service_address.h"

#include <QRegularExpression>
#include <QUrl>

namespace service {

namespace {

constexpr char kVariable[] = "PLATTERSCOPE_SERVICE_URL";

constexpr char kNotAnAddress[] =
    QT_TRANSLATE_NOOP("Messages", "The Tessera service address is not a valid web address.");
constexpr char kNotAnOrigin[] = QT_TRANSLATE_NOOP(
    "Messages", "The Tessera service address must not hold a user name, a path, a query or a fragment.");
constexpr char kNotSecure[] = QT_TRANSLATE_NOOP(
    "Messages", "The Tessera service address must use https; http is allowed for this computer alone.");

ServiceAddress refused(const char* problem)
{
    ServiceAddress address;
    address.problem = problem;
    return address;
}

// The host also names the directory of the key file, so that it must not contain anything with a meaning in a path.
bool isHostName(const QString& host)
{
    static const QRegularExpression labels(QStringLiteral("\\A[a-z0-9_-]+(\\.[a-z0-9_-]+)*\\z"));
    return labels.match(host).hasMatch();
}

bool isIpv6Address(const QString& host)
{
    static const QRegularExpression groups(QStringLiteral("\\A[0-9a-f:.]*:[0-9a-f:.]*\\z"));
    return groups.match(host).hasMatch();
}

// A name that only begins with "127." is no loopback address, and neither is one with a number above 255: the resolver
// would look up both.
bool isLoopbackHost(const QString& host)
{
    static const QRegularExpression ipv4(
        QStringLiteral("\\A127(\\.(25[0-5]|2[0-4][0-9]|1?[0-9]?[0-9])){3}\\z"));
    return host == QLatin1String("localhost") || host == QLatin1String("::1") || ipv4.match(host).hasMatch();
}

}  // namespace

ServiceAddress parseServiceAddress(const QString& text)
{
    const QUrl url(text, QUrl::StrictMode);
    const QString host =
        url.host(QUrl::FullyEncoded).toLower().remove(QLatin1Char('[')).remove(QLatin1Char(']'));
    const bool isIpv6 = isIpv6Address(host);
    if (!url.isValid() || !(isIpv6 || isHostName(host)) || url.port() == 0) { return refused(kNotAnAddress); }
    if (!url.userInfo().isEmpty() || url.hasQuery() || url.hasFragment() ||
        !(url.path().isEmpty() || url.path() == QLatin1String("/"))) {
        return refused(kNotAnOrigin);
    }
    const bool isLoopback = isLoopbackHost(host);
    const bool isHttp = url.scheme() == QLatin1String("http");
    if (!(isHttp && isLoopback) && url.scheme() != QLatin1String("https")) { return refused(kNotSecure); }

    // Built from the checked parts, so that libcurl cannot parse the text in another way.
    ServiceAddress address;
    address.origin =
        url.scheme() + QLatin1String("://") + (isIpv6 ? QLatin1Char('[') + host + QLatin1Char(']') : host);
    if (url.port() > 0) { address.origin += QLatin1Char(':') + QString::number(url.port()); }
    address.host = host;
    address.isLoopback = isLoopback;
    return address;
}

ServiceAddress currentServiceAddress()
{
    const QString chosen = qEnvironmentVariable(kVariable);
    return parseServiceAddress(chosen.isEmpty() ? QStringLiteral(PLATTERSCOPE_SERVICE_URL) : chosen);
}

}  // namespace service
