-- Wireshark dissector for the captures of `mdvr-bus capture` (docs/bus.md):
-- one packet per message that the development bus routed, link type USER0.
--
--   wireshark -X lua_script:docs/mdvr-bus.lua capture.pcapng
--   tshark -r capture.pcapng -X lua_script:docs/mdvr-bus.lua -T fields -e mdvrbus.event -e mdvrbus.body
--
-- or copy it to ~/.local/lib/wireshark/plugins/ to have it always. The
-- packet, little-endian: u8 version (1), u8 0, u16 the sending client, u16
-- the destination asked for, u16 N and N u16 clients it went to; then the
-- message as delivered: i32 sourceId, i32 session, u16 flags (the sending
-- client), u16 messageId (bit 15: a response), u32 length (bits 0-22 the
-- body's length), and the body.

local bus = Proto("mdvrbus", "MDVR development bus")

local f = {
    version = ProtoField.uint8("mdvrbus.version", "Version"),
    source = ProtoField.uint16("mdvrbus.source", "From client"),
    asked = ProtoField.uint16("mdvrbus.asked", "Destination asked"),
    targets = ProtoField.uint16("mdvrbus.targets", "Delivered to (clients)"),
    target = ProtoField.uint16("mdvrbus.target", "To client"),
    sourceid = ProtoField.int32("mdvrbus.sourceid", "Source module"),
    session = ProtoField.int32("mdvrbus.session", "Session"),
    flags = ProtoField.uint16("mdvrbus.flags", "Flags (sending client)"),
    event = ProtoField.uint16("mdvrbus.event", "Event", base.HEX),
    response = ProtoField.bool("mdvrbus.response", "Response", 16, nil, 0x8000),
    length = ProtoField.uint32("mdvrbus.length", "Body length", base.DEC, nil, 0x7FFFFF),
    body = ProtoField.bytes("mdvrbus.body", "Body"),
}
bus.fields = {f.version, f.source, f.asked, f.targets, f.target, f.sourceid, f.session, f.flags, f.event,
              f.response, f.length, f.body}

local malformed = ProtoExpert.new("mdvrbus.malformed", "Not a bus packet", expert.group.MALFORMED,
                                  expert.severity.ERROR)
bus.experts = {malformed}

function bus.dissector(buffer, pinfo, tree)
    pinfo.cols.protocol = "MDVR-BUS"
    local size = buffer:len()
    local item = tree:add(bus, buffer())
    if size < 8 or buffer(0, 1):uint() ~= 1 then
        item:add_proto_expert_info(malformed, "shorter than 8 bytes, or not version 1")
        return
    end
    item:add(f.version, buffer(0, 1))
    item:add_le(f.source, buffer(2, 2))
    item:add_le(f.asked, buffer(4, 2))
    local count = buffer(6, 2):le_uint()
    local list = item:add_le(f.targets, buffer(6, 2))
    local at = 8 + 2 * count
    if size < at + 16 then
        item:add_proto_expert_info(malformed, "shorter than its client list and a header")
        return
    end
    local to = {}
    for i = 0, count - 1 do
        list:add_le(f.target, buffer(8 + 2 * i, 2))
        to[#to + 1] = tostring(buffer(8 + 2 * i, 2):le_uint())
    end
    item:add_le(f.sourceid, buffer(at, 4))
    item:add_le(f.session, buffer(at + 4, 4))
    item:add_le(f.flags, buffer(at + 8, 2))
    item:add_le(f.event, buffer(at + 10, 2))
    item:add_le(f.response, buffer(at + 10, 2))
    item:add_le(f.length, buffer(at + 12, 4))
    local body = size - at - 16
    if body > 0 then
        item:add(f.body, buffer(at + 16, body))
    end
    if bit.band(buffer(at + 12, 4):le_uint(), 0x7FFFFF) ~= body then
        item:add_proto_expert_info(malformed, "the header's length is not the body's")
    end
    local event = buffer(at + 10, 2):le_uint()
    pinfo.cols.src = "client " .. buffer(2, 2):le_uint()
    pinfo.cols.dst = #to > 0 and table.concat(to, ",") or "nobody"
    pinfo.cols.info = string.format("event 0x%x%s %d -> %s length %d", bit.band(event, 0x7FFF),
                                    event >= 0x8000 and " response" or "", buffer(2, 2):le_uint(),
                                    #to > 0 and table.concat(to, ",") or "nobody", body)
end

DissectorTable.get("wtap_encap"):add(wtap.USER0, bus)
