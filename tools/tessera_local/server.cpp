#include "tools/tessera_local/server.h"

#include "tools/tessera_local/client_connection.h"
#include "tools/tessera_local/configuration_page.h"
#include "tools/tessera_local/replies.h"
#include "tools/tessera_local/whole_number.h"

#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <span>
#include <string_view>

namespace tessera_local {

namespace {

constexpr char kPlainText[] = "text/plain; charset=utf-8";
constexpr char kJson[] = "application/json";
constexpr char kUserPath[] = "/api/tessera/user/";
constexpr char kSha256Header[] = "X-Platterscope-Package-SHA256";
constexpr char kContentEncoding[] = "Content-Encoding";
// The name that hides Content-Encoding from the HTTP library. A client cannot send a name with a ':'.
constexpr char kSetAsideEncoding[] = "Encoding:as-sent";
constexpr std::size_t kWorkers = 16;
constexpr int kBacklog = 128;
constexpr std::size_t kLoggedPathBytes = 200;

void refuse(httplib::Response& response, int status, const std::string& text)
{
    response.status = status;
    response.set_content(text, kPlainText);
}

void answerJson(httplib::Response& response, const std::string& document)
{
    response.status = 200;
    response.set_content(document, kJson);
}

std::string basePath(DiscKind kind)
{
    return std::string("/api/tessera/") + kindName(kind);
}

bool isPage(const std::string& path)
{
    return path == formPath(DiscKind::Dvd) || path == formPath(DiscKind::Bluray);
}

// The methods of a path, as the header Allow lists them; nullopt for an unknown path.
std::optional<std::string> methodsOf(const std::string& path)
{
    if (path == kUserPath) { return "POST"; }
    if (isPage(path)) { return "GET, POST"; }
    for (const DiscKind kind : {DiscKind::Dvd, DiscKind::Bluray}) {
        if (path == basePath(kind) + "/find/" || path == basePath(kind) + "/add/") { return "POST"; }
        if (path == basePath(kind) + "/configurations/get/") { return "GET"; }
    }
    return std::nullopt;
}

std::span<const std::uint8_t> bytesOf(const std::string& text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// Compares in a time that does not depend on how much of the key is right.
bool isSameKey(const std::string& sent, const std::string& key)
{
    if (sent.size() != key.size()) { return false; }
    unsigned difference = 0;
    for (std::size_t i = 0; i < key.size(); ++i) {
        difference |= static_cast<unsigned>(sent[i] ^ key[i]);
    }
    return difference == 0;
}

// The reason to refuse an upload by its headers, if there is one.
std::optional<Refusal> checkUploadHeaders(DiscKind kind, const httplib::Request& request,
                                          std::uint64_t maximumBytes)
{
    const std::string type = std::string("application/vnd.platterscope.") + kindName(kind) + "-title-package";
    if (request.get_header_value("Content-Type") != type) {
        return Refusal{415, "The content type must be " + type + "."};
    }
    if (request.get_header_value(kSetAsideEncoding) != "deflate") {
        return Refusal{415, "The title package must be sent with the content encoding deflate."};
    }
    if (request.has_header("Transfer-Encoding") || request.get_header_value_count("Content-Length") != 1) {
        return Refusal{411, "The length of the upload must be sent with it, once."};
    }
    const auto length = wholeNumber<std::uint64_t>(request.get_header_value("Content-Length"));
    if (!length || *length > maximumBytes) { return Refusal{413, "The uploaded package is too large."}; }
    return std::nullopt;
}

// A path for a line of the log: short, without characters that a terminal would act on.
std::string loggable(const std::string& path)
{
    std::string text = path.substr(0, kLoggedPathBytes);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c <= ' ' || c >= 0x7F; }, '?');
    return text.empty() ? "-" : text;
}

}  // namespace

