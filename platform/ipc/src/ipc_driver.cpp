#include "ipc_driver.h"

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
#include "one_way_queue.h"
#include "transaction.h"

namespace Tarvo {
namespace {
constexpr HiviewDFX::HiLogLabel kLabel = {HiviewDFX::LOG_CORE, 0xD0057CA, "IPCDriver"};

// Dead processes must stop answering from the moment they die, so the driver learns of every
// kill as soon as the library is loaded.
[[maybe_unused]] const bool kKillObserverRegistered = (IPCDriver::GetInstance(), true);

std::chrono::seconds WaitTimeOf(const MessageOption& option)
{
    int seconds = option.GetWaitTime() > 0 ? option.GetWaitTime() : MessageOption::TF_WAIT_TIME;
    return std::chrono::seconds(seconds);
}
}  // namespace

IPCDriver::ScopedTag::ScopedTag(uint64_t tag) : previous_(CallingContext::Tag())
{
    CallingContext::SetTag(tag);
}

IPCDriver::ScopedTag::~ScopedTag()
{
    CallingContext::SetTag(previous_);
}

IPCDriver& IPCDriver::GetInstance()
{
    static IPCDriver* instance = new IPCDriver();
    return *instance;
}

uint64_t IPCDriver::CurrentTag()
{
    return CallingContext::Tag();
}

IPCDriver::IPCDriver() : handles_(std::make_unique<HandleTable>()), oneWay_(std::make_unique<OneWayQueue>())
{
    VirtualProcess::AddKillObserver([](VirtualProcess& killed) { GetInstance().OnProcessKilled(killed); });
}

IPCDriver::~IPCDriver() = default;

void IPCDriver::SetTransportFault(int32_t pid, bool fail)
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (fail) {
        faultyPids_.insert(pid);
    } else {
        faultyPids_.erase(pid);
    }
}

void IPCDriver::SetTransactionObserver(TransactionObserver observer)
{
    std::shared_ptr<const TransactionObserver> replacement;
    if (observer) {
        replacement = std::make_shared<const TransactionObserver>(std::move(observer));
    }
    std::lock_guard<std::mutex> lock(mutex_);
    // The old observer may be mid-call on a handling thread; that call keeps its own reference.
    observer_.swap(replacement);
}

bool IPCDriver::HasTransportFault(int32_t pid)
{
    std::lock_guard<std::mutex> lock(mutex_);
    return faultyPids_.count(pid) != 0;
}

int IPCDriver::Transact(uint32_t handle, uint32_t code, MessageParcel& data, MessageParcel& reply,
                        MessageOption& option)
{
    sptr<IPCObjectStub> stub = handles_->StubOf(handle);
    if (stub == nullptr) {
        return ERR_DEAD_OBJECT;
    }
    return TransactStub(stub, code, data, reply, option);
}

int IPCDriver::TransactStub(const sptr<IPCObjectStub>& stub, uint32_t code, MessageParcel& data, MessageParcel& reply,
                            MessageOption& option)
{
    if (stub == nullptr) {
        return ERR_INVALID_VALUE;
    }
    std::shared_ptr<VirtualProcess> owner = stub->GetOwner();
    if (owner == nullptr) {
        return ERR_DEAD_OBJECT;
    }
    if (owner == VirtualProcess::Current()) {
        // No transport within a process: the stub calls itself.
        return stub->SendRequest(code, data, reply, option);
    }
    if (HasTransportFault(owner->Pid())) {
        return ERR_TRANSACTION_FAILED;
    }
    if (!owner->IsAlive()) {
        return ERR_DEAD_OBJECT;
    }
    std::shared_ptr<Transaction> txn = MakeTransaction(stub, *owner, code, data, option);
    return txn->oneWay ? SendOneWay(txn, *owner) : SendSync(txn, *owner, reply);
}

std::shared_ptr<Transaction> IPCDriver::MakeTransaction(const sptr<IPCObjectStub>& stub, const VirtualProcess& owner,
                                                        uint32_t code, const MessageParcel& data,
                                                        const MessageOption& option)
{
    auto txn = std::make_shared<Transaction>(stub, owner.Pid(), code, data, option);
    txn->caller = VirtualProcess::Current()->Identity();
    txn->tag = CallingContext::Tag();
    if (txn->oneWay) {
        txn->pending.emplace();
    }
    return txn;
}

