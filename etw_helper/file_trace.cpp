#include "etw_helper/file_trace.h"

#include <tdh.h>

#include <cstdint>
#include <system_error>
#include <vector>

namespace etw_helper {

namespace {

// Event numbers of the file provider, and the properties that are read.
constexpr USHORT kOpenBegins = 12;   // "Create": Irp, FileObject, FileName
constexpr USHORT kLastClose = 13;    // "Cleanup": FileObject
constexpr USHORT kRequestEnds = 24;  // "OperationEnd": Irp, Status

// The provider of the session's own event for lost events.
constexpr GUID kLostEvents = {0x6A399AE0, 0x4BC6, 0x4DE9, {0x87, 0x0B, 0x36, 0x57, 0xF8, 0x94, 0x7E, 0x7E}};

std::string sentence(const char* what, DWORD error)
{
    return std::string("The Windows ETW helper could not ") + what + " (error " + std::to_string(error) +
           ").";
}

// Reads properties by name, because their order and sizes differ between the versions of an event.
class EventProperties {
public:
    explicit EventProperties(EVENT_RECORD& event)
        : m_event(event)
    {}

    // A number of 4 or 8 bytes; 0 on failure.
    std::uint64_t number(const wchar_t* name)
    {
        std::uint64_t value = 0;
        const std::vector<BYTE> bytes = read(name);
        for (std::size_t i = bytes.size(); i > 0; --i) {
            value = value << 8U | bytes[i - 1];
        }
        return value;
    }

    std::wstring text(const wchar_t* name)
    {
        std::wstring text;
        const std::vector<BYTE> bytes = read(name);
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
            text += static_cast<wchar_t>(bytes[i] | bytes[i + 1] << 8);
        }
        return text.substr(0, text.find(L'\0'));
    }

    // The error of the first property that could not be read.
    [[nodiscard]] DWORD error() const { return m_error; }

private:
    std::vector<BYTE> read(const wchar_t* name)
    {
        PROPERTY_DATA_DESCRIPTOR property = {};
        property.PropertyName = reinterpret_cast<std::uintptr_t>(name);
        property.ArrayIndex = ULONG_MAX;
        ULONG size = 0;
        ULONG error = ::TdhGetPropertySize(&m_event, 0, nullptr, 1, &property, &size);
        std::vector<BYTE> bytes(size);
        if (error == ERROR_SUCCESS) {
            error = ::TdhGetProperty(&m_event, 0, nullptr, 1, &property, size, bytes.data());
        }
        if (error == ERROR_SUCCESS) { return bytes; }
        if (m_error == ERROR_SUCCESS) { m_error = error; }
        return {};
    }

    EVENT_RECORD& m_event;
    DWORD m_error = ERROR_SUCCESS;
};

}  // namespace

FileTrace::FileTrace(AccessReport& report)
    : m_report(report)
{}

FileTrace::~FileTrace()
{
    stop();
}

std::optional<std::string> FileTrace::start()
{
    if (const DWORD error = m_session.start(); error != ERROR_SUCCESS) {
        return sentence("start its trace session", error);
    }
    std::wstring name = m_session.name();
    EVENT_TRACE_LOGFILEW source = {};
    source.LoggerName = name.data();
    source.ProcessTraceMode = PROCESS_TRACE_MODE_REAL_TIME | PROCESS_TRACE_MODE_EVENT_RECORD;
    source.EventRecordCallback = onEvent;
    source.Context = this;
    m_reader = ::OpenTraceW(&source);
    if (m_reader == INVALID_PROCESSTRACE_HANDLE) {
        return sentence("open its trace session", ::GetLastError());
    }
    try {
        m_thread = std::thread(&FileTrace::run, this);
    } catch (const std::system_error& error) {
        return sentence("start a thread", static_cast<DWORD>(error.code().value()));
    }
    return std::nullopt;
}

void FileTrace::stop()
{
    m_isStopping = true;
    m_session.stop();
    if (m_reader != INVALID_PROCESSTRACE_HANDLE) { ::CloseTrace(m_reader); }
    m_reader = INVALID_PROCESSTRACE_HANDLE;
    if (m_thread.joinable()) { m_thread.join(); }
}

void FileTrace::run()
{
    TRACEHANDLE reader = m_reader;
    const ULONG error = ::ProcessTrace(&reader, 1, nullptr, nullptr);
    if (!m_isStopping) { m_report.fail(sentence("go on reading its trace session", error)); }
}

void FileTrace::onEvent(EVENT_RECORD* event)
{
    static_cast<FileTrace*>(event->UserContext)->take(*event);
}

void FileTrace::take(EVENT_RECORD& event)
{
    if (m_isStopping) { return; }
    if (::IsEqualGUID(event.EventHeader.ProviderId, kLostEvents)) {
        m_report.fail("The Windows ETW helper has lost file events.");
        return;
    }
    EventProperties properties(event);
    switch (event.EventHeader.EventDescriptor.Id) {
    case kOpenBegins: {
        const std::uint64_t request = properties.number(L"Irp");
        const std::uint64_t fileObject = properties.number(L"FileObject");
        m_report.openBegins(request, fileObject, properties.text(L"FileName"));
        break;
    }
    case kRequestEnds:
        if (!m_report.awaitsRequests()) { return; }
        m_report.requestEnds(properties.number(L"Irp"),
                             static_cast<std::uint32_t>(properties.number(L"Status")));
        break;
    case kLastClose:
        if (!m_report.awaitsCloses()) { return; }
        m_report.lastHandleCloses(properties.number(L"FileObject"));
        break;
    default:
        return;
    }
    if (properties.error() != ERROR_SUCCESS) {
        m_report.fail(sentence("read a file event", properties.error()));
    }
}

}  // namespace etw_helper
