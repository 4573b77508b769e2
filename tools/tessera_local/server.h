// The service's HTTP side: the addresses of the wire, who may use them, and what they answer.
// The manual page packaging/tessera_local.1 describes the requests.
#pragma once

#include "tools/tessera_local/configuration_page.h"
#include "tools/tessera_local/options.h"
#include "tools/tessera_local/package_upload.h"
#include "tools/tessera_local/store.h"

#include <httplib.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tessera_local {

// What one request may cost.
struct Limits {
    std::uint64_t headerBytes = 64 * 1024;
    std::chrono::milliseconds headerTime{10'000};
    std::uint64_t bodyBytes = std::uint64_t{256} << 20;  // deflated; SQLite holds at most 10^9 in one value
    std::chrono::milliseconds bodyTime{60'000};          // to receive the body and send the reply
    std::uint64_t packageBytes = kMaximumPackageBytes;   // inflated
    // Of a form, which anybody may send: no more time than for headers, or a few clients could hold all workers.
    std::uint64_t formBytes = std::uint64_t{4} << 20;
    std::chrono::milliseconds formTime{10'000};
};

class Server final : private httplib::Server {
public:
    // `store` must outlive the server. `latestVersion` may be empty.
    Server(Store& store, std::vector<User> users, std::string latestVersion, const Limits& limits = {});
    ~Server() override;

    // Takes the port, or any free one for 0, and gives its number; -1 when that is impossible. The web pages
    // answer to the name `host`, to "localhost" and to IP addresses.
    int bind(const std::string& host, int port);

    // Serves until stop() is called (true) or listening fails (false). Needs a successful bind().
    bool serve();

    // Whether serve() is at work, so that stop() has something to stop.
    bool isServing() const { return is_running(); }

    // Ends serve() from another thread: clients that are waited for are dropped, replies under way are sent.
    void stop();

private:
    // Called on a pool thread for each accepted connection.
    bool process_and_close_socket(socket_t socket) override;

    const User* userOf(const httplib::Request& request) const;
    bool isRefused(const httplib::Request& request, httplib::Response& response) const;
    void answerConfigurations(DiscKind kind, const httplib::Request& request, httplib::Response& response);
    void answerFind(DiscKind kind, const std::string& sha256, httplib::Response& response);
    bool takePackage(DiscKind kind, const httplib::Request& request, httplib::Response& response,
                     const httplib::ContentReader& reader, std::string& deflated) const;
    void addRoutes();
    void addPackageRoutes(DiscKind kind, const std::string& base);
    void addHandlers();

    // The web pages; in page_routes.cpp.
    std::optional<std::int64_t> discOfPage(DiscKind kind, const httplib::Request& request,
                                           httplib::Response& response);
    void showForm(DiscKind kind, const httplib::Request& request, httplib::Response& response);
    void takeForm(DiscKind kind, const httplib::Request& request, httplib::Response& response,
                  const httplib::ContentReader& reader);
    void saveForm(FormPage page, httplib::Response& response);
    void addPageRoutes(DiscKind kind);

    Store& m_store;
    std::vector<User> m_users;
    std::string m_latestVersion;
    Limits m_limits;
    std::string m_host;    // that bind() was given
    int m_stopDescriptor;  // readable once stop() was called
};

}  // namespace tessera_local
