// Descriptions of the mobile network, Ethernet, remote device node, serial and CAN records.
#ifndef NETWORK_PARAMS_H
#define NETWORK_PARAMS_H

#include "ParaNetworkRecords.h"
#include "ParaSteps.h"

// ---------------------------------------------------------------------------
// Mobile network.

PARA_RECORD(paramBoHaoParam_t,
    PARA_TEXT(0, APN),
    PARA_TEXT(64, UN),
    PARA_TEXT(128, PW),
    PARA_TEXT(192, AN),
    PARA_FIELD(256, PM),
    PARA_FIELD(257, AM),
    PARA_FIELD(258, NM),
    PARA_FIELD(259, WLS),
    PARA_FIELD(260, EN),
    PARA_RESERVED(261, reserved0));
PARA_PARSER(ParseBoHaoParamJson, paramBoHaoParam_t, .Empty("empty json when parse BoHaoParam!\n"))

// The profiles are read by the exported profile parser, which reports a
// missing one and leaves it as it was.
PARA_RECORD(tag_Msg3GSetting,
    PARA_FIELD(80, AT),
    PARA_TEXT(0, TN1),
    PARA_TEXT(16, TN2),
    PARA_TEXT(32, TN3),
    PARA_TEXT(48, CSN),
    PARA_TEXT(64, TSN),
    PARA_RESERVED(81, reserved0),
    PARA_SUBRECORD(192, MP, ParseBoHaoParamJson),
    PARA_SUBRECORD(460, M4G, ParseBoHaoParamJson),
    PARA_FIELD(728, G3MD),
    PARA_FIELD(729, G4MD),
    PARA_FIELD(730, AST),
    PARA_FIELD(732, ASE),
    PARA_RESERVED(733, reserved1));

// ---------------------------------------------------------------------------
// Wired network.

PARA_RECORD(tag_MsgEtherNetSetting,
    PARA_FIELD(0, IPMODE),
    PARA_FIELD(1, DNSMODE),
    PARA_FIELD(2, GM),
    PARA_RESERVED(3, reserved0),
    PARA_GROUP("PIP"),
        PARA_TEXT(8, IPADDR),
        PARA_TEXT(24, SUBMASK),
        PARA_TEXT(40, GATEWAY),
    PARA_END_GROUP(),
    PARA_RESERVED(56, reserved1),
    PARA_GROUP("DNS"),
        PARA_TEXT(72, PDNS),
        PARA_TEXT(88, ADNS),
    PARA_END_GROUP());

PARA_RECORD(RemoteDevNode_t,
    PARA_FIELD(0, EN),
    PARA_FIELD(1, LOCK),
    PARA_RESERVED(2, reserved0),
    PARA_FIELD(3, RECHL),
    PARA_FIELD(4, ONLINE),
    PARA_FIELD(5, RETYPE),
    PARA_FIELD(6, PROTYPE),
    PARA_FIELD(7, IPTYPE),
    PARA_FIELD(8, CONTYPE),
    PARA_FIELD(9, SW),
    PARA_FIELD(10, REPORT),
    PARA_FIELD(168, CMDPORT),
    PARA_TEXT(12, REIP),
    PARA_TEXT(44, ID),
    PARA_TEXT(76, RENAME),
    PARA_TEXT(96, UESR),
    PARA_TEXT(116, PWD),
    PARA_TEXT(136, URL),
    PARA_RESERVED(170, reserved1));

// The "REDEV" section is the array of nodes itself.
PARA_RECORD(tag_MsgRemoteDevNodeSetting,
    PARA_RESERVED(0, reserved0),
    PARA_ARRAY_SELF(8, REDEV));

PARA_RECORD(PeripEnetPort_t,
    PARA_FIELD(0, FT),
    PARA_FIELD(20, PORT),
    PARA_FIELD(1, ST),
    PARA_FIELD(2, IOB),
    PARA_TEXT(4, IP),
    PARA_RESERVED(3, reserved0),
    PARA_RESERVED(22, reserved1));

PARA_RECORD(tag_msgPeripEnetSetting,
    PARA_ARRAY(0, PENA));

// ---------------------------------------------------------------------------
// Field buses.

PARA_RECORD(SerialSubChannel_t,
    PARA_FIELD(0, FT),
    PARA_FIELD(1, BR),
    PARA_FIELD(2, ST),
    PARA_RESERVED(3, reserved0));

PARA_RECORD(SerialPort_t,
    PARA_FIELD(0, FT),
    PARA_FIELD(1, BR),
    PARA_FIELD(2, ST),
    PARA_RESERVED(3, reserved0),
    PARA_ARRAY(8, SES));

PARA_RECORD(tag_MsgSerialSetting,
    PARA_FIELD(864, PFMM),
    PARA_ARRAY(0, SP));

PARA_RECORD(CanChannel_t,
    PARA_FIELD(0, FT),
    PARA_FIELD(2, BR),
    PARA_FIELD(1, ST),
    PARA_RESERVED(3, reserved0),
    PARA_FIELD(4, CI),
    PARA_FIELD(8, UI),
    PARA_RESERVED(10, reserved1));

// "CD" holds the 64-bit values themselves.
PARA_RECORD(tag_msgCanSetting,
    PARA_ARRAY(0, CA),
    PARA_ARRAY(80, CD));

#endif
