// Descriptions of the mobile network, Ethernet, remote device node, serial and CAN records.
#ifndef NETWORK_PARAMS_H
#define NETWORK_PARAMS_H

#include "ParaNetworkRecords.h"
#include "ParaSteps.h"

namespace para {

// ---------------------------------------------------------------------------
// Mobile network.

template <class W> void Describe(W& w, paramBoHaoParam_t& r)
{
    PARA_TEXT(0, APN);
    PARA_TEXT(64, UN);
    PARA_TEXT(128, PW);
    PARA_TEXT(192, AN);
    PARA_FIELD(256, PM);
    PARA_FIELD(257, AM);
    PARA_FIELD(258, NM);
    PARA_FIELD(259, WLS);
    PARA_FIELD(260, EN);
    PARA_RESERVED(261, reserved0);
}

// The profiles are read by the exported profile parser, which reports a
// missing one and leaves it as it was.
template <class W> void Describe(W& w, tag_Msg3GSetting& r)
{
    PARA_FIELD(80, AT);
    PARA_TEXT(0, TN1);
    PARA_TEXT(16, TN2);
    PARA_TEXT(32, TN3);
    PARA_TEXT(48, CSN);
    PARA_TEXT(64, TSN);
    PARA_RESERVED(81, reserved0);
    PARA_SUBRECORD(192, MP, ParseBoHaoParamJson);
    PARA_SUBRECORD(460, M4G, ParseBoHaoParamJson);
    PARA_FIELD(728, G3MD);
    PARA_FIELD(729, G4MD);
    PARA_FIELD(730, AST);
    PARA_FIELD(732, ASE);
    PARA_RESERVED(733, reserved1);
}

// ---------------------------------------------------------------------------
// Wired network.

template <class W> void Describe(W& w, tag_MsgEtherNetSetting& r)
{
    PARA_FIELD(0, IPMODE);
    PARA_FIELD(1, DNSMODE);
    PARA_FIELD(2, GM);
    PARA_RESERVED(3, reserved0);
    PARA_GROUP("PIP", PARA_TEXT(8, IPADDR); PARA_TEXT(24, SUBMASK); PARA_TEXT(40, GATEWAY));
    PARA_RESERVED(56, reserved1);
    PARA_GROUP("DNS", PARA_TEXT(72, PDNS); PARA_TEXT(88, ADNS));
}

template <class W> void Describe(W& w, RemoteDevNode_t& r)
{
    PARA_FIELD(0, EN);
    PARA_FIELD(1, LOCK);
    PARA_RESERVED(2, reserved0);
    PARA_FIELD(3, RECHL);
    PARA_FIELD(4, ONLINE);
    PARA_FIELD(5, RETYPE);
    PARA_FIELD(6, PROTYPE);
    PARA_FIELD(7, IPTYPE);
    PARA_FIELD(8, CONTYPE);
    PARA_FIELD(9, SW);
    PARA_FIELD(10, REPORT);
    PARA_FIELD(168, CMDPORT);
    PARA_TEXT(12, REIP);
    PARA_TEXT(44, ID);
    PARA_TEXT(76, RENAME);
    PARA_TEXT(96, UESR);
    PARA_TEXT(116, PWD);
    PARA_TEXT(136, URL);
    PARA_RESERVED(170, reserved1);
}

// The "REDEV" section is the array of nodes itself.
template <class W> void Describe(W& w, tag_MsgRemoteDevNodeSetting& r)
{
    PARA_RESERVED(0, reserved0);
    PARA_ARRAY_SELF(8, REDEV);
}

template <class W> void Describe(W& w, PeripEnetPort_t& r)
{
    PARA_FIELD(0, FT);
    PARA_FIELD(20, PORT);
    PARA_FIELD(1, ST);
    PARA_FIELD(2, IOB);
    PARA_TEXT(4, IP);
    PARA_RESERVED(3, reserved0);
    PARA_RESERVED(22, reserved1);
}

template <class W> void Describe(W& w, tag_msgPeripEnetSetting& r) { PARA_ARRAY(0, PENA); }

// ---------------------------------------------------------------------------
// Field buses.

template <class W> void Describe(W& w, SerialSubChannel_t& r)
{
    PARA_FIELD(0, FT);
    PARA_FIELD(1, BR);
    PARA_FIELD(2, ST);
    PARA_RESERVED(3, reserved0);
}

template <class W> void Describe(W& w, SerialPort_t& r)
{
    PARA_FIELD(0, FT);
    PARA_FIELD(1, BR);
    PARA_FIELD(2, ST);
    PARA_RESERVED(3, reserved0);
    PARA_ARRAY(8, SES);
}

template <class W> void Describe(W& w, tag_MsgSerialSetting& r)
{
    PARA_FIELD(864, PFMM);
    PARA_ARRAY(0, SP);
}

template <class W> void Describe(W& w, CanChannel_t& r)
{
    PARA_FIELD(0, FT);
    PARA_FIELD(2, BR);
    PARA_FIELD(1, ST);
    PARA_RESERVED(3, reserved0);
    PARA_FIELD(4, CI);
    PARA_FIELD(8, UI);
    PARA_RESERVED(10, reserved1);
}

// "CD" holds the 64-bit values themselves.
template <class W> void Describe(W& w, tag_msgCanSetting& r)
{
    PARA_ARRAY(0, CA);
    PARA_ARRAY(80, CD);
}

} // namespace para

// The parameter types of this subsystem: X(type, section key, parser, record).
#define PARA_TYPES_NETWORK(X)                                                         \
    X(17, "M3G", Parse3GParamJson, tag_Msg3GSetting)                                  \
    X(22, "ETHERNET", ParseEtherNetParamJson, tag_MsgEtherNetSetting)                 \
    X(23, "REDEV", ParseRemoteDevNodeParamJson, tag_MsgRemoteDevNodeSetting)          \
    X(47, "PSS", ParseSerialParamJson, tag_MsgSerialSetting)                          \
    X(48, "CAN", ParseCanParamJson, tag_msgCanSetting)                                \
    X(49, "PEN", ParsePeripEtherNetParamJson, tag_msgPeripEnetSetting)

#endif
