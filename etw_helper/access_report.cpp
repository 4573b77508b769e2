#include "etw_helper/access_report.h"

#include "base/native/utf16_windows.h"

#include <utility>

namespace etw_helper {

using monitor::MessageKind;

namespace {

constexpr std::uint32_t kFirstFailure = 0x8000'0000;
constexpr std::uint32_t kReparse = 0x104;  // the open is repeated under another name

bool isOpened(std::uint32_t status)
{
    return status < kFirstFailure && status != kReparse;
}

}  // namespace

AccessReport::AccessReport(WatchedRoot root, Sink sink)
    : m_root(std::move(root))
    , m_sink(std::move(sink))
{}

void AccessReport::openBegins(std::uint64_t request, std::uint64_t fileObject, std::wstring_view devicePath)
{
    m_begun.erase(request);  // a number in use again: the end of its old request was missed
    const auto path = m_root.dosPath(devicePath);
    if (!path) { return; }
    // Opens whose end was missed must not pile up.
    if (m_begun.size() >= kMaximumFiles) { m_begun.clear(); }
    m_begun[request] = {fileObject, native::utf8Text(*path)};
}

void AccessReport::requestEnds(std::uint64_t request, std::uint32_t status)
{
    auto begun = m_begun.extract(request);
    if (begun.empty() || !isOpened(status)) { return; }
    lastHandleCloses(begun.mapped().fileObject);  // a number in use again: its old file is closed
    if (m_open.size() >= kMaximumFiles) {
        fail("The Windows ETW helper cannot follow so many open files.");
        return;
    }
    send(MessageKind::Opened, begun.mapped().path);
    m_open.emplace(begun.mapped().fileObject, std::move(begun.mapped().path));
}

void AccessReport::lastHandleCloses(std::uint64_t fileObject)
{
    const auto closed = m_open.extract(fileObject);
    if (!closed.empty()) { send(MessageKind::Closed, closed.mapped()); }
}

void AccessReport::fail(const std::string& sentence)
{
    send(MessageKind::Failed, sentence);
    m_hasFailed = true;
}

void AccessReport::send(MessageKind kind, const std::string& payload)
{
    if (!m_hasFailed) { m_sink(kind, payload); }
}

}  // namespace etw_helper
