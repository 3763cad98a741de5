#include "device_tap.h"

#include "i_zel_manager.h"
#include "zel_log.h"

namespace Tarvo::Emu {
namespace {
// The reply's first 32-bit value, signed where the manager answers with an int32.
TraceValue ReplyValue(const TransactionRecord& record)
{
    if (record.reply == nullptr || record.reply->GetDataSize() < sizeof(uint32_t)) {
        return nullptr;
    }
    MessageParcel copy = *record.reply;
    const uint32_t raw = copy.ReadUint32();
    const bool signedReply =
        record.descriptor == Vantel::IZelManager::GetDescriptor() &&
        record.code == static_cast<uint32_t>(Vantel::ZelManagerInterfaceCode::CHANGE_RESOLUTION_MODE);
    return signedReply ? static_cast<int64_t>(static_cast<int32_t>(raw)) : static_cast<int64_t>(raw);
}
}  // namespace

Trace* DeviceTap::Enter()
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (trace_ != nullptr) {
        ++inside_;
    }
    return trace_;
}

void DeviceTap::Leave()
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (--inside_ == 0) {
        left_.notify_all();
    }
}

void DeviceTap::EmitOutside(Trace* trace, std::string ev, std::vector<TraceField> fields)
{
    if (trace != nullptr) {
        trace->Emit(std::move(ev), std::move(fields));
        Leave();
    }
}

void DeviceTap::Emit(std::string ev, std::vector<TraceField> fields)
{
    EmitOutside(Enter(), std::move(ev), std::move(fields));
}

void DeviceTap::SetServicePid(int32_t pid)
{
    std::lock_guard<std::mutex> lock(mutex_);
    servicePid_ = pid;
}

void DeviceTap::Watch(uint64_t line, std::u16string descriptor, int32_t appPid, std::string bundle)
{
    std::lock_guard<std::mutex> lock(mutex_);
    line_ = line;
    descriptor_ = std::move(descriptor);
    appPid_ = appPid;
    bundle_ = std::move(bundle);
    delivered_ = false;
}

bool DeviceTap::Delivered() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return delivered_;
}

void DeviceTap::OnTransaction(const TransactionRecord& record)
{
    if (record.tag == 0) {
        return;
    }
    TraceValue reply = ReplyValue(record);
    Trace* trace = nullptr;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        const bool watched =
            record.tag == line_ && record.descriptor == descriptor_ && (appPid_ == 0 || record.targetPid == appPid_);
        delivered_ = delivered_ || watched;
        if (trace_ == nullptr || !(watched || record.descriptor == Vantel::IZelManager::GetDescriptor())) {
            return;
        }
        trace = trace_;
        ++inside_;
    }
    EmitOutside(trace, "ipc.done",
                {{"line", static_cast<int64_t>(record.tag)},
                 {"code", static_cast<int64_t>(record.code)},
                 {"status", static_cast<int64_t>(record.status)},
                 {"reply", std::move(reply)}});
}

DeviceTap::LogKind DeviceTap::KindOf(const HiviewDFX::LogRecord& record, uint64_t tag) const
{
    if (trace_ == nullptr) {
        return LogKind::NONE;
    }
    // The service's own lines: its domain, from its process (libraries there log under theirs).
    if (servicePid_ != 0 && record.pid == servicePid_ && record.domain == Vantel::ZEL_LOG_LABEL.domain) {
        return LogKind::SERVICE;
    }
    return appPid_ != 0 && record.pid == appPid_ && tag == line_ ? LogKind::APP : LogKind::NONE;
}

bool DeviceTap::Accepts(const HiviewDFX::LogRecord& record) const
{
    const uint64_t tag = IPCTransport::CurrentTag();
    std::lock_guard<std::mutex> lock(mutex_);
    return KindOf(record, tag) != LogKind::NONE;
}

void DeviceTap::OnLog(const HiviewDFX::LogRecord& record)
{
    const std::string level(1, HiviewDFX::LevelLetter(record.level));
    const uint64_t tag = IPCTransport::CurrentTag();
    Trace* trace = nullptr;
    std::vector<TraceField> fields;
    std::string ev;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        switch (KindOf(record, tag)) {
            case LogKind::SERVICE:
                ev = "log";
                fields = {{"level", level}, {"msg", record.message}};
                break;
            case LogKind::APP:
                ev = "app.log";
                fields = {{"bundle", bundle_}, {"level", level}, {"msg", record.message}};
                break;
            case LogKind::NONE:
                return;
        }
        trace = trace_;
        ++inside_;
    }
    EmitOutside(trace, std::move(ev), std::move(fields));
}

void DeviceTap::Detach()
{
    std::unique_lock<std::mutex> lock(mutex_);
    trace_ = nullptr;
    left_.wait(lock, [this] { return inside_ == 0; });
}

}  // namespace Tarvo::Emu
