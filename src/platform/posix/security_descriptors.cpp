// Only the revision of a descriptor counts here: a pipe is its user's alone anyway.

#include <cstdlib>

#include "platform/posix/fault_check.h"
#include "platform/posix/windows_calls.h"

using namespace posix_layer;

namespace {

BOOL FinishForRevision(DWORD revision) {
    if (revision == SECURITY_DESCRIPTOR_REVISION) return TRUE;
    SetLastError(ERROR_UNKNOWN_REVISION);
    return FALSE;
}

}  // namespace

BOOL CreateWellKnownSid(WELL_KNOWN_SID_TYPE, PSID, PSID, DWORD*) {
    return !Faulted(__func__);
}

void BuildTrusteeWithSidW(TRUSTEE_W* trustee, PSID sid) {
    *trustee = {};
    trustee->ptstrName = static_cast<LPWSTR>(sid);
}

DWORD SetEntriesInAclW(ULONG, EXPLICIT_ACCESS_W*, PACL, PACL* newAcl) {
    if (const auto fault = TakeFault(__func__)) return *fault;
    *newAcl = static_cast<PACL>(std::malloc(1));
    return *newAcl == nullptr ? ERROR_NOT_ENOUGH_MEMORY : ERROR_SUCCESS;
}

BOOL InitializeSecurityDescriptor(void* descriptor, DWORD revision) {
    if (Faulted(__func__)) return FALSE;
    static_cast<SECURITY_DESCRIPTOR*>(descriptor)->Revision = static_cast<BYTE>(revision);
    return FinishForRevision(revision);
}

BOOL SetSecurityDescriptorDacl(void* descriptor, BOOL, PACL acl, BOOL) {
    if (Faulted(__func__)) return FALSE;
    SECURITY_DESCRIPTOR& value = *static_cast<SECURITY_DESCRIPTOR*>(descriptor);
    value.Dacl = acl;
    return FinishForRevision(value.Revision);
}

HLOCAL LocalFree(HLOCAL memory) {
    std::free(memory);
    return nullptr;
}
