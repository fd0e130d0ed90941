#include "pipe/pipe_security.h"

#include "diagnostics/last_error.h"

PipeSecurity::PipeSecurity() {
    m_Attributes.nLength = sizeof m_Attributes;
    m_Attributes.lpSecurityDescriptor = &m_Descriptor;
    m_Attributes.bInheritHandle = FALSE;
    // All zero is revision 0, which the platform refuses.
    if (!Build()) m_Descriptor = {};
}

bool PipeSecurity::Build() {
    alignas(DWORD) BYTE sid[SECURITY_MAX_SID_SIZE];
    DWORD sidSize = sizeof sid;
    if (!CreateWellKnownSid(WinAuthenticatedUserSid, nullptr, sid, &sidSize)) {
        ReportLastError("Failed to create SID.");
        return false;
    }

    EXPLICIT_ACCESS_W entry = {};
    entry.grfAccessPermissions = GENERIC_READ | GENERIC_WRITE;
    entry.grfAccessMode = GRANT_ACCESS;
    entry.grfInheritance = NO_INHERITANCE;
    BuildTrusteeWithSidW(&entry.Trustee, sid);
    const DWORD aclError = SetEntriesInAclW(1, &entry, nullptr, m_Acl.Receive());
    if (aclError != ERROR_SUCCESS) {
        // This call answers its code instead of leaving it as the last error.
        SetLastError(aclError);
        ReportLastError("Failed to set entries in ACL.");
        return false;
    }

    if (!InitializeSecurityDescriptor(&m_Descriptor, SECURITY_DESCRIPTOR_REVISION)) {
        ReportLastError("Failed to init SD.");
        return false;
    }
    if (!SetSecurityDescriptorDacl(&m_Descriptor, TRUE, m_Acl.Get(), FALSE)) {
        ReportLastError("Failed to set SD DACL.");
        return false;
    }
    return true;
}
