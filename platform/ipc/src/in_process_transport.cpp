#include "in_process_transport.h"

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

#include "calling_context.h"
#include "handle_table.h"
#include "hilog.h"
#include "ipc_object_proxy.h"
#include "ipc_object_stub.h"
#include "ipc_types.h"
#include "sequencer.h"
#include "transaction.h"

namespace Tarvo {
namespace {
constexpr HiviewDFX::HiLogLabel kLabel = {HiviewDFX::LOG_CORE, 0xD0057CA, "IPCDriver"};

std::chrono::seconds WaitTimeOf(const MessageOption& option)
{
    int seconds = option.GetWaitTime() > 0 ? option.GetWaitTime() : MessageOption::TF_WAIT_TIME;
    return std::chrono::seconds(seconds);
}
}  // namespace

InProcessTransport::InProcessTransport() : handles_(std::make_unique<HandleTable>())
{
    // Made once per real process and never destroyed, so the observer may keep `this`.
    VirtualProcess::AddKillObserver([this](VirtualProcess& killed) { OnProcessKilled(killed); });
}

InProcessTransport::~InProcessTransport() = default;

std::shared_ptr<ProcessSession> InProcessTransport::CurrentSession()
{
    return VirtualProcess::Current();
}

void InProcessTransport::SetTransportFault(int32_t pid, bool fail)
{
    controls_.SetFault(pid, fail);
}

void InProcessTransport::SetTransactionObserver(TransactionObserver observer)
{
    controls_.SetObserver(std::move(observer));
}

int InProcessTransport::Transact(uint64_t handle, uint32_t code, MessageParcel& data, MessageParcel& reply,
                                 MessageOption& option)
{
    sptr<IPCObjectStub> stub = handles_->StubOf(handle);
    if (stub == nullptr) {
        return ERR_DEAD_OBJECT;
    }
    return TransactStub(stub, code, data, reply, option);
}

int InProcessTransport::TransactStub(const sptr<IPCObjectStub>& stub, uint32_t code, MessageParcel& data,
                                     MessageParcel& reply, MessageOption& option)
{
    if (stub == nullptr) {
        return ERR_INVALID_VALUE;
    }
    // Every session of this transport is a virtual process.
    std::shared_ptr<VirtualProcess> owner = std::static_pointer_cast<VirtualProcess>(stub->GetOwner());
    if (owner == nullptr) {
        return ERR_DEAD_OBJECT;
    }
    if (owner == VirtualProcess::Current()) {
        // No transport within a process: the stub calls itself.
        return stub->SendRequest(code, data, reply, option);
    }
    if (controls_.HasFault(owner->Pid())) {
        return ERR_TRANSACTION_FAILED;
    }
    if (!owner->IsAlive()) {
        return ERR_DEAD_OBJECT;
    }
    std::shared_ptr<Transaction> txn = MakeTransaction(stub, *owner, code, data, option);
    return txn->oneWay ? SendOneWay(txn, *owner) : SendSync(txn, *owner, reply);
}

std::shared_ptr<Transaction> InProcessTransport::MakeTransaction(const sptr<IPCObjectStub>& stub,
                                                                 const VirtualProcess& owner, uint32_t code,
                                                                 const MessageParcel& data, const MessageOption& option)
{
    auto txn = std::make_shared<Transaction>(stub, owner.Pid(), code, data, option);
    txn->caller = VirtualProcess::Current()->Identity();
    txn->tag = CallingContext::Tag();
    return txn;
}

int InProcessTransport::SendSync(const std::shared_ptr<Transaction>& txn, VirtualProcess& owner, MessageParcel& reply)
{
    Waiting& waiting = WaitingFor(txn->targetPid);
    {
        // Registered before posting, so that a kill from here on wakes this caller.
        std::lock_guard<std::mutex> lock(waiting.mutex);
        waiting.transactions.push_back(txn);
    }
    int status = ERR_DEAD_OBJECT;
    bool replied = false;
    // Handed over ahead of waiting work: the sender's turn goes on in the handler.
    if (owner.PostNext([this, txn] { Deliver(*txn); })) {
        status = txn->Wait(WaitTimeOf(txn->option), replied);
    }
    {
        std::lock_guard<std::mutex> lock(waiting.mutex);
        std::erase(waiting.transactions, txn);
    }
    if (replied) {
        reply = txn->reply;
        reply.RewindRead(0);
    } else if (status == ERR_TIMED_OUT) {
        HiviewDFX::HiLog::Warn(kLabel, "request %{public}u to pid %{public}d timed out", txn->code, txn->targetPid);
    }
    return status;
}

int InProcessTransport::SendOneWay(const std::shared_ptr<Transaction>& txn, VirtualProcess& owner)
{
    // The owner's lane delivers one request at a time per object, in the order sent, and hands a
    // burst over in one go; in virtual time each request still takes its own turn, in send order.
    const bool posted = owner.PostInLane(txn->target.GetRefPtr(), [this, txn] { Deliver(*txn); });
    return posted ? ERR_NONE : ERR_DEAD_OBJECT;
}

void InProcessTransport::Deliver(Transaction& txn)
{
    if (!VirtualProcess::Current()->IsAlive()) {
        txn.Complete(ERR_DEAD_OBJECT, false);
        return;
    }
    int status = ERR_NONE;
    {
        // One-way requests the handler sends go out as one hand-off per receiving process, when it
        // is done.
        VirtualProcess::HoldLaneWakes hold;
        CallingContext::Scope scope(&txn.caller, txn.tag);
        status = txn.target->DispatchRequest(txn.code, txn.data, txn.reply, txn.option);
    }
    Observe(txn, status);
    txn.Complete(status, true);
}

void InProcessTransport::Observe(const Transaction& txn, int status)
{
    controls_.Observe([&](TransactionRecord& record) {
        record = {txn.target->GetObjectDescriptor(),
                  txn.code,
                  status,
                  txn.oneWay,
                  txn.caller.pid,
                  txn.targetPid,
                  txn.tag,
                  &txn.reply};
    });
}

bool InProcessTransport::FlattenObject(const sptr<IRemoteObject>& object, WireObject& wire)
{
    if (object == nullptr) {
        return false;
    }
    if (!object->IsProxyObject()) {
        wire = {WireObject::LOCAL, Remember(object)};
        return true;
    }
    auto* proxy = dynamic_cast<IPCObjectProxy*>(object.GetRefPtr());
    if (proxy == nullptr) {
        return false;
    }
    wire = {WireObject::HANDLE, proxy->GetHandle()};
    return true;
}

uint64_t InProcessTransport::Remember(const sptr<IRemoteObject>& object)
{
    const auto cookie = reinterpret_cast<uint64_t>(object.GetRefPtr());
    std::lock_guard<std::mutex> lock(mutex_);
    if (cookies_.size() >= sweepAt_) {
        std::erase_if(cookies_, [](const auto& entry) { return entry.second.expired(); });
        sweepAt_ = std::max<size_t>(64, cookies_.size() * 2);
    }
    // A new object at the address of a gone one takes its cookie over.
    cookies_[cookie] = object;
    return cookie;
}

sptr<IRemoteObject> InProcessTransport::Resolve(const WireObject& wire)
{
    if (wire.kind == WireObject::HANDLE) {
        return handles_->StubOf(wire.value);
    }
    if (wire.kind != WireObject::LOCAL) {
        return nullptr;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = cookies_.find(wire.value);
    // A parcel holds what it carries, so a cookie read from one always promotes; this only
    // keeps a stray value from reaching a gone object.
    return found == cookies_.end() ? nullptr : found->second.promote();
}

sptr<IRemoteObject> InProcessTransport::UnflattenObject(const WireObject& wire)
{
    sptr<IRemoteObject> object = Resolve(wire);
    sptr<IPCObjectStub> stub(dynamic_cast<IPCObjectStub*>(object.GetRefPtr()));
    if (stub == nullptr) {
        // Objects of other kinds cannot be reached by proxy; they stay what they are.
        return object;
    }
    std::shared_ptr<VirtualProcess> reader = VirtualProcess::Current();
    if (stub->IsOwnedBy(reader)) {
        return stub;
    }
    return handles_->ProxyFor(stub, reader);
}

void InProcessTransport::ReleaseHandle(uint64_t handle)
{
    // Dropped here, outside the table's lock: it may be the stub's last reference.
    sptr<IPCObjectStub> stub = handles_->Release(handle);
}

bool InProcessTransport::SetContextObject(const sptr<IRemoteObject>& object)
{
    WireObject wire;
    if (object != nullptr && !FlattenObject(object, wire)) {
        return false;
    }
    // Kept as the object it names, whoever set it.
    sptr<IRemoteObject> target = object == nullptr ? nullptr : Resolve(wire);
    std::lock_guard<std::mutex> lock(mutex_);
    // The previous object is released after the lock, with `target`.
    std::swap(contextObject_, target);
    return true;
}

sptr<IRemoteObject> InProcessTransport::GetContextObject()
{
    sptr<IRemoteObject> target;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        target = contextObject_;
    }
    if (target == nullptr || target->IsObjectDead()) {
        return nullptr;
    }
    WireObject wire;
    return FlattenObject(target, wire) ? UnflattenObject(wire) : nullptr;
}

void InProcessTransport::OnProcessKilled(VirtualProcess& killed)
{
    std::weak_ptr<VirtualProcess> process = killed.weak_from_this();
    std::weak_ptr<ProcessSession> owner = process;
    std::vector<std::shared_ptr<Transaction>> woken;
    {
        Waiting& waiting = WaitingFor(killed.Pid());
        std::lock_guard<std::mutex> lock(waiting.mutex);
        for (const auto& txn : waiting.transactions) {
            if (txn->target->IsOwnedBy(owner)) {
                woken.push_back(txn);
            }
        }
    }
    for (const auto& txn : woken) {
        txn->Complete(ERR_DEAD_OBJECT, false);
    }
    SendObituaries(owner);
}

void InProcessTransport::SendObituaries(const std::weak_ptr<ProcessSession>& killed)
{
    std::vector<HandleTable::Obituary> obituaries = handles_->MarkOwnerDead(killed);
    // Holders are told in the order their proxies were made, whatever the table's layout.
    std::sort(obituaries.begin(), obituaries.end(),
              [](const auto& a, const auto& b) { return a.proxy->GetHandle() < b.proxy->GetHandle(); });
    for (HandleTable::Obituary& obituary : obituaries) {
        std::vector<sptr<IRemoteObject::DeathRecipient>> recipients = obituary.proxy->MarkDead();
        std::shared_ptr<VirtualProcess> holder = obituary.holder.lock();
        if (recipients.empty() || holder == nullptr) {
            continue;
        }
        sptr<IRemoteObject> proxy = obituary.proxy;
        // A holder that is itself dead is not told.
        holder->Post([proxy, recipients = std::move(recipients)] {
            for (const auto& recipient : recipients) {
                recipient->OnRemoteDied(wptr<IRemoteObject>(proxy));
            }
        });
    }
}

}  // namespace Tarvo
