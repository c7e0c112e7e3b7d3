// The development bus between a client (ZeroMQ DEALER) and mdvr-busd
// (ROUTER), stated once for the host libtoolkit, the daemon and the tools
// (docs/bus.md). Not installed: a recorder process sees only BusWire.h.
//
// A bus message (header + body) travels as a ZeroMQ message of one frame,
// both ways; towards the daemon its flags field names the destination. One
// whose messageId has the response bit is a response. Anything else is a
// command: a first frame shorter than a header naming it, then its argument
// frames, of the sizes below.
//
// Flow control is by credit, both ways. A client may have kWindowMessages
// messages and kWindowBytes bytes sent that the daemon has not yet passed on
// (ROOM returns them); the daemon may have as much in flight to a client that
// its process has not yet taken (TOOK returns it). A side that waits for
// credit says WAIT, and the other returns what it can at once.
#ifndef BUS_PROTOCOL_H
#define BUS_PROTOCOL_H

#include "BusWire.h"

#include <zmq.hpp>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

// The bus's log lines, in the daemon, the host libtoolkit and the tools.
#define BUS_LOG(level, ...) Common::gclDebugPrintf(level, __FILE_NAME__, __func__, __LINE__, __VA_ARGS__)

namespace BusProtocol {

// --- commands -------------------------------------------------------------------
enum class Command : unsigned char {
    kHello,   // client -> bus: Hello
    kBye,     // client -> bus; bus -> client: its receipt
    kSub,     // client -> bus: Event
    kUnsub,   // client -> bus: Event
    kDogs,    // client -> bus; bus -> client: JSON array of the watchdogs
    kList,    // client -> bus; bus -> client: JSON array of the clients
    kMonitor, // client -> bus: the events to copy as i32 each, none for all
    kRouted,  // bus -> monitor: RoutedRecord, then the message as delivered
    kTook,    // client -> bus: Credit, what the process has taken
    kRoom,    // bus -> client: Credit, what the daemon has passed on
    kWait,    // both ways: waiting for credit; return what you can now
    kCount,
    kUnknown = kCount,
};

const char* const kNames[] = {"HELLO", "BYE", "SUB", "UNSUB", "DOGS", "LIST", "MONITOR", "ROUTED", "TOOK", "ROOM",
                              "WAIT"};
static_assert(sizeof kNames / sizeof kNames[0] == static_cast<size_t>(Command::kCount), "a name per command");

inline const char* Name(Command command) { return kNames[static_cast<size_t>(command)]; }

// The command that a first frame names, kUnknown for none.
inline Command Named(const void* data, size_t size)
{
    for (size_t i = 0; i < static_cast<size_t>(Command::kCount); ++i)
        if (std::strlen(kNames[i]) == size && std::memcmp(kNames[i], data, size) == 0)
            return static_cast<Command>(i);
    return Command::kUnknown;
}

// --- arguments (little-endian, as the structures lie in memory) -------------------
struct Hello {
    std::int32_t pid;
    std::uint32_t type;
    char name[16]; // the process's name, NUL-padded
};
static_assert(sizeof(Hello) == 24, "HELLO argument");

struct Event {
    std::int32_t event; // 0..0xFFFF
};
static_assert(sizeof(Event) == 4, "SUB/UNSUB argument");

struct Credit {
    std::uint32_t messages;
    std::uint32_t bytes;
};
static_assert(sizeof(Credit) == 8, "TOOK/ROOM argument");

template <class T> T Read(const void* bytes)
{
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

// The keys of the lists that DOGS and LIST answer with, JSON arrays of objects.
namespace Keys {
// DOGS: one object per watchdog.
const char* const kName = "name"; // also of a client: its process's name
const char* const kPid = "pid";   // also of a client
const char* const kClient = "client";
const char* const kTimeoutMs = "timeoutMs";
const char* const kSinceFeedMs = "sinceFeedMs";
const char* const kLapsed = "lapsed";
// LIST: one object per client.
const char* const kId = "id";
const char* const kEvents = "events";
const char* const kQueuedMessages = "queuedMessages"; // in flight to it, or waiting for its credit
const char* const kQueuedBytes = "queuedBytes";
const char* const kCongested = "congested";
const char* const kDropped = "dropped";
const char* const kMonitor = "monitor";
const char* const kDogs = "dogs"; // the names of its watchdogs
} // namespace Keys

// How the daemon routed a message: what a monitor gets before each copy
// (ROUTED), and what a capture file keeps beside the message.
struct Routing {
    long long timeUs = 0;                // wall clock, microseconds since the epoch
    unsigned int missed = 0;             // copies dropped for this monitor since its last one
    unsigned short source = 0;           // the sending client
    unsigned short asked = 0;            // the destination it asked for (0: every subscriber)
    std::vector<unsigned short> targets; // the clients it went to
};

// The packet head, as a capture file holds it: u8 version 1, u8 0, u16 the
// source, u16 the destination asked, u16 N, then N u16 targets.
inline std::string PacketHead(const Routing& r)
{
    std::string out(8 + 2 * r.targets.size(), '\0');
    const std::uint16_t fields[3] = {r.source, r.asked, static_cast<std::uint16_t>(r.targets.size())};
    out[0] = 1;
    std::memcpy(&out[2], fields, sizeof fields);
    if (!r.targets.empty())
        std::memcpy(&out[8], r.targets.data(), 2 * r.targets.size());
    return out;
}

// Reads a packet head into `r`: its length, 0 when the bytes are not one.
inline size_t ParsePacketHead(const char* data, size_t size, Routing& r)
{
    if (size < 8 || data[0] != 1)
        return 0;
    const size_t count = Read<std::uint16_t>(data + 6), length = 8 + 2 * count;
    if (size < length)
        return 0;
    r.source = Read<std::uint16_t>(data + 2);
    r.asked = Read<std::uint16_t>(data + 4);
    r.targets.resize(count);
    if (count)
        std::memcpy(r.targets.data(), data + 8, 2 * count);
    return length;
}

// ROUTED's record: u32 seconds and u32 microseconds of `timeUs`, u32
// `missed`, then the packet head.
const size_t kRecordTime = 12;
inline std::string RoutedRecord(const Routing& r)
{
    const std::uint32_t time[3] = {static_cast<std::uint32_t>(r.timeUs / 1000000),
                                   static_cast<std::uint32_t>(r.timeUs % 1000000), r.missed};
    return std::string(reinterpret_cast<const char*>(time), sizeof time) + PacketHead(r);
}
inline bool ParseRoutedRecord(const char* data, size_t size, Routing& r)
{
    if (size < kRecordTime || ParsePacketHead(data + kRecordTime, size - kRecordTime, r) != size - kRecordTime)
        return false;
    r.timeUs = Read<std::uint32_t>(data) * 1000000LL + Read<std::uint32_t>(data + 4);
    r.missed = Read<std::uint32_t>(data + 8);
    return true;
}

// --- the header by direction ------------------------------------------------------
// As a client sends a message: the flags field holds the destination client.
inline Common::SMessageHead Outgoing(int module, int session, int destination, int event, long long length)
{
    return {module, session, static_cast<unsigned short>(destination), static_cast<unsigned short>(event),
            static_cast<unsigned int>(length)};
}

// A response to `request`: its module and session come back, and its flags
// field (the requesting client) tells the daemon where the response goes.
inline Common::SMessageHead Response(const Common::SMessageHead& request, unsigned int length)
{
    return Outgoing(request.sourceId, request.session, request.flags, request.messageId | BusWire::kResponseBit,
                    length);
}

// As the daemon delivers it: the flags field holds the sending client, and
// the length only the body's length.
inline void Deliverable(Common::SMessageHead& head, unsigned short sender)
{
    head.flags = sender;
    head.length &= BusWire::kBodyMax;
}

inline bool IsResponse(const Common::SMessageHead& head) { return (head.messageId & BusWire::kResponseBit) != 0; }

// --- limits and clocks ------------------------------------------------------------
const size_t kFrameMax = BusWire::kHeadSize + BusWire::kBodyMax; // the largest bus message
const unsigned int kWindowMessages = 1024;   // credit, each way, per client
const unsigned int kWindowBytes = 8u << 20;   // ... and in bytes (one delivery more when nothing is in flight)
const int kTookMs = 100;        // a client reports what it took at least this often
const int kCongestionMs = 500;  // a client that takes nothing for this long is congested
const int kSendTimeoutMs = 1000;    // a send waits this long for credit or a connection
const int kConnectTimeoutMs = 3000; // a client's creation fails when no daemon answers by then
const int kByeTimeoutMs = 500;      // destruction waits this long for the daemon's receipt
const int kHandshakeMs = 500;       // the daemon closes a connection that has not greeted by then
const int kMonitorMs = 100;         // connection events are read this often

// Whether `bytes` more fit beside `held` in flight: always when nothing is.
inline bool Fits(unsigned int heldMessages, unsigned long long heldBytes, size_t bytes)
{
    return heldMessages == 0 || (heldMessages < kWindowMessages && heldBytes + bytes <= kWindowBytes);
}

// Milliseconds of the monotonic clock: the bus's timeouts and the watchdogs.
inline long long Now()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

// --- sockets ----------------------------------------------------------------------
// Receives one ZeroMQ message into frames[0..N-1]; frames past N-1 are read
// into the last one. The number of frames, 0 when none came.
template <size_t N> size_t ReceiveFrames(zmq::socket_t& socket, zmq::message_t (&frames)[N],
                                         zmq::recv_flags flags = zmq::recv_flags::none)
{
    if (!socket.recv(frames[0], flags))
        return 0;
    size_t count = 1;
    for (bool more = frames[0].more(); more; ++count) {
        zmq::message_t& frame = frames[std::min(count, N - 1)];
        (void)socket.recv(frame); // the parts of a message arrive together
        more = frame.more();
    }
    return count;
}

// One event of a socket monitor: its id, its value and the address. False
// when none came within `timeout` ms.
struct SocketEvent {
    std::uint16_t id = 0;
    std::uint32_t value = 0;
    std::string address;
};
inline bool ReadSocketEvent(zmq::socket_t& monitor, int timeout, SocketEvent& event)
{
    zmq::pollitem_t item{static_cast<void*>(monitor), 0, ZMQ_POLLIN, 0};
    if (zmq::poll(&item, 1, std::chrono::milliseconds(timeout)) <= 0)
        return false;
    zmq::message_t frames[2];
    if (ReceiveFrames(monitor, frames) < 2)
        return false;
    event = SocketEvent();
    if (frames[0].size() >= 6) {
        std::memcpy(&event.id, frames[0].data(), sizeof event.id);
        std::memcpy(&event.value, static_cast<char*>(frames[0].data()) + 2, sizeof event.value);
    }
    event.address = frames[1].to_string();
    return true;
}

} // namespace BusProtocol

#endif
