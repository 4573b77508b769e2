// The service's HTTP server: its addresses, the check of the key, and the replies. The manual page
// packaging/tessera_local.1 describes the requests.
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

// Limits of one request.
struct Limits {
    std::uint64_t headerBytes = 64 * 1024;
    std::chrono::milliseconds headerTime{10'000};
    std::uint64_t bodyBytes = std::uint64_t{256} << 20;  // deflated; SQLite holds at most 10^9 in one value
    std::chrono::milliseconds bodyTime{60'000};          // to receive the body and send the reply
    std::uint64_t packageBytes = kMaximumPackageBytes;   // inflated
    // Of a form. Anybody may send one, so it gets no more time than headers; otherwise a few clients could occupy all
    // workers.
    std::uint64_t formBytes = std::uint64_t{4} << 20;
    std::chrono::milliseconds formTime{10'000};
};

class Server final : private httplib::Server {
public:
    // `store` must outlive the server. `latestVersion` may be empty.
    Server(Store& store, std::vector<User> users, std::string latestVersion, const Limits& limits = {});
    ~Server() override;

    // Binds to the port, or to any free one if it is 0, and returns its number; returns -1 on failure. The web pages
    // accept the host name `host`, "localhost" and IP addresses.
    int bind(const std::string& host, int port);

    // Serves until stop() is called (returns true) or listening fails (returns false). Call bind() first.
    bool serve();

    // Whether serve() is running. Before that stop() has no effect.
    bool isServing() const { return is_running(); }

    // Ends serve() from another thread. Drops the connections that wait for their client; finishes the replies that
    // have begun.
    void stop();

private:
    // Called by the library on a pool thread for each accepted connection.
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
