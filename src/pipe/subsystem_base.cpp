#include "pipe/subsystem_base.h"

#include "pipe/named_pipe_server.h"

std::vector<std::unique_ptr<SubsystemBase>> g_Subsystems;

bool SubsystemBase::SendSubsystemMessage(const std::string& text) {
    OutgoingFrame frame = MakeFrame(GetId(), text.c_str());
    return NamedPipeServer::Send(frame);
}
