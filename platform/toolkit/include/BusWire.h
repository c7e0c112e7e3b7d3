// The wire of the development bus (docs/bus.md): shared by the host libtoolkit
// client, the daemon mdvr-busd and the tools. Not part of the vendor's
// interface: the library never includes this file.
#ifndef BUS_WIRE_H
#define BUS_WIRE_H

#include "CommonToolkit.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace BusWire {

// Where the bus listens when nothing else is said.
const unsigned short kDefaultPort = 7931;
// Overrides the default: a port number, or a ZeroMQ endpoint such as
// "ipc:///tmp/mdvr.bus" or "tcp://127.0.0.1:7000".
const char* const kEnvironment = "MDVR_BUS";

// A bus message (header + body, at least 16 bytes) travels as a message of
// one frame, both ways. Anything else is a command: a first frame, shorter
// than a header, naming it, then its arguments.
const char* const kHello = "HELLO";  // client -> bus: pid (i32), client type (u32)
const char* const kBye = "BYE";      // client -> bus, bus -> client (acknowledged)
const char* const kSub = "SUB";      // client -> bus: event (i32)
const char* const kUnsub = "UNSUB";  // client -> bus: event (i32)
const char* const kRsp = "RSP";      // client -> bus: a response, header + body
const char* const kDogs = "DOGS";    // client -> bus; bus -> client: JSON array

const unsigned int kHeadSize = sizeof(Common::SMessageHead);
const unsigned int kBodyMax = 0x7FFFFF; // the 23-bit length field
const unsigned int kResponseBit = 0x8000;

// The watchdog service: messages to destination 0 with these ids and the
// 36-byte record (32-byte name, u32 dogParam).
const int kDogFeed = 3;
const int kDogRegister = 6;
const int kDogUnregister = 7;
const unsigned int kDogRecordSize = 36;
const unsigned int kDogDefaultTimeoutMs = 30000; // dogParam 0

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

inline bool IsEndpoint(const std::string& text)
{
    return text.compare(0, 6, "tcp://") == 0 || text.compare(0, 6, "ipc://") == 0;
}

// The endpoint a client connects to: `port` when non-zero, else the
// environment's MDVR_BUS, else the default port. Empty when MDVR_BUS is
// neither a port nor an endpoint.
inline std::string ClientEndpoint(const char* address, short port)
{
    unsigned int number = static_cast<unsigned short>(port);
    const char* environment = std::getenv(kEnvironment);
    if (number == 0 && environment != nullptr && *environment != '\0') {
        if (IsEndpoint(environment))
            return environment;
        char* end = nullptr;
        const unsigned long value = std::strtoul(environment, &end, 10);
        if (*end != '\0' || value == 0 || value > 65535)
            return std::string();
        number = static_cast<unsigned int>(value);
    }
    if (number == 0)
        number = kDefaultPort;
    const std::string host = (address != nullptr && *address != '\0') ? address : "127.0.0.1";
    return "tcp://" + host + ":" + std::to_string(number);
}

} // namespace BusWire

#endif
