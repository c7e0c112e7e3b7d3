/// @file
/// Mobile network and dial-up, Ethernet, peripheral Ethernet, remote device
/// node, serial and CAN parameter records and their parsers. Offsets and sizes
/// are those of the 32-bit ARM recorder and are checked at compile time; no
/// record has implicit padding.
#ifndef PARA_NETWORK_RECORDS_H
#define PARA_NETWORK_RECORDS_H

#include "BSCommonExport.h"
#include "ParaAlarmRecords.h"

#include <json/value.h>

// ---------------------------------------------------------------------------
// Mobile network ("M3G") and its dial-up profiles.

/// One dial-up profile ("MP" or "M4G").
typedef struct {
    char APN[64]; ///< Access point name.
    char UN[64]; ///< User name.
    char PW[64]; ///< Password, plain text.
    char AN[64];
    unsigned char PM;
    unsigned char AM;
    unsigned char NM;
    unsigned char WLS;
    unsigned char EN; ///< Enable.
    unsigned char reserved0[7]; ///< Reserved: no parser writes these bytes.
} paramBoHaoParam_t;
BSCOMMON_RECORD_SIZE(paramBoHaoParam_t, 268);

/// Section "M3G" (parameter type 17, #PARA_3G), read by Parse3GParamJson().
struct tag_Msg3GSetting {
    char TN1[16];
    char TN2[16];
    char TN3[16];
    char CSN[16];
    char TSN[16];
    unsigned char AT;
    unsigned char reserved0[111]; ///< Reserved: no parser writes these bytes.
    paramBoHaoParam_t MP; ///< From the object MP, by ParseBoHaoParamJson(). First modem.
    paramBoHaoParam_t M4G; ///< From the object M4G, by ParseBoHaoParamJson(). Second modem.
    unsigned char G3MD;
    unsigned char G4MD;
    unsigned short AST;
    unsigned char ASE;
    unsigned char reserved1; ///< Reserved: no parser writes these bytes (tail padding to the 2-byte alignment).
};
BSCOMMON_RECORD_SIZE(tag_Msg3GSetting, 734);

// Reads one dial-up profile from the profile object itself: -1 without
// writing when it is empty or absent (logged), else 0.
/// Reads one dial-up profile ("MP" or "M4G") from the object itself into @p record.
/// @param object the object (not the whole document)
/// @param record the sub-record; reserved bytes and unread array elements keep their values
/// @return 0 when read; -1, with nothing written, when the object is empty or absent (logged at
///        level 0).
BSCOMMON_API int ParseBoHaoParamJson(Json::Value const& object, paramBoHaoParam_t& record);
/// Reads section "M3G" of @p doc into @p record (parameter type 17, #PARA_3G).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int Parse3GParamJson(Json::Value const& doc, tag_Msg3GSetting& record);

// ---------------------------------------------------------------------------
// Wired network. Addresses are dotted text; the Ethernet and peripheral texts
// are byte arrays.

/// Section "ETHERNET" (parameter type 22, #PARA_ETHERNET), read by ParseEtherNetParamJson().
struct tag_MsgEtherNetSetting {
    unsigned char IPMODE;
    unsigned char DNSMODE;
    unsigned char GM;
    unsigned char reserved0[5]; ///< Reserved: no parser writes these bytes.
    unsigned char IPADDR[16]; ///< From PIP.IPADDR. "PIP".
    unsigned char SUBMASK[16]; ///< From PIP.SUBMASK. "PIP".
    unsigned char GATEWAY[16]; ///< From PIP.GATEWAY. "PIP".
    unsigned char reserved1[16]; ///< Reserved: no parser writes these bytes.
    unsigned char PDNS[16]; ///< From DNS.PDNS. "DNS": primary.
    unsigned char ADNS[16]; ///< From DNS.ADNS. "DNS": alternate.
};
BSCOMMON_RECORD_SIZE(tag_MsgEtherNetSetting, 104);

