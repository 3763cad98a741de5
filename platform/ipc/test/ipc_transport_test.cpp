#include "ipc_transport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "ipc_skeleton.h"
#include "ipc_test_support.h"
#include "ipc_transport.h"
#include "ipc_types.h"
#include "sequencer.h"
#include "socket_test_support.h"
#include "work_tracker.h"

namespace Tarvo {
namespace {
using namespace IpcTest;
using namespace std::chrono_literals;

// Opens once; handlers block on it to hold requests in flight.
class Gate {
public:
    void Open() { promise_.set_value(); }
    void Wait() const { opened_.wait(); }

private:
    std::promise<void> promise_;
    std::shared_future<void> opened_ = promise_.get_future().share();
};

class RecordingRecipient : public IRemoteObject::DeathRecipient {
public:
    void OnRemoteDied(const wptr<IRemoteObject>& object) override
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (calls_++ == 0) {
            pid_ = VirtualProcess::Current()->Pid();
            object_ = object.promote();
            told_.set_value();
        }
    }
    std::future<void> Told() { return told_.get_future(); }
    int Calls()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return calls_;
    }
    int32_t Pid()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return pid_;
    }
    sptr<IRemoteObject> Object()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return object_;
    }

private:
    std::mutex mutex_;
    std::promise<void> told_;
    int calls_ = 0;
    int32_t pid_ = 0;
    sptr<IRemoteObject> object_;
};

// Every test runs over each transport: the in-process one, and sockets between sessions of this
// process (each an endpoint of its own, as separate processes would be).
enum class Transport { IN_PROCESS, SOCKETS };

std::string Name(const testing::TestParamInfo<Transport>& info)
{
    return info.param == Transport::IN_PROCESS ? "InProcess" : "Sockets";
}

class IpcTransportTest : public testing::TestWithParam<Transport> {
protected:
    void SetUp() override
    {
        if (GetParam() == Transport::SOCKETS) {
            // Once per process: a process running several tests keeps the transport it began with.
            if (&SocketTest::Transport() != &IPCTransport::Get()) {
                GTEST_SKIP() << "another transport is in use in this process";
            }
        } else if (dynamic_cast<SocketTransport*>(&IPCTransport::Get()) != nullptr) {
            GTEST_SKIP() << "the socket transport is in use in this process";
        }
    }
    void TearDown() override
    {
        IPCTransport::Get().SetTransactionObserver(nullptr);
        EXPECT_TRUE(WorkTracker::GetInstance().WaitQuiet(kTimeout));
    }

    std::shared_ptr<VirtualProcess> service_ = MakeProcess(200, "service");
    std::shared_ptr<VirtualProcess> client_ = MakeProcess(300, "client");
    std::shared_ptr<VirtualProcess> third_ = MakeProcess(400, "third");
};

TEST_P(IpcTransportTest, CrossProcessCallRunsInTheOwnerWithTheCallersIdentity)
{
    struct Seen {
        int32_t pid = 0;
        int32_t uid = 0;
        uint32_t token = 0;
        uint64_t fullToken = 0;
        bool local = true;
        int32_t handlerPid = 0;
        std::thread::id thread;
    } seen;
    auto stub = MakeStub(service_, u"test.Identity", [&](uint32_t, MessageParcel& data, MessageParcel& reply, auto&) {
        seen = {IPCSkeleton::GetCallingPid(),     IPCSkeleton::GetCallingUid(),
                IPCSkeleton::GetCallingTokenID(), IPCSkeleton::GetCallingFullTokenID(),
                IPCSkeleton::IsLocalCalling(),    VirtualProcess::Current()->Pid(),
                std::this_thread::get_id()};
        // The handler's data is its own copy.
        data.WriteInt32(0);
        reply.WriteInt32(data.ReadInt32() + 1);
        return 7;
    });
    sptr<IRemoteObject> proxy = Transfer(stub, client_);
    ScopedProcess scope(client_);

    MessageParcel data;
    MessageParcel reply;
    MessageOption option;
    ASSERT_TRUE(data.WriteInt32(41));
    EXPECT_EQ(proxy->SendRequest(1, data, reply, option), 7);
    EXPECT_EQ(reply.ReadInt32(), 42);
    EXPECT_EQ(data.GetDataSize(), 4u);
    EXPECT_EQ(seen.pid, 300);
    EXPECT_EQ(seen.uid, 10300);
    EXPECT_EQ(seen.token, 0x10000000u + 300);
    EXPECT_EQ(seen.fullToken, (1ULL << 32) | 300);
    EXPECT_FALSE(seen.local);
    EXPECT_EQ(seen.handlerPid, 200);
    EXPECT_NE(seen.thread, std::this_thread::get_id());
    // Outside any request the caller is the thread's own process.
    EXPECT_EQ(IPCSkeleton::GetCallingPid(), 300);
    EXPECT_TRUE(IPCSkeleton::IsLocalCalling());
    EXPECT_EQ(IPCSkeleton::GetSelfTokenID(), 0x10000000u + 300);

    // The stub itself, called from another process, goes the same way.
    int32_t answer = 0;
    seen = {};
    EXPECT_EQ(Call(stub, 1, 1, &answer), 7);
    EXPECT_EQ(answer, 2);
    EXPECT_EQ(seen.pid, 300);
    EXPECT_EQ(seen.handlerPid, 200);
}

