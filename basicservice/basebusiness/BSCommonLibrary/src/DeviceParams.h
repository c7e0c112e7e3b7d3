// Descriptions of the device and system parameter records.
#ifndef DEVICE_PARAMS_H
#define DEVICE_PARAMS_H

#include "ParaDeviceRecords.h"
#include "ParaDescribe.h"

namespace para {

// Two JSON numbers packed into one byte: the first shifted into the high
// nibble (only its low 4 bits survive), the second's low 4 bits below it.
struct PackNibbles {
    const char* high;
    const char* low;
    const char* keys;

    void Read(const Json::Value& object, unsigned char& dst) const
    {
        unsigned char hi = 0, lo = 0;
        GetJsonIntegral(Member(object, high), hi, static_cast<unsigned char>(0));
        GetJsonIntegral(Member(object, low), lo, static_cast<unsigned char>(0));
        dst = static_cast<unsigned char>((hi << 4) | (lo & 0x0F));
    }
    const char* Keys() const { return keys; }
};

template <class W> void Describe(W& w, tag_MsgAdjustTimeSetting& r)
{
    PARA_FIELD(0, GE);
    PARA_FIELD(1, NE);
    PARA_FIELD(2, CE);
    PARA_FIELD(3, SID);
    PARA_FIELD(68, NAI);
    PARA_TEXT(4, NS);
}

template <class W> void Describe(W& w, tag_MsgTimeSetting& r)
{
    PARA_FIELD(0, DATEM);
    PARA_FIELD(1, TIMEM);
    PARA_RESERVED(2, reserved0);
    PARA_TEXT(4, TIMEZ);
    PARA_FIELD(20, TIMEOFFSET);
    PARA_GROUP("DST",
        PARA_FIELD(24, SW);
        PARA_FIELD(25, DSTM);
        PARA_FIELD(26, DSTS);
        PARA_RESERVED(27, reserved1);
        PARA_FIELD(32, SMON);
        PARA_CUSTOM(33, SWEEK_SWIND, (PackNibbles{"SWEEK", "SWIND", "{SWEEK,SWIND}"}));
        PARA_FIELD(36, SH);
        PARA_FIELD(37, SM);
        PARA_FIELD(38, SS);
        PARA_FIELD(34, EMON);
        PARA_CUSTOM(35, EWEEK_EWIND, (PackNibbles{"EWEEK", "EWIND", "{EWEEK,EWIND}"}));
        PARA_FIELD(39, EH);
        PARA_FIELD(40, EM);
        PARA_FIELD(41, ES);
        PARA_RESERVED(42, reserved2);
        PARA_FIELD(44, STARTTIME);
        PARA_FIELD(48, ENDTIME));
}

} // namespace para

// The parameter types of this subsystem: X(type, section key, parser, record).
#define PARA_TYPES_DEVICE(X)                                                          \
    X(0, "ATP", ParseAdjustTimeParamJson, tag_MsgAdjustTimeSetting)                   \
    X(1, "TIMEP", ParseTimeSettingParamJson, tag_MsgTimeSetting)

#endif