Server::Server(Store& store, std::vector<User> users, std::string latestVersion, const Limits& limits)
    : m_store(store)
    , m_users(std::move(users))
    , m_latestVersion(std::move(latestVersion))
    , m_limits(limits)
    , m_stopDescriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    // The library deletes the queue.
    new_task_queue = [] { return std::make_unique<httplib::ThreadPool>(kWorkers).release(); };
    // The library would also set SO_REUSEPORT, with which two services share a port without noticing.
    set_socket_options([](socket_t socket) {
        const int on = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    });
    addHandlers();
    addRoutes();
}

Server::~Server()
{
    ::close(m_stopDescriptor);
}

int Server::bind(const std::string& host, int port)
{
    m_host = host;
    const int bound = port == 0 ? bind_to_any_port(host) : bind_to_port(host, port) ? port : -1;
    // The library's backlog is 5 connections; the next client would wait for a whole second.
    if (bound > 0) { ::listen(svr_sock_, kBacklog); }
    return bound;
}

bool Server::serve()
{
    return listen_after_bind();
}

void Server::stop()
{
    ::eventfd_write(m_stopDescriptor, 1);
    httplib::Server::stop();
}

// The library would inflate a body with a Content-Encoding before a handler sees it. Version 0.11.4 accepts a stream
// that is cut short (without its last bytes or its checksum), accepts gzip as deflate, and does not limit the result.
// So this function renames the header before the library reads it: the handler gets the body as it was sent, and
// checkPackageUpload() inflates it.
bool Server::process_and_close_socket(socket_t socket)
{
    ClientConnection connection(socket, m_stopDescriptor, m_limits.headerBytes, m_limits.headerTime);
    const auto afterHeaders = [&](httplib::Request& request) {
        if (isPage(request.path)) {
            connection.allow(m_limits.formBytes + 1, m_limits.formTime);  // one more shows it is too long
        } else {
            connection.allow(m_limits.bodyBytes, m_limits.bodyTime);
        }
        const std::string encoding = request.get_header_value(kContentEncoding);
        request.headers.erase(kContentEncoding);
        request.headers.emplace(kSetAsideEncoding, encoding);
        request.ranges.clear();  // replies are short and always whole
    };
    // One request per connection, so that the unread rest of a refused upload is not parsed as the next request.
    const bool closeAfterwards = true;
    bool isClosed = false;
    return process_request(connection, closeAfterwards, isClosed, afterHeaders);
}

const User* Server::userOf(const httplib::Request& request) const
{
    const std::string sent = request.get_header_value("apiKey");
    const User* found = nullptr;
    for (const User& user : m_users) {
        if (isSameKey(sent, user.key)) { found = &user; }
    }
    return found;
}

// Checks path, method and key before the body is read. If it returns true, `response` has the refusal.
bool Server::isRefused(const httplib::Request& request, httplib::Response& response) const
{
    const std::optional<std::string> methods = methodsOf(request.path);
    if (!methods) {
        refuse(response, 404, "There is nothing at this address.");
    } else if (methods->find(request.method) == std::string::npos) {  // always a whole method's name
        response.set_header("Allow", *methods);
        refuse(response, 405, "This address takes " + *methods + " requests only.");
    } else if (isPage(request.path) || userOf(request) != nullptr) {
        return false;  // page_routes.cpp checks the pages: a browser has no key
    } else if (request.get_header_value("apiKey").empty()) {
        refuse(response, 401, "An API key is needed.");
    } else {
        refuse(response, 403, "This API key is not known.");
    }
    return true;
}

void Server::answerConfigurations(DiscKind kind, const httplib::Request& request, httplib::Response& response)
{
    const auto discId = wholeNumber<std::int64_t>(request.get_param_value("discId"));
    if (!discId) {
        refuse(response, 400, "The disc must be given as discId=NUMBER.");
    } else if (!m_store.hasDisc(kind, *discId)) {
        refuse(response, 404, std::string("There is no ") + kindTitle(kind) + " with this number.");
    } else {
        answerJson(response, configurationsReply(m_store.configurations(*discId)));
    }
}