TEST_P(IpcTransportTest, CallWithinTheOwnerIsDirectAndLocal)
{
    std::thread::id innerThread;
    int32_t innerCaller = 0;
    bool innerLocal = false;
    auto inner = MakeStub(service_, u"test.Inner", [&](uint32_t, MessageParcel&, MessageParcel&, auto&) {
        innerThread = std::this_thread::get_id();
        innerCaller = IPCSkeleton::GetCallingPid();
        innerLocal = IPCSkeleton::IsLocalCalling();
        return 0;
    });
    std::vector<int32_t> outerCallers;
    auto outer = MakeStub(service_, u"test.Outer", [&](uint32_t, MessageParcel&, MessageParcel&, auto&) {
        outerCallers.push_back(IPCSkeleton::GetCallingPid());
        int status = Call(inner, 1, 0);
        outerCallers.push_back(IPCSkeleton::GetCallingPid());
        return status;
    });
    {
        ScopedProcess scope(service_);
        EXPECT_EQ(Call(inner, 1, 0), 0);
        EXPECT_EQ(innerThread, std::this_thread::get_id());
        EXPECT_EQ(innerCaller, 200);
        EXPECT_TRUE(innerLocal);
    }
    // A handler serving a remote caller that calls its own process's object: the inner call
    // reports the process itself, and the remote caller is back afterwards.
    sptr<IRemoteObject> proxy = Transfer(outer, client_);
    ScopedProcess scope(client_);
    EXPECT_EQ(Call(proxy, 1, 0), 0);
    EXPECT_EQ(innerCaller, 200);
    EXPECT_TRUE(innerLocal);
    EXPECT_EQ(outerCallers, (std::vector<int32_t>{300, 300}));
}

TEST_P(IpcTransportTest, OneWayReturnsAtOnceAndKeepsPerObjectOrder)
{
    Gate gate;
    std::mutex mutex;
    std::vector<int32_t> order;
    int active = 0;
    int maxActive = 0;
    std::promise<void> firstEntered;
    std::promise<void> allDone;
    auto stub =
        MakeStub(service_, u"test.OneWay", [&](uint32_t code, MessageParcel& data, MessageParcel& reply, auto&) {
            if (code == 2) {
                reply.WriteInt32(5);
                return 0;
            }
            {
                std::lock_guard<std::mutex> lock(mutex);
                maxActive = std::max(maxActive, ++active);
                if (order.empty() && active == 1) {
                    firstEntered.set_value();
                }
            }
            gate.Wait();
            std::lock_guard<std::mutex> lock(mutex);
            --active;
            order.push_back(data.ReadInt32());
            if (order.size() == 3) {
                allDone.set_value();
            }
            return 0;
        });
    sptr<IRemoteObject> proxy = Transfer(stub, client_);
    ScopedProcess scope(client_);

    // All three return while the first is still held in its handler.
    for (int32_t value : {1, 2, 3}) {
        EXPECT_EQ(Call(proxy, 1, value, nullptr, MessageOption::TF_ASYNC), 0);
    }
    ASSERT_EQ(firstEntered.get_future().wait_for(kTimeout), std::future_status::ready);
    // A synchronous call does not queue behind them.
    int32_t answer = 0;
    EXPECT_EQ(Call(proxy, 2, 0, &answer), 0);
    EXPECT_EQ(answer, 5);
    EXPECT_GT(WorkTracker::GetInstance().InFlight(), 0);

    gate.Open();
    ASSERT_EQ(allDone.get_future().wait_for(kTimeout), std::future_status::ready);
    EXPECT_TRUE(WorkTracker::GetInstance().WaitQuiet(kTimeout));
    EXPECT_EQ(WorkTracker::GetInstance().InFlight(), 0);
    std::lock_guard<std::mutex> lock(mutex);
    EXPECT_EQ(order, (std::vector<int32_t>{1, 2, 3}));
    EXPECT_EQ(maxActive, 1);
}

