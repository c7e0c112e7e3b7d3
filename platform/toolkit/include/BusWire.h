// The wire of the recorder's message bus, stated once: the message header's
// fields and masks, the client type, the watchdog service's message ids and
// record, and the commands of the development bus (docs/bus.md). The library,
// the host libtoolkit, the daemon mdvr-busd and the tools all include this
// file; nothing else spells any of it out.
#ifndef BUS_WIRE_H
#define BUS_WIRE_H

#include "CommonToolkit.h"

#include <chrono>
#include <cstdint>
#include <cstring>

// The record that registers, feeds and unregisters a watchdog: the body of
// the watchdog messages below.
struct WatchDogInfo {
    char dogName[32];      // 32 raw bytes of the name; need not hold a NUL
    unsigned int dogParam; // passed through to the watchdog service
};
static_assert(sizeof(WatchDogInfo) == 36, "size of WatchDogInfo");

namespace BusWire {

// The client type that every process of the recorder connects with.
const unsigned int kClientType = 30;

// Header: Common::SMessageHead, 16 bytes, then the body.
const unsigned int kHeadSize = sizeof(Common::SMessageHead);
static_assert(kHeadSize == 16, "the bus message header is 16 bytes");
const unsigned int kBodyMax = 0x7FFFFF;   // the 23-bit body length field of `length`
const unsigned int kResponseBit = 0x8000; // in messageId: a response

// The watchdog service: messages to destination 0 with these ids and a
// WatchDogInfo as body.
const int kDogFeed = 3;
const int kDogRegister = 6;
const int kDogUnregister = 7;
const unsigned int kDogNameSize = sizeof(WatchDogInfo::dogName);
const unsigned int kDogRecordSize = sizeof(WatchDogInfo);
const unsigned int kDogDefaultTimeoutMs = 30000; // dogParam 0

// The development bus between a client and mdvr-busd. A bus message (header
// + body) travels as a ZeroMQ message of one frame, both ways; one whose
// messageId has the response bit is a response, for the client that its
// flags name. Anything else is a command: a first frame, shorter than a
// header, naming it, then its arguments.
const char* const kHello = "HELLO"; // client -> bus: pid (i32), client type (u32)
const char* const kBye = "BYE";     // client -> bus, bus -> client (acknowledged)
const char* const kSub = "SUB";     // client -> bus: event (i32, 0..0xFFFF)
const char* const kUnsub = "UNSUB"; // client -> bus: event (i32)
const char* const kDogs = "DOGS";   // client -> bus; bus -> client: JSON array

inline Common::SMessageHead ReadHead(const void* bytes)
{
    Common::SMessageHead head;
    std::memcpy(&head, bytes, sizeof head);
    return head;
}

inline void WriteHead(void* bytes, const Common::SMessageHead& head) { std::memcpy(bytes, &head, sizeof head); }

inline std::int32_t ReadInt(const void* bytes)
{
    std::int32_t value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

// Milliseconds of the monotonic clock: the bus's timeouts and the watchdogs.
inline long long Now()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

} // namespace BusWire

#endif
