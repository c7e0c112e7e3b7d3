// The bus's router: which clients are connected, what each one subscribed,
// and where a message goes (docs/bus.md). It works on frames already
// received and says what to send; the daemon's loop moves the frames.
//
// Clients are named by ids of 16 bits, given on a client's first message and
// free again once it is gone: after its goodbye, when its connection ends, or
// when a send finds it gone. A connection is known by its ZeroMQ routing id
// and by the descriptor and inode of its socket, so that a message that was
// still queued from a closed connection is not taken for a new client.
#ifndef BUSD_ROUTER_H
#define BUSD_ROUTER_H

#include "Watchdog.h"

#include <cstddef>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace busd {

typedef unsigned short ClientId;

struct Client {
    std::string routing; // ZeroMQ routing id of its connection
    int fd = -1;         // and the socket under it
    unsigned long long inode = 0;
    int pid = 0;
    unsigned int type = 0;
    std::set<int> events;
    bool congested = false;
    unsigned long long dropped = 0;
};

struct Frame {
    char* data;
    size_t size;
};

// What to do with a message after the router has seen it.
struct Verdict {
    enum Action { kNothing, kDeliver, kReply, kClose };
    Action action = kNothing;
    // kDeliver: the frame (its header rewritten in place) to each of these.
    const std::vector<ClientId>* targets = nullptr;
    Frame* frame = nullptr;
    // kReply: a command, with `payload` unless it is null, to the sender.
    const char* reply = nullptr;
    const std::string* payload = nullptr;
    // kReply: the sender said goodbye; forget it once the reply is sent.
    bool thenForget = false;
};

class Router {
public:
    static const size_t kMostClients = 0xFFFF;

    explicit Router(Watchdog& watchdog) : watchdog_(watchdog) {}

    // The client of the connection with this routing id, 0 when unknown.
    ClientId Known(const std::string& routing) const;
    // A new client for the connection that a message came from. 0 when the
    // message is a leftover of a closed connection (`stale` set) or when
    // every id is taken.
    ClientId Admit(const std::string& routing, int fd, unsigned long long inode, bool& stale);
    // The connection on descriptor `fd` ended; `inode` is what the
    // descriptor holds now (0: closed).
    void Disconnected(int fd, unsigned long long inode);
    // Forgets a client: its subscriptions end, its watchdogs are orphaned and
    // its id is free again.
    void Forget(ClientId id);
    Client* Find(ClientId id);
    size_t size() const { return clients_.size(); }

    // A message of `count` frames (after the routing id) from `sender`.
    Verdict Handle(ClientId sender, Frame* frames, size_t count);

private:
    Verdict Route(ClientId sender, Frame& frame);
    Verdict Bad(ClientId sender, const char* format, ...) __attribute__((format(printf, 3, 4)));
    void Unsubscribe(ClientId id, int event);

    Watchdog& watchdog_;
    ClientId next_ = 0;
    std::unordered_map<ClientId, Client> clients_;
    std::unordered_map<std::string, ClientId> byRouting_;
    std::unordered_map<int, ClientId> byFd_;
    std::unordered_map<int, std::string> retired_; // fd -> routing id of the last client forgotten there
    std::unordered_map<int, std::set<ClientId>> subscribers_;
    std::vector<ClientId> targets_;
    std::string answer_;
};

} // namespace busd

#endif
