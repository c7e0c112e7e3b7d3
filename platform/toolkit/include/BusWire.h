// What a recorder process sees of its message bus: the message header's
// masks, the client type, and the watchdog service's message ids and record.
// The library and every bus client include this file; how the development
// bus moves messages between processes is private to it (BusProtocol.h).
#ifndef BUS_WIRE_H
#define BUS_WIRE_H

#include "CommonToolkit.h"

#include <cstring>

/// The record that registers, feeds and unregisters a watchdog: the body of the watchdog
/// messages (BusWire::kDogRegister, BusWire::kDogFeed, BusWire::kDogUnregister, sent to
/// destination 0). 36 bytes on every target.
///
/// CMsgClientManage keeps one, filled from its constructor's arguments, and sends it when it is
/// made, from CMsgClientManage::MSGFeedWatchDog() and when it is destroyed; a process that uses
/// CMsgClientManage never fills one itself.
struct WatchDogInfo {
    char dogName[32];      ///< 32 raw bytes of the name, as given; they need not hold a NUL.
    /// Passed through to the watchdog service unchanged. The development bus (mdvr-busd) reads
    /// it as the watchdog's timeout in milliseconds, 0 meaning BusWire::kDogDefaultTimeoutMs
    /// (30000).
    unsigned int dogParam;
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

// The header of a message, from bytes that need not be aligned.
inline Common::SMessageHead ReadHead(const void* bytes)
{
    Common::SMessageHead head;
    std::memcpy(&head, bytes, sizeof head);
    return head;
}

inline void WriteHead(void* bytes, const Common::SMessageHead& head) { std::memcpy(bytes, &head, sizeof head); }

} // namespace BusWire

#endif
