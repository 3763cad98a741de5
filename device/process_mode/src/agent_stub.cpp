#include "agent_stub.h"

#include "ipc_types.h"

namespace Tarvo::Emu {

AgentStub::AgentStub(Handler handler) : IPCObjectStub(kAgentDescriptor), handler_(std::move(handler)) {}

int AgentStub::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option)
{
    AgentControl control;
    if (!ReadControl(data, &control)) {
        return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    if (static_cast<uint32_t>(control.code) != code) {
        return ERR_INVALID_VALUE;
    }
    AgentReply answer;
    handler_(control, &answer);
    return WriteReply(answer, reply) ? ERR_NONE : ERR_INVALID_VALUE;
}

HubStub::HubStub(Trace& trace, Attach attach) : IPCObjectStub(kHubDescriptor), trace_(trace), attach_(std::move(attach))
{
}

int HubStub::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option)
{
    if (code == static_cast<uint32_t>(HubCode::EMIT)) {
        std::string ev;
        std::vector<TraceField> fields;
        if (!ReadEvent(data, &ev, &fields)) {
            return ERR_INVALID_VALUE;
        }
        trace_.Emit(std::move(ev), std::move(fields));
        return ERR_NONE;
    }
    if (code == static_cast<uint32_t>(HubCode::ATTACH)) {
        std::string role;
        if (data.ReadInterfaceToken() != kHubDescriptor || !data.ReadString(role)) {
            return ERR_INVALID_VALUE;
        }
        sptr<IRemoteObject> agent = data.ReadRemoteObject();
        if (agent == nullptr) {
            return ERR_INVALID_VALUE;
        }
        attach_(role, agent);
        return ERR_NONE;
    }
    return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
}

void ForwardingTrace::Emit(std::string ev, std::vector<TraceField> fields)
{
    MessageParcel data;
    MessageParcel reply;
    MessageOption option(MessageOption::TF_SYNC);
    if (hub_ != nullptr && WriteEvent(ev, fields, data)) {
        hub_->SendRequest(static_cast<uint32_t>(HubCode::EMIT), data, reply, option);
    }
}

}  // namespace Tarvo::Emu
