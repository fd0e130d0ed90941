#pragma once

#include "platform/owners.h"

// Who may open the pipe: authenticated users may read and write, nobody else is named.
//
// If a step of the building fails it is reported, with lines logged, and the descriptor stays one that no object can be
// created with. A descriptor without its access list would be a valid one, and would open the pipe to more than these.
class PipeSecurity {
  public:
    PipeSecurity();
    PipeSecurity(const PipeSecurity&) = delete;
    PipeSecurity& operator=(const PipeSecurity&) = delete;

    // For CreateNamedPipe; valid as long as this object.
    SECURITY_ATTRIBUTES* Attributes() { return &m_Attributes; }

  private:
    bool Build();

    OwnedLocal<ACL> m_Acl;
    SECURITY_DESCRIPTOR m_Descriptor = {};
    SECURITY_ATTRIBUTES m_Attributes = {};
};
