// The bus's client table: ids of 16 bits, the connection each one stands
// for, and what the daemon keeps per client (docs/bus.md).
//
// A client gets an id with its first message and gives it back once it is
// gone: after its goodbye, when its connection ends, or when a send finds it
// gone. A connection is known by its ZeroMQ routing id and by the descriptor
// and inode of its socket, so that a message that was still queued from a
// closed connection is not taken for a new client.
#ifndef BUSD_CLIENTS_H
#define BUSD_CLIENTS_H

#include <zmq.hpp>

#include <deque>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace busd {

typedef unsigned short ClientId;

// Messages and bytes, of credit or of what is held.
struct Amount {
    unsigned int messages = 0;
    unsigned long long bytes = 0;
    void Add(size_t size) { ++messages, bytes += size; }
};

// A message of a sender that waits for the credit of one of its receivers.
struct Pending {
    zmq::message_t message;
    unsigned short asked;
    std::vector<ClientId> targets;
};

struct Client {
    // The connection.
    std::string routing; // ZeroMQ routing id
    int fd = -1;         // and the socket under it
    unsigned long long inode = 0;
    // What it said of itself.
    int pid = 0;
    unsigned int type = 0;
    std::string name;
    std::set<int> events;  // subscribed
    bool monitor = false;  // gets a copy of what is routed
    std::set<int> watched; // a monitor's events; empty: all
    bool gone = false;     // forgotten, but messages of its own still wait to go out

    // As a receiver: what is in flight to it and not yet taken.
    Amount inflight;
    long long progress = 0;    // when it last took something, or began to have something to take
    bool congested = false;
    unsigned long long dropped = 0; // messages (or copies) not sent to it
    unsigned int missed = 0;   // a monitor's copies dropped since its last one
    bool waitSent = false;     // a WAIT is on its way to it
    std::set<ClientId> blocking; // senders whose next message waits for its credit
    // As a sender: its messages that the daemon holds.
    std::deque<Pending> inbox; // waiting for credit, oldest first
    Amount held;               // in the inbox, or passed on and not yet returned with ROOM
    Amount freed;              // passed on, to be returned
    bool wantsRoom = false;    // it waits for credit: return what is freed at once
};

class Clients {
public:
    static const size_t kMost = 0xFFFF;

    // The client of the connection with this routing id, 0 when unknown.
    ClientId Known(const std::string& routing) const;
    // A new client for the connection that a message came from. 0 when the
    // message is a leftover of a closed connection (`stale` set) or when
    // every id is taken. `replaced`: the client that held the descriptor
    // before, whose socket has been closed (0: none); it is detached.
    ClientId Admit(const std::string& routing, int fd, unsigned long long inode, bool& stale, ClientId& replaced);
    // The client whose connection was on `fd`, when the descriptor now holds
    // `inode` (0: closed) and so another socket or none; else 0.
    ClientId Ended(int fd, unsigned long long inode) const;
    // Its connection is no longer its own: a new connection may reuse the
    // routing id and the descriptor. The record stays until Erase.
    void Detach(ClientId id);
    void Erase(ClientId id);

    Client* Find(ClientId id);
    size_t size() const { return clients_.size(); }
    std::map<ClientId, Client>& all() { return clients_; }

private:
    ClientId next_ = 0;
    std::map<ClientId, Client> clients_;
    std::unordered_map<std::string, ClientId> byRouting_;
    std::unordered_map<int, ClientId> byFd_;
    std::unordered_map<int, std::string> retired_; // fd -> routing id of the last client detached there
};

} // namespace busd

#endif