TEST_P(IpcTransportTest, DeathFailsRequestsAndTellsRecipientsOnceInTheHolder)
{
    auto stub = MakeStub(service_, u"test.Mortal");
    sptr<IRemoteObject> proxy = Transfer(stub, client_);
    sptr<RecordingRecipient> told = new RecordingRecipient();
    sptr<RecordingRecipient> removed = new RecordingRecipient();
    EXPECT_TRUE(proxy->AddDeathRecipient(told));
    EXPECT_TRUE(proxy->AddDeathRecipient(removed));
    EXPECT_TRUE(proxy->RemoveDeathRecipient(removed));
    EXPECT_FALSE(proxy->RemoveDeathRecipient(removed));
    EXPECT_FALSE(proxy->AddDeathRecipient(nullptr));
    EXPECT_FALSE(proxy->IsObjectDead());
    std::future<void> toldFuture = told->Told();

    service_->Kill();
    EXPECT_TRUE(proxy->IsObjectDead());
    ASSERT_EQ(toldFuture.wait_for(kTimeout), std::future_status::ready);
    EXPECT_EQ(told->Pid(), 300);
    EXPECT_EQ(told->Object(), proxy);
    {
        ScopedProcess scope(client_);
        EXPECT_EQ(Call(proxy, PING_TRANSACTION, 0), ERR_DEAD_OBJECT);
        EXPECT_EQ(Call(proxy, PING_TRANSACTION, 0, nullptr, MessageOption::TF_ASYNC), ERR_DEAD_OBJECT);
    }
    // Recipients are dropped once told.
    EXPECT_FALSE(proxy->AddDeathRecipient(told));
    EXPECT_FALSE(proxy->RemoveDeathRecipient(told));

    // A process that gets the object only now gets a proxy that is dead from the start.
    sptr<IRemoteObject> late = Transfer(stub, third_);
    ASSERT_NE(late, nullptr);
    EXPECT_TRUE(late->IsObjectDead());
    EXPECT_FALSE(late->AddDeathRecipient(told));
    {
        ScopedProcess scope(third_);
        EXPECT_EQ(Call(late, PING_TRANSACTION, 0), ERR_DEAD_OBJECT);
    }
    EXPECT_TRUE(WorkTracker::GetInstance().WaitQuiet(kTimeout));
    EXPECT_EQ(told->Calls(), 1);
    EXPECT_EQ(removed->Calls(), 0);
}

TEST_P(IpcTransportTest, DeathWakesWaitingCallersAndDropsQueuedOneWays)
{
    Gate gate;
    std::promise<void> syncEntered;
    std::promise<void> oneWayEntered;
    std::atomic<int> queuedRan{0};
    auto stub = MakeStub(service_, u"test.Busy", [&](uint32_t code, MessageParcel&, MessageParcel&, auto&) {
        if (code == 1) {
            syncEntered.set_value();
        } else if (code == 2) {
            oneWayEntered.set_value();
        } else {
            ++queuedRan;
            return 0;
        }
        gate.Wait();
        return 0;
    });
    sptr<IRemoteObject> proxy = Transfer(stub, client_);
    auto waiting = std::async(std::launch::async, [&] {
        ScopedProcess scope(client_);
        return Call(proxy, 1, 0);
    });
    ASSERT_EQ(syncEntered.get_future().wait_for(kTimeout), std::future_status::ready);
    {
        ScopedProcess scope(client_);
        EXPECT_EQ(Call(proxy, 2, 0, nullptr, MessageOption::TF_ASYNC), 0);
        ASSERT_EQ(oneWayEntered.get_future().wait_for(kTimeout), std::future_status::ready);
        EXPECT_EQ(Call(proxy, 3, 0, nullptr, MessageOption::TF_ASYNC), 0);
    }

    service_->Kill();
    // Woken by the death, not by its handler, which is still held.
    ASSERT_EQ(waiting.wait_for(kTimeout), std::future_status::ready);
    EXPECT_EQ(waiting.get(), ERR_DEAD_OBJECT);
    gate.Open();
    EXPECT_TRUE(WorkTracker::GetInstance().WaitQuiet(kTimeout));
    EXPECT_EQ(queuedRan, 0);
}

