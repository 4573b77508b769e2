#include "base/native/handle_windows.h"
#include "monitor/helper_client.h"
#include "monitor/helper_endpoint_windows.h"

#include <algorithm>
#include <array>
#include <limits>

namespace monitor {

struct HelperClient::Native {
    native::Handle pipe;
    native::Handle stopEvent;
    native::Handle parent;
};

HelperClient::HelperClient()
    : m_native(std::make_unique<Native>())
{}

HelperClient::~HelperClient() = default;

std::uint32_t HelperClient::connect(const std::string& pipe, const std::string& stopEvent,
                                    std::uint64_t parentProcessId)
{
    if (parentProcessId > std::numeric_limits<DWORD>::max()) { return ERROR_INVALID_PARAMETER; }
    m_native->parent.reset(::OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(parentProcessId)));
    if (!m_native->parent) { return native::lastError(); }
    m_native->stopEvent.reset(::OpenEventW(SYNCHRONIZE, FALSE, native::wideText(stopEvent).c_str()));
    if (!m_native->stopEvent) { return native::lastError(); }
    // Anonymous: the server of the pipe must not impersonate the helper, which has more rights.
    constexpr DWORD kFlags = SECURITY_SQOS_PRESENT | SECURITY_ANONYMOUS;
    m_native->pipe = native::handleOrNull(
        ::CreateFileW(pipePath(pipe).c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, kFlags, nullptr));
    return m_native->pipe ? 0 : native::lastError();
}

bool HelperClient::write(std::string_view bytes)
{
    while (!bytes.empty()) {
        const auto size = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), MAXLONG));
        DWORD count = 0;
        if (::WriteFile(m_native->pipe.get(), bytes.data(), size, &count, nullptr) == FALSE) { return false; }
        bytes.remove_prefix(count);
    }
    return true;
}

void HelperClient::waitForStop()
{
    const std::array handles = {m_native->stopEvent.get(), m_native->parent.get()};
    ::WaitForMultipleObjects(static_cast<DWORD>(handles.size()), handles.data(), FALSE, INFINITE);
}

}  // namespace monitor
