// Descriptions of the video, recording and snapshot records.
#ifndef VIDEO_PARAMS_H
#define VIDEO_PARAMS_H

#include "ParaVideoRecords.h"
#include "ParaDescribe.h"

namespace para {

template <class W> void Describe(W& w, tag_MsgVideoEncodeChannel& r)
{
    PARA_FIELD(0, BR);
    PARA_FIELD(4, VEN);
    PARA_FIELD(10, AEN);
    PARA_FIELD(6, FR);
    PARA_FIELD(7, QLT);
    PARA_FIELD(9, RST);
    PARA_FIELD(11, BRM);
    PARA_FIELD(5, FT);
    PARA_FIELD(8, ALT);
    PARA_FIELD(12, KFI);
    PARA_FIELD(14, LCN);
    PARA_FIELD(15, AFR);
    PARA_FIELD(16, AMT);
    PARA_FIELD(17, AST);
    PARA_FIELD(18, EPV);
    PARA_FIELD(19, ECT);
    PARA_RESERVED(20, reserved0);
}

// The section itself is the array of channels.
template <class W> void Describe(W& w, tag_MsgVideoEncodeSetting& r)
{
    PARA_RESERVED(0, reserved0);
    PARA_ARRAY_SELF(8, MAIN);
}

template <class W> void Describe(W& w, tag_MsgRecordPeriod& r)
{
    PARA_FIELD(0, S);
    PARA_FIELD(4, E);
    PARA_FIELD(8, T);
    PARA_RESERVED(9, reserved0);
}

template <class W> void Describe(W& w, tag_MsgRecordChannel& r)
{
    PARA_FIELD(1792, RM);
    PARA_RESERVED(1793, reserved0);
    PARA_FIELD(1794, RP);
    PARA_ARRAY(0, RSI);
    PARA_RESERVED(1796, reserved1);
}

template <class W> void Describe(W& w, tag_MsgRecordMPEntry& r)
{
    PARA_FIELD(0, OLD);
    PARA_FIELD(1, OT);
    PARA_FIELD(2, OVD);
    PARA_RESERVED(3, reserved0);
}

template <class W> void Describe(W& w, tag_MsgRecordSetting& r)
{
    PARA_FIELD(28896, PRS);
    PARA_FIELD(28900, PRE);
    PARA_RESERVED(28901, reserved0);
    PARA_FIELD(28902, AUPRT);
    PARA_FIELD(28904, AUPOT);
    PARA_ARRAY(0, RCP);
    PARA_ARRAY(28864, MP);
    PARA_RESERVED(28906, reserved1);
}

} // namespace para

// The parameter types of this subsystem: X(type, section key, parser, record).
#define PARA_TYPES_VIDEO(X)                                                       \
    X(10, "MAIN", ParseMainStreamParamJson, tag_MsgVideoEncodeSetting)            \
    X(16, "RP", ParseRecordParamJson, tag_MsgRecordSetting)

#endif
