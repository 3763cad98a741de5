#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

#include "ipc_types.h"
#include "transport_impl.h"

namespace Tarvo {
namespace {
struct Obituary {
    uint64_t handle;
    sptr<IPCObjectProxy> proxy;
    std::weak_ptr<SocketEndpoint> holder;
};

void SendObituaries(std::vector<Obituary>& obituaries)
{
    // Holders are told in the order their proxies were made, whatever the table's layout.
    std::sort(obituaries.begin(), obituaries.end(), [](const auto& a, const auto& b) { return a.handle < b.handle; });
    for (Obituary& obituary : obituaries) {
        std::vector<sptr<IRemoteObject::DeathRecipient>> recipients = obituary.proxy->MarkDead();
        std::shared_ptr<SocketEndpoint> holder = obituary.holder.lock();
        std::shared_ptr<VirtualProcess> session = holder ? holder->session.lock() : nullptr;
        if (recipients.empty() || session == nullptr) {
            continue;
        }
        sptr<IRemoteObject> proxy = obituary.proxy;
        session->Post([proxy, recipients = std::move(recipients)] {
            for (const auto& recipient : recipients) {
                recipient->OnRemoteDied(wptr<IRemoteObject>(proxy));
            }
        });
    }
}
}  // namespace

// The peer is gone: what it owned dies, what it held is released, whoever waits on it is woken.
// One-way requests it sent before it went are still delivered, as binder does.
void SocketTransport::Impl::CloseConnection(const std::shared_ptr<SocketConnection>& connection)
{
    std::vector<Obituary> obituaries;
    std::vector<sptr<IRemoteObject>> drops;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (connection->closed) {
            return;
        }
        connection->closed = true;
        if (connection->watchId != 0) {
            Unwatch(connection->watchId, connection->fd);
        }
        shutdown(connection->fd, SHUT_RDWR);
        if (std::shared_ptr<SocketEndpoint> endpoint = connection->endpoint.lock()) {
            endpoint->connections.erase(connection);
            auto chosen = endpoint->peers.find(connection->peerPid);
            if (chosen != endpoint->peers.end() && chosen->second == connection) {
                endpoint->peers.erase(chosen);
            }
        }
        if (connection->inProcess && !connection->callChannel) {
            // What was written to it and not read will never be handled.
            std::shared_ptr<SocketEndpoint> own = connection->endpoint.lock();
            const int32_t ownPid = own != nullptr ? own->identity.pid : 0;
            std::erase_if(handedOver_, [&](const auto& entry) {
                return entry.first.first == connection->peerPid || entry.first.first == ownPid;
            });
        }
        WakeWaitersLocked(*connection);
        for (auto& [handle, entry] : handles_) {
            if (entry.connection == connection && !entry.dead) {
                entry.dead = true;
                if (sptr<IPCObjectProxy> proxy = entry.proxy.promote()) {
                    obituaries.push_back({handle, std::move(proxy), entry.holder});
                }
            }
        }
        for (auto& [cookie, node] : nodes_) {
            node.holders.erase(connection.get());
            if (node.published == 0 && !StrongHeldLocked(node)) {
                drops.push_back(std::move(node.strongHold));
            }
        }
        for (auto& [key, holds] : connection->pendingFree) {
            drops.insert(drops.end(), holds.begin(), holds.end());
        }
        connection->pendingFree.clear();
    }
    SendObituaries(obituaries);
}

void SocketTransport::Impl::WakeWaitersLocked(const SocketConnection& connection)
{
    for (auto& [id, waiter] : waiters_) {
        if (waiter->connection == &connection && !waiter->done) {
            waiter->done = true;
            waiter->status = ERR_DEAD_OBJECT;
            waiter->woken.notify_all();
        }
    }
}

void SocketTransport::Impl::OnEnded(const std::shared_ptr<SocketConnection>& connection)
{
    // Nobody tells of the end of a well-known name's holder (the device itself): it counts at once.
    if (!deathsWhenTold_ || connection->inProcess || connection->toName) {
        CloseConnection(connection);
        return;
    }
    // What the peer's death does runs when the device says, at the same point on every run.
    std::lock_guard<std::mutex> lock(mutex_);
    if (connection->closed || connection->ended) {
        return;
    }
    connection->ended = true;
    if (connection->watchId != 0) {
        Unwatch(connection->watchId, connection->fd);
        connection->watchId = 0;
    }
    WakeWaitersLocked(*connection);
}

void SocketTransport::Impl::PeerDied(int32_t pid)
{
    std::vector<std::shared_ptr<SocketConnection>> closing;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        for (const auto& [session, endpoint] : endpoints_) {
            for (const auto& connection : endpoint->connections) {
                if (connection->peerPid == pid && !connection->inProcess) {
                    closing.push_back(connection);
                }
            }
        }
    }
    for (const auto& connection : closing) {
        CloseConnection(connection);
    }
}

void SocketTransport::Impl::CloseEndpoint(const std::shared_ptr<SocketEndpoint>& endpoint)
{
    std::vector<std::shared_ptr<SocketConnection>> closing;
    std::vector<sptr<IRemoteObject>> dropped;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        endpoint->closed = true;
        closing.assign(endpoint->connections.begin(), endpoint->connections.end());
        if (endpoint->listenFd >= 0) {
            Unwatch(endpoint->listenWatch, endpoint->listenFd);
            unlink((options_.runDir + "/sock/" + std::to_string(endpoint->identity.pid)).c_str());
            close(endpoint->listenFd);
            endpoint->listenFd = -1;
        }
        if (endpoint->callsFd >= 0) {
            Unwatch(endpoint->callsWatch, endpoint->callsFd);
            unlink(CallsPath(endpoint->identity.pid).c_str());
            close(endpoint->callsFd);
            endpoint->callsFd = -1;
        }
        for (auto binding = named_.begin(); binding != named_.end();) {
            if (binding->second.endpoint.lock() != endpoint) {
                ++binding;
                continue;
            }
            dropped.push_back(CloseBindingLocked(binding->first, binding->second));
            binding = named_.erase(binding);
        }
        // Peers in this real process learn of the death at once, not when their reads get to it.
        for (const auto& [session, other] : endpoints_) {
            for (const auto& connection : other->connections) {
                if (other != endpoint && connection->inProcess && connection->peerPid == endpoint->identity.pid) {
                    closing.push_back(connection);
                }
            }
        }
    }
    for (const auto& connection : closing) {
        CloseConnection(connection);
    }
}

void SocketTransport::Impl::OnKilled(VirtualProcess& killed)
{
    std::shared_ptr<SocketEndpoint> endpoint;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto found = endpoints_.find(&killed);
        if (found == endpoints_.end()) {
            return;
        }
        endpoint = found->second;
    }
    CloseEndpoint(endpoint);
}

}  // namespace Tarvo
