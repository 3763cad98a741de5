#ifndef ZEL_DEVICE_PROCESS_MODE_DEVICE_AGENT_H
#define ZEL_DEVICE_PROCESS_MODE_DEVICE_AGENT_H

// How the controller of a device in real processes talks to them.
//
//  - The hub (IDeviceHub), an object of the controller published under the well-known name "hub":
//    a process attaches with its agent once its part of the device is up, and emits its trace
//    events there, synchronously, so the controller's trace follows what each process did.
//  - The agent (IDeviceAgent), one object in each process: one code per control, arguments and
//    answer in an AgentControl / AgentReply written whole. Every control is synchronous.
//
// Parcels are untrusted on both sides: counts are checked against what is left before anything is
// allocated from them.

#include <cstdint>
#include <optional>
#include <string>

#include "message_parcel.h"
#include "package_catalog.h"
#include "request_order.h"
#include "trace.h"

namespace Tarvo::Emu {

inline constexpr const char* kHubName = "hub";
inline constexpr char16_t kHubDescriptor[] = u"zel.device.IDeviceHub";
inline constexpr char16_t kAgentDescriptor[] = u"zel.device.IDeviceAgent";

enum class HubCode : uint32_t {
    ATTACH = 1,  // role (string), agent (object)
    EMIT = 2,    // a trace event
};

enum class AgentCode : uint32_t {
    PRESET_PARAM = 1,  // key, value
    PRESET_SETTING,    // key, value
    SET_UP,            // flag: up (settings provider, category service, service manager)
    ABILITY,           // id, flag: obtainable
    INSTALL,           // package
    REMOVE,            // key: bundle
    PUBLISH,           // key: action, bundle, number: code
    APP_STATE,         // key: bundle, id: pid, state, flag: focus
    LIGHT,             // id: type, flag: state
    BOOT,
    SHUTDOWN,
    FAULT,  // id: pid, flag: fail
    WATCH,  // order: the line and what it goes to
    SEND,   // order, object: the callback a raw request goes to, or REGISTER's name
    // Virtual time shared by the processes (a fleet the controller drives):
    NEXT_DUE,  // reply: due, the earliest due time of this process's tasks
    MOVE,      // time: the clock reads it; this process reserves the turns of its due tasks
    DEATH,     // id: the pid of a process that died; its proxies here die now
};
inline constexpr uint32_t kLastAgentCode = static_cast<uint32_t>(AgentCode::DEATH);

struct AgentControl {
    AgentCode code = AgentCode::NEXT_DUE;
    std::string key;
    std::string value;
    std::optional<std::string> bundle;
    std::optional<int32_t> number;
    int32_t id = 0;
    int32_t state = 0;
    bool flag = false;
    int64_t time = 0;  // ms
    Package package;
    RequestOrder order;
    sptr<IRemoteObject> object;
};

struct AgentReply {
    bool ok = true;
    std::string error;
    SendOutcome outcome;         // SEND
    sptr<IRemoteObject> object;  // SEND of REGISTER: the callback object made
    int64_t due = -1;            // NEXT_DUE: ms, -1 when nothing is due
};

bool WriteControl(const AgentControl& control, MessageParcel& data);
bool ReadControl(MessageParcel& data, AgentControl* control);
bool WriteReply(const AgentReply& reply, MessageParcel& data);
bool ReadReply(MessageParcel& data, AgentReply* reply);
bool WriteEvent(const std::string& ev, const std::vector<TraceField>& fields, MessageParcel& data);
bool ReadEvent(MessageParcel& data, std::string* ev, std::vector<TraceField>* fields);

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_PROCESS_MODE_DEVICE_AGENT_H