/// One remote device node (a network camera or similar) of "REDEV".
struct RemoteDevNode_t {
    unsigned char EN;
    char LOCK;
    unsigned char reserved0; ///< Reserved: no parser writes these bytes.
    unsigned char RECHL;
    unsigned char ONLINE;
    unsigned char RETYPE;
    unsigned char PROTYPE;
    unsigned char IPTYPE;
    unsigned char CONTYPE;
    unsigned char SW;
    unsigned short REPORT;
    char REIP[32]; ///< Remote address.
    char ID[32];
    char RENAME[20];
    char UESR[20]; ///< User name, read from the key spelled "UESR".
    char PWD[20]; ///< Password, plain text.
    char URL[32];
    unsigned short CMDPORT;
    unsigned char reserved1[30]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(RemoteDevNode_t, 200);

/// (the section is an array, one element per node). Section "REDEV" (parameter type 23,
/// #PARA_REMOTE_DEV_NODE), read by ParseRemoteDevNodeParamJson().
struct tag_MsgRemoteDevNodeSetting {
    unsigned char reserved0[8]; ///< Reserved: no parser writes these bytes.
    RemoteDevNode_t REDEV[16]; ///< The elements of the section, which is an array: the first 16 are read.
};
BSCOMMON_RECORD_SIZE(tag_MsgRemoteDevNodeSetting, 3208);

/// One peripheral Ethernet port of "PENA".
struct PeripEnetPort_t {
    unsigned char FT;
    unsigned char ST;
    unsigned char IOB;
    unsigned char reserved0; ///< Reserved: no parser writes these bytes.
    unsigned char IP[16];
    unsigned short PORT;
    unsigned char reserved1[30]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(PeripEnetPort_t, 52);

/// Section "PEN" (parameter type 49, #PARA_PERIP_ETHERNET), read by ParsePeripEtherNetParamJson().
struct tag_msgPeripEnetSetting {
    PeripEnetPort_t PENA[4]; ///< From the array PENA: the first 4 elements are read.
};
BSCOMMON_RECORD_SIZE(tag_msgPeripEnetSetting, 208);

/// Reads section "ETHERNET" of @p doc into @p record (parameter type 22, #PARA_ETHERNET).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseEtherNetParamJson(Json::Value const& doc, tag_MsgEtherNetSetting& record);
/// Reads section "REDEV" of @p doc into @p record (parameter type 23, #PARA_REMOTE_DEV_NODE).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseRemoteDevNodeParamJson(Json::Value const& doc, tag_MsgRemoteDevNodeSetting& record);
/// Reads section "PEN" of @p doc into @p record (parameter type 49, #PARA_PERIP_ETHERNET).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParsePeripEtherNetParamJson(Json::Value const& doc, tag_msgPeripEnetSetting& record);

// ---------------------------------------------------------------------------
// Field buses.

/// One sub-channel of a serial port ("SES").
struct SerialSubChannel_t {
    unsigned char FT;
    unsigned char BR; ///< Baud-rate code.
    unsigned char ST;
    unsigned char reserved0[5]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(SerialSubChannel_t, 8);

/// One serial port of "SP".
struct SerialPort_t {
    unsigned char FT;
    unsigned char BR; ///< Baud-rate code.
    unsigned char ST;
    unsigned char reserved0[5]; ///< Reserved: no parser writes these bytes.
    SerialSubChannel_t SES[8]; ///< From the array SES: the first 8 elements are read.
};
BSCOMMON_RECORD_SIZE(SerialPort_t, 72);

/// Section "PSS" (parameter type 47, #PARA_SERIAL), read by ParseSerialParamJson().
struct tag_MsgSerialSetting {
    SerialPort_t SP[12]; ///< From the array SP: the first 12 elements are read.
    unsigned char PFMM;
};
BSCOMMON_RECORD_SIZE(tag_MsgSerialSetting, 865);

/// One CAN channel of "CA". Unlike a serial port, ST comes before BR.
struct CanChannel_t {
    unsigned char FT;
    unsigned char ST;
    unsigned char BR; ///< Baud-rate code.
    unsigned char reserved0; ///< Reserved: no parser writes these bytes.
    unsigned int CI;
    unsigned short UI;
    unsigned char reserved1[10]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(CanChannel_t, 20);

/// Section "CAN" (parameter type 48, #PARA_CAN), read by ParseCanParamJson().
struct tag_msgCanSetting {
    CanChannel_t CA[4]; ///< From the array CA: the first 4 elements are read.
    unsigned long long CD[4];
};
BSCOMMON_RECORD_SIZE(tag_msgCanSetting, 112);

/// Reads section "PSS" of @p doc into @p record (parameter type 47, #PARA_SERIAL).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseSerialParamJson(Json::Value const& doc, tag_MsgSerialSetting& record);
/// Reads section "CAN" of @p doc into @p record (parameter type 48, #PARA_CAN).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseCanParamJson(Json::Value const& doc, tag_msgCanSetting& record);

#endif