TEST_P(IpcTransportTest, TransportFaultFailsRequestsWithoutDeliveryUntilCleared)
{
    std::atomic<int> handled{0};
    auto stub = MakeStub(service_, u"test.Faulty", [&](uint32_t, MessageParcel&, MessageParcel&, auto&) {
        ++handled;
        return 0;
    });
    auto other = MakeStub(third_, u"test.Other");
    sptr<IRemoteObject> proxy = Transfer(stub, client_);
    sptr<IRemoteObject> otherProxy = Transfer(other, client_);
    ScopedProcess scope(client_);

    IPCTransport::Get().SetTransportFault(200, true);
    EXPECT_EQ(Call(proxy, 1, 0), ERR_TRANSACTION_FAILED);
    EXPECT_EQ(Call(proxy, 1, 0, nullptr, MessageOption::TF_ASYNC), ERR_TRANSACTION_FAILED);
    EXPECT_EQ(Call(otherProxy, PING_TRANSACTION, 0), ERR_NONE);
    IPCTransport::Get().SetTransportFault(200, false);
    EXPECT_EQ(Call(proxy, 1, 0), ERR_NONE);
    EXPECT_TRUE(WorkTracker::GetInstance().WaitQuiet(kTimeout));
    EXPECT_EQ(handled, 1);
}

TEST_P(IpcTransportTest, ObserverSeesDeliveredRequestsWithStatusAndTag)
{
    std::mutex mutex;
    std::vector<TransactionRecord> records;
    std::vector<int32_t> replies;
    // Removed before the records go: nothing may still be on its way to the observer.
    struct ObserverGuard {
        ~ObserverGuard()
        {
            WorkTracker::GetInstance().WaitQuiet(kTimeout);
            IPCTransport::Get().SetTransactionObserver(nullptr);
        }
    } guard;
    IPCTransport::Get().SetTransactionObserver([&](const TransactionRecord& record) {
        MessageParcel reply = *record.reply;
        std::lock_guard<std::mutex> lock(mutex);
        records.push_back(record);
        records.back().reply = nullptr;
        replies.push_back(reply.ReadInt32());
    });
    auto stub = MakeStub(service_, u"test.Observed", [](uint32_t code, MessageParcel&, MessageParcel& reply, auto&) {
        reply.WriteInt32(9);
        return code == 5 ? 3 : 0;
    });
    sptr<IRemoteObject> proxy = Transfer(stub, client_);
    {
        ScopedProcess scope(client_);
        {
            IPCTransport::ScopedTag tag(77);
            EXPECT_EQ(IPCTransport::CurrentTag(), 77u);
            EXPECT_EQ(Call(proxy, 5, 0), 3);
        }
        EXPECT_EQ(IPCTransport::CurrentTag(), 0u);
        {
            // Seen before the caller was woken.
            std::lock_guard<std::mutex> lock(mutex);
            EXPECT_EQ(records.size(), 1u);
        }
        EXPECT_EQ(Call(proxy, 6, 0, nullptr, MessageOption::TF_ASYNC), 0);
    }
    {
        // Direct calls do not cross the driver.
        ScopedProcess scope(service_);
        EXPECT_EQ(Call(stub, 5, 0), 3);
    }
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(kTimeout));

    std::lock_guard<std::mutex> lock(mutex);
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].descriptor, u"test.Observed");
    EXPECT_EQ(records[0].code, 5u);
    EXPECT_EQ(records[0].status, 3);
    EXPECT_FALSE(records[0].oneWay);
    EXPECT_EQ(records[0].callerPid, 300);
    EXPECT_EQ(records[0].targetPid, 200);
    EXPECT_EQ(records[0].tag, 77u);
    EXPECT_EQ(replies[0], 9);
    EXPECT_EQ(records[1].code, 6u);
    EXPECT_EQ(records[1].status, 0);
    EXPECT_TRUE(records[1].oneWay);
    EXPECT_EQ(records[1].tag, 0u);
}

