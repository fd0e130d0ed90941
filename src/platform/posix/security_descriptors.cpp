#include <cstdlib>
#include <cstring>

#include "platform/posix/fault_check.h"
#include "platform/posix/security_identifiers.h"
#include "platform/posix/windows_calls.h"

using namespace posix_layer;

namespace {

constexpr std::uint32_t kAuthenticatedUserRid = 11;
constexpr WORD kDaclPresent = 0x4;

// The layout of an access list: this, and behind it an entry for each grant, with its SID at its end.
struct ListHeader {
    BYTE revision, padding;
    WORD size, count, padding2;
};
struct EntryHeader {
    BYTE type, flags;
    WORD size;
    DWORD mask;
};
constexpr BYTE kListRevision = 2;
constexpr BYTE kAllowedType = 0;

std::size_t SidSize(const EXPLICIT_ACCESS_W& entry) {
    const void* const sid = entry.Trustee.ptstrName;
    return SizeOfSid(static_cast<const BYTE*>(sid)[1]);
}

}  // namespace

BOOL CreateWellKnownSid(WELL_KNOWN_SID_TYPE type, PSID, PSID sid, DWORD* size) {
    if (Faulted(__func__)) return FALSE;
    if (type != WinAuthenticatedUserSid) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const SecurityIdentifier value = {1, 1, SECURITY_NT_AUTHORITY, {kAuthenticatedUserRid}};
    const DWORD room = *size;
    *size = static_cast<DWORD>(SizeOfSid(value.count));
    if (room < *size) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    std::memcpy(sid, &value, *size);
    return TRUE;
}

void BuildTrusteeWithSidW(TRUSTEE_W* trustee, PSID sid) {
    *trustee = {};
    trustee->ptstrName = static_cast<LPWSTR>(sid);
}

DWORD SetEntriesInAclW(ULONG count, EXPLICIT_ACCESS_W* entries, PACL oldAcl, PACL* newAcl) {
    if (const auto fault = TakeFault(__func__)) return *fault;
    std::size_t size = sizeof(ListHeader);
    for (ULONG i = 0; i < count; ++i) {
        if (entries[i].grfAccessMode != GRANT_ACCESS || entries[i].Trustee.ptstrName == nullptr) {
            return ERROR_INVALID_PARAMETER;
        }
        size += sizeof(EntryHeader) + SidSize(entries[i]);
    }
    if (oldAcl != nullptr || size > 0xFFFF) return ERROR_INVALID_PARAMETER;

    auto* const bytes = static_cast<BYTE*>(std::malloc(size));
    if (bytes == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
    const ListHeader list = {kListRevision, 0, static_cast<WORD>(size), static_cast<WORD>(count), 0};
    std::memcpy(bytes, &list, sizeof list);
    BYTE* next = bytes + sizeof list;
    for (ULONG i = 0; i < count; ++i) {
        const std::size_t sidSize = SidSize(entries[i]);
        const EntryHeader entry = {kAllowedType, static_cast<BYTE>(entries[i].grfInheritance),
                                   static_cast<WORD>(sizeof(EntryHeader) + sidSize), entries[i].grfAccessPermissions};
        std::memcpy(next, &entry, sizeof entry);
        std::memcpy(next + sizeof entry, entries[i].Trustee.ptstrName, sidSize);
        next += entry.size;
    }
    *newAcl = reinterpret_cast<PACL>(bytes);
    return ERROR_SUCCESS;
}

BOOL InitializeSecurityDescriptor(void* descriptor, DWORD revision) {
    if (Faulted(__func__)) return FALSE;
    if (revision != SECURITY_DESCRIPTOR_REVISION) {
        SetLastError(ERROR_UNKNOWN_REVISION);
        return FALSE;
    }
    SECURITY_DESCRIPTOR& value = *static_cast<SECURITY_DESCRIPTOR*>(descriptor);
    value = {};
    value.Revision = static_cast<BYTE>(revision);
    return TRUE;
}

BOOL SetSecurityDescriptorDacl(void* descriptor, BOOL present, PACL acl, BOOL) {
    if (Faulted(__func__)) return FALSE;
    SECURITY_DESCRIPTOR& value = *static_cast<SECURITY_DESCRIPTOR*>(descriptor);
    if (value.Revision != SECURITY_DESCRIPTOR_REVISION) {
        SetLastError(ERROR_UNKNOWN_REVISION);
        return FALSE;
    }
    value.Control = static_cast<WORD>(present ? value.Control | kDaclPresent : value.Control & ~kDaclPresent);
    value.Dacl = present ? acl : nullptr;
    return TRUE;
}

HLOCAL LocalFree(HLOCAL memory) {
    std::free(memory);
    return nullptr;
}