int IPCDriver::SendSync(const std::shared_ptr<Transaction>& txn, VirtualProcess& owner, MessageParcel& reply)
{
    {
        // Registered before posting, so that a kill from here on wakes this caller.
        std::lock_guard<std::mutex> lock(mutex_);
        waiting_.push_back(txn);
    }
    int status = ERR_DEAD_OBJECT;
    bool replied = false;
    // Handed over ahead of waiting work: the sender's turn goes on in the handler.
    if (owner.PostNext([this, txn] { Deliver(*txn); })) {
        status = txn->Wait(WaitTimeOf(txn->option), replied);
    }
    {
        std::lock_guard<std::mutex> lock(mutex_);
        std::erase(waiting_, txn);
    }
    if (replied) {
        reply = txn->reply;
        reply.RewindRead(0);
    } else if (status == ERR_TIMED_OUT) {
        HiviewDFX::HiLog::Warn(kLabel, "request %{public}u to pid %{public}d timed out", txn->code, txn->targetPid);
    }
    return status;
}

int IPCDriver::SendOneWay(const std::shared_ptr<Transaction>& txn, VirtualProcess& owner)
{
    sptr<IPCObjectStub> target = txn->target;
    if (!oneWay_->Push(txn)) {
        return ERR_NONE;
    }
    if (!owner.Post([this, target] { DrainOneWay(target); })) {
        // Died since the check: nothing queued for it will ever run.
        oneWay_->Abandon(target.GetRefPtr());
        return ERR_DEAD_OBJECT;
    }
    return ERR_NONE;
}

void IPCDriver::DrainOneWay(const sptr<IPCObjectStub>& target)
{
    // `target` keeps the queue's key valid until the queue is gone.
    while (std::shared_ptr<Transaction> txn = oneWay_->Next(target.GetRefPtr())) {
        Deliver(*txn);
        txn->pending.reset();
    }
}

void IPCDriver::Deliver(Transaction& txn)
{
    if (!VirtualProcess::Current()->IsAlive()) {
        txn.Complete(ERR_DEAD_OBJECT, false);
        return;
    }
    int status = ERR_NONE;
    {
        CallingContext::Scope scope(&txn.caller, txn.tag);
        status = txn.target->DispatchRequest(txn.code, txn.data, txn.reply, txn.option);
    }
    Observe(txn, status);
    txn.Complete(status, true);
}

void IPCDriver::Observe(const Transaction& txn, int status)
{
    std::shared_ptr<const TransactionObserver> observer;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        observer = observer_;
    }
    if (observer == nullptr) {
        return;
    }
    TransactionRecord record;
    record.descriptor = txn.target->GetObjectDescriptor();
    record.code = txn.code;
    record.status = status;
    record.oneWay = txn.oneWay;
    record.callerPid = txn.caller.pid;
    record.targetPid = txn.targetPid;
    record.tag = txn.tag;
    record.reply = &txn.reply;
    (*observer)(record);
}

sptr<IRemoteObject> IPCDriver::FlattenObject(const sptr<IRemoteObject>& object)
{
    if (object == nullptr || !object->IsProxyObject()) {
        return object;
    }
    auto* proxy = dynamic_cast<IPCObjectProxy*>(object.GetRefPtr());
    if (proxy == nullptr) {
        return nullptr;
    }
    return handles_->StubOf(proxy->GetHandle());
}

sptr<IRemoteObject> IPCDriver::UnflattenObject(const sptr<IRemoteObject>& flat)
{
    sptr<IPCObjectStub> stub(dynamic_cast<IPCObjectStub*>(flat.GetRefPtr()));
    if (stub == nullptr) {
        // Objects of other kinds cannot be reached by proxy; they stay what they are.
        return flat;
    }
    std::shared_ptr<VirtualProcess> reader = VirtualProcess::Current();
    if (stub->IsOwnedBy(reader)) {
        return flat;
    }
    return handles_->ProxyFor(stub, reader);
}

void IPCDriver::ReleaseHandle(uint32_t handle)
{
    // Dropped here, outside the table's lock: it may be the stub's last reference.
    sptr<IPCObjectStub> stub = handles_->Release(handle);
}

bool IPCDriver::SetContextObject(const sptr<IRemoteObject>& object)
{
    sptr<IRemoteObject> flat = FlattenObject(object);
    if (object != nullptr && flat == nullptr) {
        return false;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    // The previous object is released after the lock, with `flat`.
    std::swap(contextObject_, flat);
    return true;
}

sptr<IRemoteObject> IPCDriver::GetContextObject()
{
    sptr<IRemoteObject> flat;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        flat = contextObject_;
    }
    if (flat == nullptr || flat->IsObjectDead()) {
        return nullptr;
    }
    return UnflattenObject(flat);
}

void IPCDriver::OnProcessKilled(VirtualProcess& killed)
{
    std::weak_ptr<VirtualProcess> owner = killed.weak_from_this();
    std::vector<std::shared_ptr<Transaction>> woken;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        for (const auto& txn : waiting_) {
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

void IPCDriver::SendObituaries(const std::weak_ptr<VirtualProcess>& killed)
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