TEST_P(IpcTransportTest, SyncCallGivesUpAfterItsWaitTime)
{
    Gate gate;
    auto stub = MakeStub(service_, u"test.Slow", [&](uint32_t, MessageParcel&, MessageParcel& reply, auto&) {
        gate.Wait();
        reply.WriteInt32(1);
        return 0;
    });
    sptr<IRemoteObject> proxy = Transfer(stub, client_);
    ScopedProcess scope(client_);
    int32_t answer = -1;
    EXPECT_EQ(Call(proxy, 1, 0, &answer, MessageOption::TF_SYNC, 1), ERR_TIMED_OUT);
    EXPECT_EQ(answer, -1);
    // The handler still runs to its end; it must be done before the gate goes.
    gate.Open();
    EXPECT_TRUE(WorkTracker::GetInstance().WaitQuiet(kTimeout));
}

TEST_P(IpcTransportTest, SerialStubHandlesOneRequestAtATime)
{
    for (bool serial : {false, true}) {
        std::mutex mutex;
        std::condition_variable changed;
        int active = 0;
        int maxActive = 0;
        auto stub = MakeStub(
            service_, u"test.Serial",
            [&](uint32_t, MessageParcel&, MessageParcel&, auto&) {
                std::unique_lock<std::mutex> lock(mutex);
                maxActive = std::max(maxActive, ++active);
                changed.notify_all();
                // Concurrent handlers meet here. A serial stub's never can, so its wait is short.
                changed.wait_for(lock, serial ? std::chrono::milliseconds(100) : kTimeout,
                                 [&] { return maxActive >= 2; });
                --active;
                return 0;
            },
            serial);
        sptr<IRemoteObject> proxy = Transfer(stub, client_);
        auto call = [&] {
            ScopedProcess scope(client_);
            return Call(proxy, 1, 0);
        };
        auto first = std::async(std::launch::async, call);
        {
            // The second request is sent once the first is being handled.
            std::unique_lock<std::mutex> lock(mutex);
            ASSERT_TRUE(changed.wait_for(lock, kTimeout, [&] { return maxActive >= 1; }));
        }
        auto second = std::async(std::launch::async, call);
        EXPECT_EQ(first.get(), 0);
        EXPECT_EQ(second.get(), 0);
        EXPECT_EQ(maxActive, serial ? 1 : 2) << "serial " << serial;
    }
}

TEST_P(IpcTransportTest, ObjectPassedOnReachesItsOwnerFromAThirdProcess)
{
    std::atomic<int32_t> callbackCaller{0};
    auto callback = MakeStub(client_, u"test.Callback", [&](uint32_t, MessageParcel&, MessageParcel&, auto&) {
        callbackCaller = IPCSkeleton::GetCallingPid();
        return 0;
    });
    bool sinkSawProxy = false;
    auto sink = MakeStub(third_, u"test.Sink", [&](uint32_t, MessageParcel& data, MessageParcel&, auto&) {
        sptr<IRemoteObject> object = data.ReadRemoteObject();
        sinkSawProxy = object != nullptr && object->IsProxyObject();
        return object == nullptr ? ERR_INVALID_VALUE : Call(object, 9, 0);
    });
    sptr<IRemoteObject> sinkInService = Transfer(sink, service_);
    bool relaySawOneProxy = false;
    auto relay = MakeStub(service_, u"test.Relay", [&](uint32_t, MessageParcel& data, MessageParcel&, auto&) {
        sptr<IRemoteObject> first = data.ReadRemoteObject();
        sptr<IRemoteObject> second = data.ReadRemoteObject();
        relaySawOneProxy = first != nullptr && first->IsProxyObject() && first == second;
        MessageParcel forward;
        MessageParcel reply;
        MessageOption option;
        forward.WriteRemoteObject(first);
        return sinkInService->SendRequest(1, forward, reply, option);
    });
    sptr<IRemoteObject> relayInClient = Transfer(relay, client_);

    ScopedProcess scope(client_);
    MessageParcel data;
    MessageParcel reply;
    MessageOption option;
    ASSERT_TRUE(data.WriteRemoteObject(callback));
    ASSERT_TRUE(data.WriteRemoteObject(callback));
    EXPECT_EQ(relayInClient->SendRequest(1, data, reply, option), ERR_NONE);
    EXPECT_TRUE(relaySawOneProxy);
    EXPECT_TRUE(sinkSawProxy);
    EXPECT_EQ(callbackCaller, 400);
    EXPECT_EQ(Transfer(callback, client_), sptr<IRemoteObject>(callback));
}

