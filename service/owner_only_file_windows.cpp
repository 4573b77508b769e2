#include "base/native/utf16_windows.h"
#include "service/file_rights_windows.h"
#include "service/owner_only_file.h"

#include <windows.h>
#include <aclapi.h>

#include <algorithm>
#include <array>
#include <random>

namespace service {

namespace {

constexpr DWORD kQuestions = READ_CONTROL | FILE_READ_ATTRIBUTES;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr int kNameAttempts = 16;

OwnerOnlyResult failure(OwnerOnlyStep step, DWORD number)
{
    return {.failed = step, .errorNumber = number};
}

bool isAbsence(DWORD number)
{
    return number == ERROR_FILE_NOT_FOUND || number == ERROR_PATH_NOT_FOUND;
}

std::wstring widePath(const std::string& path)
{
    std::wstring wide = native::wideText(path);
    std::ranges::replace(wide, L'/', L'\\');
    return wide;
}

// Returns null on failure; GetLastError() has the reason.
native::Handle openHandle(const std::wstring& path, DWORD access, DWORD share, DWORD disposition, DWORD flags)
{
    return native::handleOrNull(
        ::CreateFileW(path.c_str(), access, share, nullptr, disposition, flags, nullptr));
}

// Opens a link itself, not its target. Opens directories too, so that the caller can distinguish them from files.
native::Handle openFile(const std::wstring& path, DWORD access, DWORD share,
                        DWORD disposition = OPEN_EXISTING)
{
    return openHandle(path, access, share, disposition,
                      FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS);
}

native::Handle openDirectory(const std::wstring& path)
{
    return openHandle(path, kQuestions, kShareAll, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
}

// Returns 0 on failure; a plain file has at least one attribute.
DWORD attributesOf(HANDLE file)
{
    BY_HANDLE_FILE_INFORMATION information = {};
    return ::GetFileInformationByHandle(file, &information) != FALSE ? information.dwFileAttributes : 0;
}

bool isPlain(DWORD attributes)
{
    return attributes != 0 && (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) == 0;
}

bool isOwnerOnlyFileOfUser(HANDLE file)
{
    if (::GetFileType(file) != FILE_TYPE_DISK || !isPlain(attributesOf(file))) { return false; }
    const FileRights rights(file);
    return OwnIds().contain(rights.owner()) && !rights.giveOthers(kAnyAccess);
}

OwnerOnlyResult restrictToOwner(const std::wstring& path)
{
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR memory = nullptr;
    const DWORD queried = ::GetNamedSecurityInfoW(path.c_str(), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION,
                                                  &owner, nullptr, nullptr, nullptr, &memory);
    const native::LocalMemory<void> descriptor(memory);
    if (isAbsence(queried)) { return failure(OwnerOnlyStep::Absent, queried); }
    if (queried != ERROR_SUCCESS || owner == nullptr) { return failure(OwnerOnlyStep::Owner, queried); }
    if (!OwnIds().contain(owner)) { return failure(OwnerOnlyStep::Restrict, ERROR_ACCESS_DENIED); }
    const DWORD set = setOwnerOnlyList(path, owner, NO_INHERITANCE);
    return set == ERROR_SUCCESS ? OwnerOnlyResult() : failure(OwnerOnlyStep::Restrict, set);
}

OwnerOnlyResult narrow(const std::wstring& path)
{
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        const DWORD error = ::GetLastError();
        return failure(isAbsence(error) ? OwnerOnlyStep::Absent : OwnerOnlyStep::Owner, error);
    }
    if (!isPlain(attributes)) { return failure(OwnerOnlyStep::NotPlain, 0); }
    return restrictToOwner(path);
}

// Returns the error number, 0 on success.
DWORD readAtMost(HANDLE file, std::size_t limit, std::string& content)
{
    std::array<char, 4096> chunk = {};
    for (;;) {
        DWORD count = 0;
        if (::ReadFile(file, chunk.data(), chunk.size(), &count, nullptr) == FALSE) {
            return ::GetLastError();
        }
        if (count == 0) { return ERROR_SUCCESS; }
        if (count > limit - content.size()) { return ERROR_FILE_TOO_LARGE; }
        content.append(chunk.data(), count);
    }
}

bool writeAll(HANDLE file, const std::string& content)
{
    std::size_t written = 0;
    while (written < content.size()) {
        DWORD count = 0;
        const auto rest = static_cast<DWORD>(std::min<std::size_t>(content.size() - written, MAXLONG));
        if (::WriteFile(file, content.data() + written, rest, &count, nullptr) == FALSE) { return false; }
        written += count;
    }
    return ::FlushFileBuffers(file) != FALSE;
}

// Creates a new file in the same directory as `path` that cannot be opened a second time while it is open. Null on
// failure.
native::Handle createBeside(const std::wstring& path, std::wstring& name)
{
    std::random_device random;
    native::Handle file;
    for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
        name = path + L'.' + std::to_wstring(random());
        file = openFile(name, GENERIC_WRITE | READ_CONTROL, 0, CREATE_NEW);
        if (file || ::GetLastError() != ERROR_FILE_EXISTS) { break; }
    }
    return file;
}

// Restricts the new file before it writes to it.
OwnerOnlyResult fill(HANDLE file, const std::wstring& name, const std::string& content)
{
    const OwnerOnlyResult restricted = restrictToOwner(name);
    if (!restricted.ok()) { return restricted; }
    if (!isOwnerOnlyFileOfUser(file)) { return failure(OwnerOnlyStep::Restrict, ERROR_ACCESS_DENIED); }
    if (!writeAll(file, content)) { return failure(OwnerOnlyStep::Write, ::GetLastError()); }
    return {};
}

bool createDirectory(const std::wstring& path)
{
    const OwnIds ids;
    if (ids.owner() == nullptr) { return false; }
    DWORD error = ERROR_SUCCESS;
    const AccessList list = ownerOnlyList(ids.owner(), SUB_CONTAINERS_AND_OBJECTS_INHERIT, error);
    SECURITY_DESCRIPTOR descriptor = {};
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, &descriptor, FALSE};
    return list && ::InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) != FALSE &&
           ::SetSecurityDescriptorDacl(&descriptor, TRUE, list.get(), FALSE) != FALSE &&
           ::SetSecurityDescriptorControl(&descriptor, SE_DACL_PROTECTED, SE_DACL_PROTECTED) != FALSE &&
           ::CreateDirectoryW(path.c_str(), &attributes) != FALSE;
}

}  // namespace

