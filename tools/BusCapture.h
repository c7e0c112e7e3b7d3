// The capture files of mdvr-bus: pcapng (Wireshark, tshark), one packet per
// message that the bus routed, link type USER0; docs/mdvr-bus.lua dissects
// them. A packet is the routing's packet head (BusProtocol::PacketHead) and
// then the message as delivered: the 16-byte header and the body. Its time is
// the packet's timestamp, in microseconds.
#ifndef BUS_CAPTURE_H
#define BUS_CAPTURE_H

#include "BusProtocol.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace buscapture {

// A routed message: how it was routed (`missed` is not kept) and the message.
struct Routed : BusProtocol::Routing {
    std::string message; // header and body as delivered
};

const std::uint32_t kLinkType = 147; // LINKTYPE_USER0
const size_t kPacketMost = 8 + 2 * 0xFFFF + BusProtocol::kFrameMax;

template <class T> void Put(std::string& out, T value) { out.append(reinterpret_cast<const char*>(&value), sizeof value); }
using BusProtocol::Read;

inline std::string Packet(const Routed& r) { return BusProtocol::PacketHead(r) + r.message; }

// The inverse of Packet; false when the bytes are not such a packet.
inline bool ParsePacket(const char* data, size_t size, Routed& out)
{
    const size_t at = BusProtocol::ParsePacketHead(data, size, out);
    if (at == 0 || size < at + BusWire::kHeadSize ||
        (BusWire::ReadHead(data + at).length & BusWire::kBodyMax) != size - at - BusWire::kHeadSize)
        return false;
    out.message.assign(data + at, size - at);
    return true;
}

// Writes blocks: a section header and an interface, then a packet block
// per message.
class Writer {
public:
    explicit Writer(std::FILE* out) : out_(out) {}

    bool Start()
    {
        std::string section;
        Put<std::uint32_t>(section, 0x1A2B3C4D); // byte-order magic
        Put<std::uint16_t>(section, 1);          // version 1.0
        Put<std::uint16_t>(section, 0);
        Put<std::int64_t>(section, -1); // section length: not given
        std::string interface;
        Put<std::uint16_t>(interface, static_cast<std::uint16_t>(kLinkType));
        Put<std::uint16_t>(interface, 0);
        Put<std::uint32_t>(interface, 0); // no snapshot length
        return Block(0x0A0D0D0A, section) && Block(1, interface);
    }

    bool Write(const Routed& r)
    {
        const std::string packet = Packet(r);
        const unsigned long long time = static_cast<unsigned long long>(r.timeUs);
        std::string body;
        Put<std::uint32_t>(body, 0); // interface 0
        Put<std::uint32_t>(body, static_cast<std::uint32_t>(time >> 32));
        Put<std::uint32_t>(body, static_cast<std::uint32_t>(time));
        Put<std::uint32_t>(body, static_cast<std::uint32_t>(packet.size())); // captured
        Put<std::uint32_t>(body, static_cast<std::uint32_t>(packet.size())); // on the wire
        return Block(6, body + packet);
    }

private:
    bool Block(std::uint32_t type, std::string body)
    {
        body.resize((body.size() + 3) & ~size_t(3), '\0');
        const std::uint32_t length = static_cast<std::uint32_t>(body.size() + 12);
        std::string block;
        Put(block, type);
        Put(block, length);
        block += body;
        Put(block, length);
        return std::fwrite(block.data(), 1, block.size(), out_) == block.size();
    }
    std::FILE* out_;
};

// Reads a capture that Writer wrote (or that Wireshark saved again): every
// section little-endian, interfaces of link type USER0 with microsecond
// stamps; blocks of other types are skipped. False with a one-line reason
// for anything else, and for any length that does not add up.
inline bool Read(std::FILE* in, std::vector<Routed>& out, std::string& error)
{
    out.clear();
    long long offset = 0;
    bool inSection = false;
    size_t interfaces = 0;
    auto fail = [&](const std::string& why) {
        error = "block at offset " + std::to_string(offset) + ": " + why;
        return false;
    };
    for (;;) {
        char head[8];
        const size_t got = std::fread(head, 1, sizeof head, in);
        if (got == 0 && std::feof(in)) {
            if (!inSection) {
                error = "not a pcapng file: it is empty";
                return false;
            }
            return true;
        }
        if (got < sizeof head)
            return fail("cut short");
        const std::uint32_t type = Read<std::uint32_t>(head), length = Read<std::uint32_t>(head + 4);
        if (type == 0x0A0D0D0A) { // a section: its byte order and version
            char magic[4];
            if (std::fread(magic, 1, 4, in) != 4)
                return fail("cut short");
            if (Read<std::uint32_t>(magic) != 0x1A2B3C4D)
                return fail(Read<std::uint32_t>(magic) == 0x4D3C2B1A ? "big-endian sections are not read"
                                                                      : "bad byte-order magic");
            std::fseek(in, -4, SEEK_CUR);
            inSection = true;
            interfaces = 0;
        } else if (!inSection) {
            error = "not a pcapng file";
            return false;
        }
        if (length % 4 != 0 || length < 12)
            return fail("length " + std::to_string(length) + " is not a multiple of 4 of at least 12");
        if (length > kPacketMost + 64 * 1024)
            return fail("length " + std::to_string(length) + " is more than a bus message needs");
        std::string body(length - 12, '\0');
        char tail[4];
        if (std::fread(&body[0], 1, body.size(), in) != body.size() || std::fread(tail, 1, 4, in) != 4)
            return fail("cut short");
        if (Read<std::uint32_t>(tail) != length)
            return fail("trailing length " + std::to_string(Read<std::uint32_t>(tail)) + " is not " +
                        std::to_string(length));
        if (type == 1) { // an interface: ours, with the default stamps (no if_tsresol read)
            if (body.size() < 8 || Read<std::uint16_t>(body.data()) != kLinkType)
                return fail("an interface of another link type than USER0 (147)");
            for (size_t at = 8; at + 4 <= body.size();) { // options
                const std::uint16_t code = Read<std::uint16_t>(&body[at]), size = Read<std::uint16_t>(&body[at + 2]);
                if (code == 0)
                    break;
                if (code == 9 && (size != 1 || at + 5 > body.size() || body[at + 4] != 6))
                    return fail("time stamps in other units than microseconds");
                at += 4 + ((size + 3u) & ~3u);
            }
            ++interfaces;
        } else if (type == 6) { // a packet
            if (body.size() < 20)
                return fail("packet block too short");
            const std::uint32_t interface = Read<std::uint32_t>(body.data());
            const std::uint32_t captured = Read<std::uint32_t>(body.data() + 12);
            if (interface >= interfaces)
                return fail("packet of interface " + std::to_string(interface) + ", which is not described");
            if (captured > body.size() - 20 || captured != Read<std::uint32_t>(body.data() + 16))
                return fail("packet of " + std::to_string(captured) + " bytes does not fit its block or was cut");
            Routed r;
            if (!ParsePacket(body.data() + 20, captured, r))
                return fail("not a bus message");
            r.timeUs = static_cast<long long>((static_cast<unsigned long long>(Read<std::uint32_t>(body.data() + 4))
                                               << 32) |
                                              Read<std::uint32_t>(body.data() + 8));
            out.push_back(std::move(r));
        }
        offset += length;
    }
}

} // namespace buscapture

#endif
