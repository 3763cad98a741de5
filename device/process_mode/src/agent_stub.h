#ifndef ZEL_DEVICE_PROCESS_MODE_AGENT_STUB_H
#define ZEL_DEVICE_PROCESS_MODE_AGENT_STUB_H

#include <functional>

#include "device_agent.h"
#include "ipc_object_stub.h"

namespace Tarvo::Emu {

// The agent of one process: reads each control whole and answers with the handler's reply.
class AgentStub : public IPCObjectStub {
public:
    using Handler = std::function<void(const AgentControl& control, AgentReply* reply)>;
    explicit AgentStub(Handler handler);
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;

private:
    const Handler handler_;
};

// The controller's hub: attachments and trace events.
class HubStub : public IPCObjectStub {
public:
    using Attach = std::function<void(const std::string& role, const sptr<IRemoteObject>& agent)>;
    HubStub(Trace& trace, Attach attach);
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;

private:
    Trace& trace_;
    const Attach attach_;
};

// A process's trace: each event goes to the hub, synchronously; none once the hub is gone.
class ForwardingTrace : public Trace {
public:
    void SetHub(sptr<IRemoteObject> hub) { hub_ = std::move(hub); }
    void Emit(std::string ev, std::vector<TraceField> fields) override;

private:
    sptr<IRemoteObject> hub_;  // set before any event can be emitted
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_PROCESS_MODE_AGENT_STUB_H
