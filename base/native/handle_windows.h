// Owners of handles and memory of the Windows API, and its error number.
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>

namespace native {

struct HandleCloser {
    using pointer = HANDLE;
    void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};
using Handle = std::unique_ptr<HANDLE, HandleCloser>;

// Owns the result of CreateFileW or CreateNamedPipeW; null on failure. GetLastError() stays as it is.
[[nodiscard]] inline Handle handleOrNull(HANDLE handle)
{
    return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

// GetLastError(), but never 0.
[[nodiscard]] inline std::uint32_t lastError()
{
    const DWORD error = ::GetLastError();
    return error != ERROR_SUCCESS ? error : ERROR_GEN_FAILURE;
}

// Memory that the system has allocated by LocalAlloc.
struct LocalFreer {
    void operator()(void* memory) const { ::LocalFree(memory); }
};
template <typename Type>
using LocalMemory = std::unique_ptr<Type, LocalFreer>;

}  // namespace native
