// Mobile network and dial-up, Ethernet, peripheral Ethernet, remote device
// node, serial and CAN parameter records and their parsers. Offsets and sizes
// are those of the 32-bit ARM recorder and are checked at compile time; no
// record has implicit padding.
#ifndef PARA_NETWORK_RECORDS_H
#define PARA_NETWORK_RECORDS_H

#include "BSCommonExport.h"
#include "ParaAlarmRecords.h"

#include <json/value.h>

// ---------------------------------------------------------------------------
// Mobile network ("M3G") and its dial-up profiles.

// One dial-up profile ("MP" or "M4G").
typedef struct {
    char APN[64]; // access point name
    char UN[64];  // user name
    char PW[64];  // password, plain text
    char AN[64];
    unsigned char PM;
    unsigned char AM;
    unsigned char NM;
    unsigned char WLS;
    unsigned char EN; // enable
    unsigned char reserved0[7];
} paramBoHaoParam_t;
BSCOMMON_RECORD_SIZE(paramBoHaoParam_t, 268);

// "M3G"
struct tag_Msg3GSetting {
    char TN1[16];
    char TN2[16];
    char TN3[16];
    char CSN[16];
    char TSN[16];
    unsigned char AT;
    unsigned char reserved0[111];
    paramBoHaoParam_t MP;  // first modem
    paramBoHaoParam_t M4G; // second modem
    unsigned char G3MD;
    unsigned char G4MD;
    unsigned short AST;
    unsigned char ASE;
    unsigned char reserved1; // tail padding to the 2-byte alignment
};
BSCOMMON_RECORD_SIZE(tag_Msg3GSetting, 734);

// Reads one dial-up profile from the profile object itself: -1 without
// writing when it is empty or absent (logged), else 0.
BSCOMMON_API int ParseBoHaoParamJson(Json::Value const& object, paramBoHaoParam_t& record);
BSCOMMON_API int Parse3GParamJson(Json::Value const& doc, tag_Msg3GSetting& record);

// ---------------------------------------------------------------------------
// Wired network. Addresses are dotted text; the Ethernet and peripheral texts
// are byte arrays.

// "ETHERNET"
struct tag_MsgEtherNetSetting {
    unsigned char IPMODE;
    unsigned char DNSMODE;
    unsigned char GM;
    unsigned char reserved0[5];
    unsigned char IPADDR[16];  // "PIP"
    unsigned char SUBMASK[16]; // "PIP"
    unsigned char GATEWAY[16]; // "PIP"
    unsigned char reserved1[16];
    unsigned char PDNS[16]; // "DNS": primary
    unsigned char ADNS[16]; // "DNS": alternate
};
BSCOMMON_RECORD_SIZE(tag_MsgEtherNetSetting, 104);

// One remote device node (a network camera or similar) of "REDEV".
struct RemoteDevNode_t {
    unsigned char EN;
    char LOCK;
    unsigned char reserved0;
    unsigned char RECHL;
    unsigned char ONLINE;
    unsigned char RETYPE;
    unsigned char PROTYPE;
    unsigned char IPTYPE;
    unsigned char CONTYPE;
    unsigned char SW;
    unsigned short REPORT;
    char REIP[32]; // remote address
    char ID[32];
    char RENAME[20];
    char UESR[20]; // user name, read from the key spelled "UESR"
    char PWD[20];  // password, plain text
    char URL[32];
    unsigned short CMDPORT;
    unsigned char reserved1[30];
};
BSCOMMON_RECORD_SIZE(RemoteDevNode_t, 200);

// "REDEV" (the section is an array, one element per node)
struct tag_MsgRemoteDevNodeSetting {
    unsigned char reserved0[8];
    RemoteDevNode_t REDEV[16];
};
BSCOMMON_RECORD_SIZE(tag_MsgRemoteDevNodeSetting, 3208);

// One peripheral Ethernet port of "PENA".
struct PeripEnetPort_t {
    unsigned char FT;
    unsigned char ST;
    unsigned char IOB;
    unsigned char reserved0;
    unsigned char IP[16];
    unsigned short PORT;
    unsigned char reserved1[30];
};
BSCOMMON_RECORD_SIZE(PeripEnetPort_t, 52);

// "PEN"
struct tag_msgPeripEnetSetting {
    PeripEnetPort_t PENA[4];
};
BSCOMMON_RECORD_SIZE(tag_msgPeripEnetSetting, 208);

BSCOMMON_API int ParseEtherNetParamJson(Json::Value const& doc, tag_MsgEtherNetSetting& record);
BSCOMMON_API int ParseRemoteDevNodeParamJson(Json::Value const& doc, tag_MsgRemoteDevNodeSetting& record);
BSCOMMON_API int ParsePeripEtherNetParamJson(Json::Value const& doc, tag_msgPeripEnetSetting& record);

// ---------------------------------------------------------------------------
// Field buses.

// One sub-channel of a serial port ("SES").
struct SerialSubChannel_t {
    unsigned char FT;
    unsigned char BR; // baud-rate code
    unsigned char ST;
    unsigned char reserved0[5];
};
BSCOMMON_RECORD_SIZE(SerialSubChannel_t, 8);

// One serial port of "SP".
struct SerialPort_t {
    unsigned char FT;
    unsigned char BR; // baud-rate code
    unsigned char ST;
    unsigned char reserved0[5];
    SerialSubChannel_t SES[8];
};
BSCOMMON_RECORD_SIZE(SerialPort_t, 72);

// "PSS"
struct tag_MsgSerialSetting {
    SerialPort_t SP[12];
    unsigned char PFMM;
};
BSCOMMON_RECORD_SIZE(tag_MsgSerialSetting, 865);

// One CAN channel of "CA". Unlike a serial port, ST comes before BR.
struct CanChannel_t {
    unsigned char FT;
    unsigned char ST;
    unsigned char BR; // baud-rate code
    unsigned char reserved0;
    unsigned int CI;
    unsigned short UI;
    unsigned char reserved1[10];
};
BSCOMMON_RECORD_SIZE(CanChannel_t, 20);

// "CAN"
struct tag_msgCanSetting {
    CanChannel_t CA[4];
    unsigned long long CD[4];
};
BSCOMMON_RECORD_SIZE(tag_msgCanSetting, 112);

BSCOMMON_API int ParseSerialParamJson(Json::Value const& doc, tag_MsgSerialSetting& record);
BSCOMMON_API int ParseCanParamJson(Json::Value const& doc, tag_msgCanSetting& record);

#endif