void Server::answerFind(DiscKind kind, const std::string& sha256, httplib::Response& response)
{
    const std::optional<std::int64_t> discId = m_store.findDisc(kind, sha256);
    answerJson(response, findReply(discId, m_store.configurations(discId.value_or(0))));  // ids start at 1
}

// Receives and checks an upload. If it returns false, `response` has the refusal.
bool Server::takePackage(DiscKind kind, const httplib::Request& request, httplib::Response& response,
                         const httplib::ContentReader& reader, std::string& deflated) const
{
    std::optional<Refusal> refusal = checkUploadHeaders(kind, request, m_limits.bodyBytes);
    if (!refusal) {
        const auto append = [&deflated](const char* bytes, std::size_t size) {
            deflated.append(bytes, size);
            return true;
        };
        if (!reader(append)) { refusal = Refusal{400, "The upload was cut short or took too long."}; }
    }
    if (!refusal) {
        refusal = checkPackageUpload(bytesOf(deflated), kind, request.get_header_value(kSha256Header),
                                     m_limits.packageBytes);
    }
    if (refusal) { refuse(response, refusal->status, refusal->text); }
    return !refusal;
}

void Server::addPackageRoutes(DiscKind kind, const std::string& base)
{
    using namespace httplib;
    Post(base + "/find/",
         [this, kind](const Request& request, Response& response, const ContentReader& reader) {
             std::string deflated;
             if (takePackage(kind, request, response, reader, deflated)) {
                 answerFind(kind, request.get_header_value(kSha256Header), response);
             }
         });
    Post(base + "/add/", [this, kind](const Request& request, Response& response,
                                      const ContentReader& reader) {
        std::string deflated;
        if (!takePackage(kind, request, response, reader, deflated)) { return; }
        const auto id = m_store.addDisc(kind, request.get_header_value(kSha256Header), bytesOf(deflated));
        response.status = 200;
        response.set_content(std::to_string(id), kPlainText);  // digits only, without a line break
    });
}

void Server::addRoutes()
{
    using namespace httplib;
    // With a content reader, although it reads nothing: without one the library would hold the whole body.
    Post(kUserPath, [this](const Request& request, Response& response, const ContentReader& /*reader*/) {
        answerJson(response, userReply(*userOf(request), m_latestVersion));
    });
    for (const DiscKind kind : {DiscKind::Dvd, DiscKind::Bluray}) {
        addPackageRoutes(kind, basePath(kind));
        addPageRoutes(kind);
        Get(basePath(kind) + "/configurations/get/",
            [this, kind](const Request& request, Response& response) {
                answerConfigurations(kind, request, response);
            });
    }
}

void Server::addHandlers()
{
    using namespace httplib;
    set_pre_routing_handler([this](const Request& request, Response& response) {
        return isRefused(request, response) ? HandlerResponse::Handled : HandlerResponse::Unhandled;
    });
    // If the client waits for 100-continue, refuses it before it sends the body.
    set_expect_100_continue_handler([this](const Request& request, Response& response) {
        return isRefused(request, response) ? response.status : 100;
    });
    set_exception_handler([](const Request& /*request*/, Response& response, std::exception_ptr error) {
        refuse(response, 500, "The service has a problem of its own; its log says more.");
        try {
            std::rethrow_exception(std::move(error));
        } catch (const std::exception& exception) {
            std::fprintf(stderr, "tessera_local: error: %s\n", exception.what());
        }
    });
    // Adds a text to the refusals of the library.
    set_error_handler([](const Request& /*request*/, Response& response) {
        if (response.body.empty()) { response.set_content("The request cannot be understood.", kPlainText); }
    });
    set_logger([](const Request& request, const Response& response) {
        std::fprintf(stderr, "tessera_local: %s %s %d\n", loggable(request.method).c_str(),
                     loggable(request.path).c_str(), response.status);
    });
}

}  // namespace tessera_local
