// Named conversion steps shared by the record descriptions: a field whose
// value is not read by the reader of its width (packed bits, texts that hold
// numbers). A step is used with PARA_CUSTOM and provides
//   void Read(const Json::Value& object, F& dst) const   what the parser stores
//   const char* Keys() const                             the keys it reads, comma-separated
//   template <class Report> void Check(const Json::Value& object, Report report) const
//                                                        report(key, what) for each loss
//   void Write(const F& src, Json::Value& object) const  (the inverse) sets its keys in
//       `object` to values that Read turns back into `src`, as far as the
//       conversion can be inverted
#ifndef PARA_STEPS_H
#define PARA_STEPS_H

#include "ParaDescribe.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace para {

// Two JSON numbers packed into one byte: the first shifted into the high
// nibble (only its low 4 bits survive), the second's low 4 bits below it.
// `keys` lists the keys read, comma-separated, as every step's Keys() does.
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

    // For the inspector: report(key, what) for each value that loses bits.
    template <class Report> void Check(const Json::Value& object, Report report) const
    {
        for (const char* key : {high, low}) {
            // Read wide: the byte reader keeps the low 8 bits, and the low 4 of
            // those are what is packed, so 256 stores 0 like 16 does.
            unsigned int v = 0;
            if (GetJsonIntegral(Member(object, key), v, 0u) == 0 && v > 0x0F)
                report(key, "only the low 4 bits of " + std::to_string(v) + " are packed: stores " +
                                std::to_string(v & 0x0F));
        }
    }

    void Write(const unsigned char& src, Json::Value& object) const
    {
        object[high] = src >> 4;
        object[low] = src & 0x0F;
    }
};

// A text value read into a fixed buffer of N bytes, as the parsers read
// texts, plus one byte that keeps it terminated when the text fills the
// buffer: conversions of it never read past the buffer.
template <size_t N> struct BoundedText {
    char text[N + 1] = {};
    explicit BoundedText(const Json::Value& value) { GetJsonCString(value, text, int(N)); }
};

// Reports a value of another JSON type where a conversion step reads text.
template <class Report> bool ReportIfNotText(const Json::Value& value, const char* key, Report& report,
                                             const char* stores)
{
    if (value.isNull() || value.isString())
        return false;
    report(key, std::string("not text: stores ") + stores);
    return true;
}

// A MAC address given as text, "00:1A:2B:3C:4D:5E" (either case), into six
// bytes. Groups after the first that does not match stay 0; a value that is
// no text gives six zeros.
struct MacText {
    const char* key;

    // The six groups of the text (those not matched stay 0); returns how many matched.
    int Scan(const Json::Value& object, unsigned int (&group)[6]) const
    {
        BoundedText<20> mac(Member(object, key));
        const int matched = std::sscanf(mac.text, "%02X:%02X:%02X:%02X:%02X:%02X", &group[0], &group[1],
                                        &group[2], &group[3], &group[4], &group[5]);
        return matched < 0 ? 0 : matched;
    }

    void Read(const Json::Value& object, unsigned char (&dst)[6]) const
    {
        unsigned int group[6] = {};
        Scan(object, group);
        for (int i = 0; i < 6; ++i)
            dst[i] = static_cast<unsigned char>(group[i] & 0xFFu);
    }
    const char* Keys() const { return key; }

    // For the inspector: report(key, what) where the text loses something.
    template <class Report> void Check(const Json::Value& object, Report report) const
    {
        const Json::Value& value = Member(object, key);
        if (value.isNull() || ReportIfNotText(value, key, report, "six zero bytes"))
            return;
        unsigned int group[6] = {};
        const int matched = Scan(object, group);
        if (matched < 6)
            report(key, "text holds " + std::to_string(matched) + " of 6 hexadecimal groups: the other bytes store 0");
    }

    void Write(const unsigned char (&src)[6], Json::Value& object) const
    {
        char text[18];
        std::snprintf(text, sizeof text, "%02X:%02X:%02X:%02X:%02X:%02X", src[0], src[1], src[2], src[3], src[4],
                      src[5]);
        object[key] = text;
    }
};

// A double truncated toward zero into 32 bits without undefined behaviour:
// negative and NaN give 0, values beyond the range give the largest one.
inline unsigned int TruncateToU32(double value)
{
    if (!(value > 0.0))
        return 0;
    if (value >= 4294967296.0)
        return 0xFFFFFFFFu;
    return static_cast<unsigned int>(value);
}

// A voltage given as decimal text in volts ("11.5"), stored in hundredths
// (1150) and kept to 16 bits. A JSON number is no text and gives 0.
struct VoltageText {
    const char* key;

    unsigned int Hundredths(const Json::Value& object) const
    {
        BoundedText<16> volts(Member(object, key));
        return TruncateToU32(std::atof(volts.text) * 100.0);
    }

    void Read(const Json::Value& object, unsigned short& dst) const
    {
        dst = static_cast<unsigned short>(Hundredths(object) & 0xFFFFu);
    }
    const char* Keys() const { return key; }

    template <class Report> void Check(const Json::Value& object, Report report) const
    {
        const Json::Value& value = Member(object, key);
        if (value.isNull() || ReportIfNotText(value, key, report, "0"))
            return;
        const unsigned int hundredths = Hundredths(object);
        if (hundredths > 0xFFFFu)
            report(key, std::to_string(hundredths) + " hundredths of a volt do not fit 16 bits: stores " +
                            std::to_string(hundredths & 0xFFFFu));
    }

    // "11.50" for 1150. Where the decimal text multiplied back in binary
    // falls just below the whole number of hundredths (0.29 * 100 is
    // 28.999...), a third decimal of 5 keeps the truncation on it.
    void Write(const unsigned short& src, Json::Value& object) const
    {
        char text[16];
        for (const char* format : {"%u.%02u", "%u.%02u5"}) {
            std::snprintf(text, sizeof text, format, unsigned(src / 100), unsigned(src % 100));
            object[key] = text;
            if (Hundredths(object) == src)
                return;
        }
    }
};

} // namespace para

#endif