bool usesWindowsErrorNumbers()
{
    return true;
}

OwnerOnlyResult readOwnerOnlyFile(const std::string& path, std::size_t limit, std::string& content)
{
    content.clear();
    const std::wstring name = widePath(path);
    const OwnerOnlyResult narrowed = narrow(name);
    if (!narrowed.ok()) { return narrowed; }
    const native::Handle file = openFile(name, GENERIC_READ, FILE_SHARE_READ);
    if (!file) { return failure(OwnerOnlyStep::Read, ::GetLastError()); }
    // Another file can have taken the name since, or the file system has no access lists.
    if (!isOwnerOnlyFileOfUser(file.get())) { return failure(OwnerOnlyStep::Restrict, ERROR_ACCESS_DENIED); }
    const DWORD error = readAtMost(file.get(), limit, content);
    if (error != ERROR_SUCCESS) {
        content.clear();
        return failure(OwnerOnlyStep::Read, error);
    }
    return {};
}

OwnerOnlyResult replaceOwnerOnlyFile(const std::string& path, const std::string& content)
{
    const std::wstring name = widePath(path);
    std::wstring temporary;
    native::Handle file = createBeside(name, temporary);
    if (!file) { return failure(OwnerOnlyStep::Write, ::GetLastError()); }
    OwnerOnlyResult result = fill(file.get(), temporary, content);
    file.reset();
    if (result.ok() && ::MoveFileExW(temporary.c_str(), name.c_str(),
                                     MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == FALSE) {
        result = failure(OwnerOnlyStep::Write, ::GetLastError());
    }
    if (!result.ok()) { ::DeleteFileW(temporary.c_str()); }
    return result;
}

bool makeOwnerOnlyDirectory(const std::string& path)
{
    const std::wstring name = widePath(path);
    if (createDirectory(name)) { return true; }
    const native::Handle directory = openDirectory(name);
    if (!directory || (attributesOf(directory.get()) & FILE_ATTRIBUTE_DIRECTORY) == 0) { return false; }
    const FileRights rights(directory.get());
    if (!OwnIds().contain(rights.owner()) || !rights.giveOthers(kDirectoryWrite)) { return true; }
    return setOwnerOnlyList(name, rights.owner(), SUB_CONTAINERS_AND_OBJECTS_INHERIT) == ERROR_SUCCESS;
}

bool isOwnerOnly(const std::string& path)
{
    const std::wstring name = widePath(path);
    const native::Handle file = openFile(name, kQuestions, kShareAll);
    if (!file) { return isAbsence(::GetLastError()); }
    const native::Handle directory = openDirectory(name.substr(0, name.find_last_of(L'\\') + 1));
    if (!directory || !isOwnerOnlyFileOfUser(file.get())) { return false; }
    const FileRights rights(directory.get());
    const bool isTrusted =
        rights.owner() != nullptr && (OwnIds().contain(rights.owner()) || isOfTheSystem(rights.owner()));
    return isTrusted && !rights.giveOthers(kDirectoryWrite);
}

}  // namespace service
