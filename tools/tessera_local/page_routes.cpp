// The addresses of the web pages. A browser sends no API key. Instead, the host name of a request must be one that no
// foreign name server can map to this address, and a form must come from a page of this service.
#include "tools/tessera_local/configuration_page.h"
#include "tools/tessera_local/server.h"
#include "tools/tessera_local/whole_number.h"

#include <QByteArray>
#include <QString>

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace tessera_local {

namespace {

constexpr char kFormType[] = "application/x-www-form-urlencoded";
constexpr char kAddedByUsername[] = "local";
constexpr std::int64_t kAddedByUid = 1;

std::string lowerCase(const std::string& text)
{
    return QByteArray::fromStdString(text).toLower().toStdString();
}

void setPageHeaders(httplib::Response& response)
{
    response.set_header("Content-Security-Policy", contentSecurityPolicy());
    response.set_header("X-Content-Type-Options", "nosniff");
    // With "no-referrer" a browser would send the origin of the form as "null".
    response.set_header("Referrer-Policy", "same-origin");
    response.set_header("Cache-Control", "no-store");
}

void answerPage(httplib::Response& response, int status, const std::string& html)
{
    response.status = status;
    setPageHeaders(response);
    response.set_content(html, "text/html; charset=utf-8");
}

void refusePage(httplib::Response& response, const Refusal& refusal)
{
    answerPage(response, refusal.status, htmlOf(refusal));
}

// The value of a header in lower case; empty unless the header is there exactly once.
std::string singleHeader(const httplib::Request& request, const char* name)
{
    return request.get_header_value_count(name) == 1 ? lowerCase(request.get_header_value(name)) : "";
}

bool isIpLiteral(int family, const std::string& text)
{
    std::array<unsigned char, sizeof(in6_addr)> address{};
    return ::inet_pton(family, text.c_str(), address.data()) == 1;
}

// Whether the host of "HOST" or "HOST:PORT" is an IP literal, "localhost" or `ownName`.
bool isOwnAuthority(const std::string& authority, const std::string& ownName)
{
    const std::size_t bracket = authority.find(']');
    const std::size_t colon = authority.find(':', bracket == std::string::npos ? 0 : bracket);
    if (colon != std::string::npos && !wholeNumber<std::uint16_t>(authority.substr(colon + 1))) {
        return false;
    }
    const std::string host = authority.substr(0, colon);
    if (host.starts_with('[')) { return isIpLiteral(AF_INET6, host.substr(1, host.size() - 2)); }
    return isIpLiteral(AF_INET, host) || host == "localhost" || host == lowerCase(ownName);
}

// The reason to refuse a request for a page by its headers, if there is one.
std::optional<Refusal> checkPageHeaders(const httplib::Request& request, const std::string& ownName)
{
    const std::string host = singleHeader(request, "Host");
    if (!isOwnAuthority(host, ownName)) {
        return Refusal{
            403, "This service does not answer to this host name. Open the page by the address that the "
                 "service printed when it started."};
    }
    if (request.method != "POST") { return std::nullopt; }
    const std::string foreignForm =
        "Configurations are taken only from the form of this service itself, and the browser ";
    const std::string origin = singleHeader(request, "Origin");
    if (origin != "http://" + host && origin != "https://" + host) {
        return Refusal{403, foreignForm + "did not say that this one comes from there."};
    }
    if (request.has_header("Sec-Fetch-Site") && singleHeader(request, "Sec-Fetch-Site") != "same-origin") {
        return Refusal{403, foreignForm + "said that this one comes from elsewhere."};
    }
    const QString type = QString::fromStdString(singleHeader(request, "Content-Type"));
    if (type.section(u';', 0, 0).trimmed() != QLatin1String(kFormType)) {
        return Refusal{415, std::string("The form must be sent as ") + kFormType + "."};
    }
    return std::nullopt;
}

// Receives the body of a form. Returns the refusal if it has more than `maximumBytes` or does not arrive.
std::optional<Refusal> receiveForm(const httplib::ContentReader& reader, std::uint64_t maximumBytes,
                                   std::string& body)
{
    bool isTooLong = false;
    const auto append = [&](const char* bytes, std::size_t size) {
        isTooLong = size > maximumBytes - body.size();
        if (!isTooLong) { body.append(bytes, size); }
        return !isTooLong;
    };
    if (reader(append)) { return std::nullopt; }
    return isTooLong ? Refusal{413, "The form is too long: leave some of the notes out."}
                     : Refusal{400, "The form was cut short or took too long."};
}

}  // namespace

// The disc of a page. Returns nullopt if the page must not be shown; then `response` has the refusal.
std::optional<std::int64_t> Server::discOfPage(DiscKind kind, const httplib::Request& request,
                                               httplib::Response& response)
{
    std::optional<Refusal> refusal = checkPageHeaders(request, m_host);
    const auto discId = wholeNumber<std::int64_t>(request.get_param_value("uid"));
    if (!refusal && !discId) {
        refusal = Refusal{400, "The disc must be given as uid=NUMBER."};
    } else if (!refusal && !m_store.hasDisc(kind, *discId)) {
        refusal = Refusal{404, std::string("There is no ") + kindTitle(kind) + " with this number."};
    }
    if (!refusal) { return discId; }
    refusePage(response, *refusal);
    return std::nullopt;
}

void Server::showForm(DiscKind kind, const httplib::Request& request, httplib::Response& response)
{
    const std::optional<std::int64_t> discId = discOfPage(kind, request, response);
    if (!discId) { return; }
    FormPage page{.kind = kind, .discId = *discId};
    page.form.addRows();
    if (const auto uid = wholeNumber<std::int64_t>(request.get_param_value("saved"))) {
        const std::vector<Configuration> stored = m_store.configurations(*discId);
        page.isSaved =
            std::any_of(stored.begin(), stored.end(), [&](const auto& each) { return each.uid == *uid; });
    }
    answerPage(response, 200, htmlOf(page));
}

void Server::takeForm(DiscKind kind, const httplib::Request& request, httplib::Response& response,
                      const httplib::ContentReader& reader)
{
    const std::optional<std::int64_t> discId = discOfPage(kind, request, response);
    if (!discId) { return; }
    std::string body;
    if (const auto refusal = receiveForm(reader, m_limits.formBytes, body)) {
        return refusePage(response, *refusal);
    }
    std::optional<ConfigurationForm> form = parseConfigurationForm(body);
    if (!form) {
        const std::string most = std::to_string(kMaximumRows);
        return refusePage(response, {413, "The form has too many titles: " + most + " is the most."});
    }
    FormPage page{.kind = kind, .discId = *discId, .form = std::move(*form)};
    if (page.form.wantsMore) {
        page.focusedRow = page.form.rows.size() + 1;
        page.form.addRows();
        return answerPage(response, 200, htmlOf(page));
    }
    page.problems = problemsOf(page.form, kind);
    if (!page.problems.empty()) { return answerPage(response, 422, htmlOf(page)); }
    saveForm(std::move(page), response);
}

// Saves the form. If that fails, the reply is the page with the values that the user typed.
void Server::saveForm(FormPage page, httplib::Response& response)
{
    std::optional<std::int64_t> uid;
    int status = 409;
    page.failure = u"This disc has as many configurations as this service keeps."_s;
    try {
        uid = m_store.addConfiguration({.discId = page.discId,
                                        .languageCode = page.form.languageCode,
                                        .addedByUsername = QLatin1String(kAddedByUsername),
                                        .addedByUid = kAddedByUid,
                                        .data = configurationData(page.form)});
    } catch (const StoreError& error) {
        std::fprintf(stderr, "tessera_local: error: %s\n", error.what());
        status = 503;
        page.failure = u"The service cannot write to its database now. Try again in a while."_s;
    }
    if (!uid) { return answerPage(response, status, htmlOf(page)); }
    setPageHeaders(response);
    response.set_redirect(formAddress(page.kind, page.discId) + "&saved=" + std::to_string(*uid), 303);
}

void Server::addPageRoutes(DiscKind kind)
{
    using namespace httplib;
    Get(formPath(kind),
        [this, kind](const Request& request, Response& response) { showForm(kind, request, response); });
    // With a content reader, because the library refuses forms of more than 8 KiB without one.
    Post(formPath(kind),
         [this, kind](const Request& request, Response& response, const ContentReader& reader) {
             takeForm(kind, request, response, reader);
         });
}

}  // namespace tessera_local