TEST_P(IpcTransportTest, ContextObjectIsSeenFromEachProcess)
{
    auto manager = MakeStub(service_, u"test.Manager");
    EXPECT_EQ(IPCSkeleton::GetContextObject(), nullptr);
    {
        ScopedProcess scope(service_);
        ASSERT_TRUE(IPCSkeleton::SetContextObject(manager));
        EXPECT_EQ(IPCSkeleton::GetContextObject(), sptr<IRemoteObject>(manager));
    }
    sptr<IRemoteObject> seenByClient;
    {
        ScopedProcess scope(client_);
        seenByClient = IPCSkeleton::GetContextObject();
        ASSERT_NE(seenByClient, nullptr);
        EXPECT_TRUE(seenByClient->IsProxyObject());
        EXPECT_EQ(Call(seenByClient, PING_TRANSACTION, 0), ERR_NONE);
    }
    EXPECT_TRUE(IPCSkeleton::SetContextObject(nullptr));
    EXPECT_EQ(IPCSkeleton::GetContextObject(), nullptr);

    // Set through a proxy, it is the object the proxy stands for.
    EXPECT_TRUE(IPCSkeleton::SetContextObject(seenByClient));
    {
        ScopedProcess scope(service_);
        EXPECT_EQ(IPCSkeleton::GetContextObject(), sptr<IRemoteObject>(manager));
    }
    service_->Kill();
    EXPECT_EQ(IPCSkeleton::GetContextObject(), nullptr);
}

TEST_P(IpcTransportTest, SequencedRequestsRunInAnOrderFixedBySendingNotByThreads)
{
    Sequencer::Enable();
    std::mutex mutex;
    std::vector<std::string> journal;
    auto note = [&](std::string entry) {
        std::lock_guard<std::mutex> lock(mutex);
        journal.push_back(std::move(entry));
    };
    auto noting = [&](std::string name) {
        return [&note, name](uint32_t, MessageParcel& data, MessageParcel&, auto&) {
            note(name + " " + std::to_string(data.ReadInt32()));
            return 0;
        };
    };
    sptr<IRemoteObject> first = Transfer(MakeStub(service_, u"test.First", noting("first")), client_);
    sptr<IRemoteObject> second = Transfer(MakeStub(service_, u"test.Second", noting("second")), client_);
    // Takes an object of the sender's while the sender waits with the baton lent.
    auto sync = Transfer(MakeStub(third_, u"test.Sync",
                                  [&note](uint32_t, MessageParcel& data, MessageParcel&, auto&) {
                                      sptr<IRemoteObject> object = data.ReadRemoteObject();
                                      note(object != nullptr ? "sync with the object" : "sync without");
                                      return 0;
                                  }),
                         client_);
    auto callback = MakeStub(client_, u"test.Callback");
    {
        ScopedProcess scope(client_);
        Sequencer::Hold hold;
        for (int32_t i = 1; i <= 2; ++i) {
            EXPECT_EQ(Call(first, 1, i, nullptr, MessageOption::TF_ASYNC), ERR_NONE);
            EXPECT_EQ(Call(second, 1, i, nullptr, MessageOption::TF_ASYNC), ERR_NONE);
        }
        // Handed straight over and back, ahead of the one-way work already waiting.
        MessageParcel data;
        MessageParcel reply;
        MessageOption option;
        ASSERT_TRUE(data.WriteRemoteObject(callback));
        EXPECT_EQ(sync->SendRequest(1, data, reply, option), ERR_NONE);
        note("replied");
    }
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(kTimeout));
    EXPECT_THAT(journal,
                testing::ElementsAre("sync with the object", "replied", "first 1", "second 1", "first 2", "second 2"));
}

INSTANTIATE_TEST_SUITE_P(Transports, IpcTransportTest, testing::Values(Transport::IN_PROCESS, Transport::SOCKETS),
                         Name);

}  // namespace
}  // namespace Tarvo
