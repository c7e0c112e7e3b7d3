#include "Clients.h"

namespace busd {

namespace {

// ZeroMQ numbers the connections of a socket in the order they come: of two
// routing ids, the longer or else the larger is the later connection.
bool Later(const std::string& a, const std::string& b)
{
    return a.size() != b.size() ? a.size() > b.size() : a > b;
}

} // namespace

ClientId Clients::Known(const std::string& routing) const
{
    auto known = byRouting_.find(routing);
    return known == byRouting_.end() ? 0 : known->second;
}

ClientId Clients::Admit(const std::string& routing, int fd, unsigned long long inode, bool& stale, ClientId& replaced)
{
    stale = false;
    replaced = 0;
    if (const ClientId known = Known(routing))
        return known;
    if (fd >= 0) {
        auto retired = retired_.find(fd);
        auto holder = byFd_.find(fd);
        stale = inode == 0 || (retired != retired_.end() && !Later(routing, retired->second)) ||
                (holder != byFd_.end() && !Later(routing, clients_[holder->second].routing));
        if (stale)
            return 0;
        if (holder != byFd_.end())
            replaced = holder->second; // its socket has been closed: the descriptor is another's now
    }
    if (replaced == 0 && clients_.size() >= kMost)
        return 0;
    if (replaced != 0) // the caller forgets the rest of it
        Detach(replaced);
    do
        next_ = static_cast<ClientId>(next_ == 0xFFFF ? 1 : next_ + 1);
    while (clients_.count(next_));
    Client& client = clients_[next_];
    client.routing = routing;
    client.fd = fd;
    client.inode = inode;
    byRouting_[routing] = next_;
    if (fd >= 0)
        byFd_[fd] = next_;
    return next_;
}

ClientId Clients::Ended(int fd, unsigned long long inode) const
{
    auto holder = byFd_.find(fd);
    if (holder == byFd_.end())
        return 0;
    auto client = clients_.find(holder->second);
    return client != clients_.end() && client->second.inode != inode ? holder->second : 0;
}

void Clients::Detach(ClientId id)
{
    auto found = clients_.find(id);
    if (found == clients_.end() || found->second.gone)
        return;
    Client& client = found->second;
    client.gone = true;
    auto routed = byRouting_.find(client.routing);
    if (routed != byRouting_.end() && routed->second == id)
        byRouting_.erase(routed);
    auto holder = byFd_.find(client.fd);
    if (holder != byFd_.end() && holder->second == id) {
        byFd_.erase(holder);
        retired_[client.fd] = client.routing;
    }
}

void Clients::Erase(ClientId id)
{
    Detach(id);
    clients_.erase(id);
}

Client* Clients::Find(ClientId id)
{
    auto found = clients_.find(id);
    return found == clients_.end() ? nullptr : &found->second;
}

} // namespace busd
