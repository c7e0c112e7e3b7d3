// Named conversion steps: fields whose value is not read by the reader of
// their width (packed bits, texts that hold numbers or bytes). A table entry
// PARA_STEP(offset, member, Step, "KEYS") names one; each step keeps together
//   Read(object, field, at)      what the parser stores, from the keys of the current object
//   Check(object, field, report) report(key, what) for each loss (the inspector's lint)
//   Write(at, field, object)     the inverse: sets its keys in `object` to values that
//                                Read turns back into the field, as far as it can be inverted
// The library uses only Read; Check and Write are compiled where the tools use them.
#ifndef PARA_STEPS_H
#define PARA_STEPS_H

#include "ParaRead.h"

#include <cstdio>
#include <cstdlib>
#include <string>

// Defined with the alarm records (exported).
BSCOMMON_API int ParseMDRegion(char const* text, int textLength, char* out, int outLength);

namespace para {

// Key i of a step's comma-separated keys, as text.
inline std::string StepKey(const Field& f, unsigned i)
{
    const char* begin = f.key;
    const char* end = f.key + f.length;
    for (; i > 0 && begin != end; --i)
        while (begin != end && *begin++ != ',') {
        }
    const char* stop = begin;
    while (stop != end && *stop != ',')
        ++stop;
    return std::string(begin, stop);
}

// The value of key i of a step's keys in `object` (null when absent).
inline const Json::Value& StepValue(const Json::Value& object, const Field& f, unsigned i)
{
    const char* begin = f.key;
    const char* end = f.key + f.length;
    if (i == 1)
        while (begin != end && *begin++ != ',') {
        }
    const char* stop = begin;
    while (stop != end && *stop != ',')
        ++stop;
    return Member(object, begin, size_t(stop - begin));
}

// A text value read into a fixed buffer of N bytes, as the parsers read
// texts, plus one byte that keeps it terminated when the text fills the
// buffer: conversions of it never read past the buffer.
template <size_t N> struct BoundedText {
    char text[N + 1] = {};
    explicit BoundedText(const Json::Value& value) { GetJsonCString(value, text, int(N)); }
};

// Reports a value of another JSON type where a conversion step reads text.
template <class Report> bool ReportIfNotText(const Json::Value& value, const std::string& key, Report& report,
                                             const char* stores)
{
    if (value.isNull() || value.isString())
        return false;
    report(key, std::string("not text: stores ") + stores);
    return true;
}

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

inline unsigned short Load16(const unsigned char* at)
{
    unsigned short v;
    std::memcpy(&v, at, sizeof v);
    return v;
}

inline void Store16(unsigned char* at, unsigned int v)
{
    const unsigned short low = static_cast<unsigned short>(v & 0xFFFFu);
    std::memcpy(at, &low, sizeof low);
}

// Two JSON numbers packed into one byte: the first key's value shifted into
// the high nibble (only its low 4 bits survive), the second's low 4 bits below.
struct PackNibbles {
    static void Read(const Json::Value& object, const Field& f, unsigned char* at)
    {
        unsigned char hi = 0, lo = 0;
        GetJsonIntegral(StepValue(object, f, 0), hi, static_cast<unsigned char>(0));
        GetJsonIntegral(StepValue(object, f, 1), lo, static_cast<unsigned char>(0));
        *at = static_cast<unsigned char>((hi << 4) | (lo & 0x0F));
    }

    template <class Report> static void Check(const Json::Value& object, const Field& f, Report report)
    {
        for (unsigned i = 0; i < 2; ++i) {
            // Read wide: the byte reader keeps the low 8 bits, and the low 4 of
            // those are what is packed, so 256 stores 0 like 16 does.
            unsigned int v = 0;
            if (GetJsonIntegral(StepValue(object, f, i), v, 0u) == 0 && v > 0x0F)
                report(StepKey(f, i), "only the low 4 bits of " + std::to_string(v) + " are packed: stores " +
                                          std::to_string(v & 0x0F));
        }
    }

    static void Write(const unsigned char* at, const Field& f, Json::Value& object)
    {
        object[StepKey(f, 0)] = *at >> 4;
        object[StepKey(f, 1)] = *at & 0x0F;
    }
};

// A MAC address given as text, "00:1A:2B:3C:4D:5E" (either case), into six
// bytes. Groups after the first that does not match stay 0; a value that is
// no text gives six zeros.
struct MacText {
    // The six groups of the text (those not matched stay 0); returns how many matched.
    static int Scan(const Json::Value& object, const Field& f, unsigned int (&group)[6])
    {
        BoundedText<20> mac(StepValue(object, f, 0));
        const int matched = std::sscanf(mac.text, "%02X:%02X:%02X:%02X:%02X:%02X", &group[0], &group[1],
                                        &group[2], &group[3], &group[4], &group[5]);
        return matched < 0 ? 0 : matched;
    }

    static void Read(const Json::Value& object, const Field& f, unsigned char* at)
    {
        unsigned int group[6] = {};
        Scan(object, f, group);
        for (int i = 0; i < 6; ++i)
            at[i] = static_cast<unsigned char>(group[i] & 0xFFu);
    }

    template <class Report> static void Check(const Json::Value& object, const Field& f, Report report)
    {
        const Json::Value& value = StepValue(object, f, 0);
        if (value.isNull() || ReportIfNotText(value, StepKey(f, 0), report, "six zero bytes"))
            return;
        unsigned int group[6] = {};
        const int matched = Scan(object, f, group);
        if (matched < 6)
            report(StepKey(f, 0),
                   "text holds " + std::to_string(matched) + " of 6 hexadecimal groups: the other bytes store 0");
    }

    static void Write(const unsigned char* at, const Field& f, Json::Value& object)
    {
        char text[18];
        std::snprintf(text, sizeof text, "%02X:%02X:%02X:%02X:%02X:%02X", at[0], at[1], at[2], at[3], at[4], at[5]);
        object[StepKey(f, 0)] = text;
    }
};

// A voltage given as decimal text in volts ("11.5"), stored in hundredths
// (1150) and kept to 16 bits. A JSON number is no text and gives 0.
struct VoltageText {
    static unsigned int Hundredths(const Json::Value& object, const Field& f)
    {
        BoundedText<16> volts(StepValue(object, f, 0));
        return TruncateToU32(std::atof(volts.text) * 100.0);
    }

    static void Read(const Json::Value& object, const Field& f, unsigned char* at)
    {
        Store16(at, Hundredths(object, f));
    }

    template <class Report> static void Check(const Json::Value& object, const Field& f, Report report)
    {
        const Json::Value& value = StepValue(object, f, 0);
        if (value.isNull() || ReportIfNotText(value, StepKey(f, 0), report, "0"))
            return;
        const unsigned int hundredths = Hundredths(object, f);
        if (hundredths > 0xFFFFu)
            report(StepKey(f, 0), std::to_string(hundredths) + " hundredths of a volt do not fit 16 bits: stores " +
                                      std::to_string(hundredths & 0xFFFFu));
    }

    // "11.50" for 1150. Where the decimal text multiplied back in binary
    // falls just below the whole number of hundredths (0.29 * 100 is
    // 28.999...), a third decimal of 5 keeps the truncation on it.
    static void Write(const unsigned char* at, const Field& f, Json::Value& object)
    {
        const unsigned short src = Load16(at);
        char text[16];
        for (const char* format : {"%u.%02u", "%u.%02u5"}) {
            std::snprintf(text, sizeof text, format, unsigned(src / 100), unsigned(src % 100));
            object[StepKey(f, 0)] = text;
            if (Hundredths(object, f) == src)
                return;
        }
    }
};

// A calibration value given as decimal text ("1.5"), stored in tenths (15):
// only the first 16 characters count, the tenths are truncated toward zero
// into 32 bits (negative gives 0) and kept to 16 bits. A JSON number is no
// text and gives 0.
struct TenthsText {
    static double Exact(const Json::Value& object, const Field& f)
    {
        BoundedText<16> text(StepValue(object, f, 0));
        return std::atof(text.text) * 10.0;
    }

    static void Read(const Json::Value& object, const Field& f, unsigned char* at)
    {
        Store16(at, TruncateToU32(Exact(object, f)));
    }

    template <class Report> static void Check(const Json::Value& object, const Field& f, Report report)
    {
        const std::string key = StepKey(f, 0);
        const Json::Value& value = StepValue(object, f, 0);
        if (value.isNull() || ReportIfNotText(value, key, report, "0"))
            return;
        const char* begin = nullptr;
        const char* end = nullptr;
        value.getString(&begin, &end);
        if (end - begin > 16)
            report(key, "text of " + std::to_string(end - begin) + " characters: only the first 16 are converted");
        BoundedText<16> text(value);
        char* after = nullptr;
        std::strtod(text.text, &after);
        if (after == text.text) {
            report(key, "no decimal number in the text: stores 0");
            return;
        }
        if (*after)
            report(key, std::string("\"") + after + "\" after the number is ignored");
        const double exact = Exact(object, f);
        const unsigned int tenths = TruncateToU32(exact);
        const unsigned int stored = tenths & 0xFFFFu;
        if (!(exact >= 0.0))
            report(key, "below zero or not a number: stores 0");
        else if (tenths > 0xFFFFu)
            report(key, std::to_string(tenths) + " tenths do not fit 16 bits: stores " + std::to_string(stored));
        else if (double(tenths) != exact)
            report(key, "finer than tenths: truncated, stores " + std::to_string(stored));
    }

    // The text of src tenths, "1.5" for 15.
    static void Write(const unsigned char* at, const Field& f, Json::Value& object)
    {
        const unsigned short src = Load16(at);
        object[StepKey(f, 0)] = std::to_string(src / 10) + "." + std::to_string(src % 10);
    }
};

// A region of N bytes (the field's size) given as hexadecimal text, two
// digits a byte, packed by ParseMDRegion. The text is read as texts are, at
// most 2N + 2 bytes into a zero-filled scratch buffer, and the first 2N
// positions are packed: a shorter text ends in zero bytes (its terminator and
// the zero fill pack as nibble 0), characters after the 2N-th are ignored.
struct HexRegion {
    static void Read(const Json::Value& object, const Field& f, unsigned char* at)
    {
        char text[2 * 64 + 20] = {};
        const int n = f.size;
        GetJsonCString(StepValue(object, f, 0), text, 2 * n + 2);
        ParseMDRegion(text, 2 * n, reinterpret_cast<char*>(at), n);
    }

    template <class Report> static void Check(const Json::Value& object, const Field& f, Report report)
    {
        const std::string key = StepKey(f, 0);
        const size_t n = f.size;
        const Json::Value& value = StepValue(object, f, 0);
        if (value.isNull() || ReportIfNotText(value, key, report, (std::to_string(n) + " zero bytes").c_str()))
            return;
        const char* begin = nullptr;
        const char* end = nullptr;
        value.getString(&begin, &end);
        const size_t length = begin ? size_t(end - begin) : 0;
        unsigned char stored[64] = {};
        Read(object, f, stored);
        const size_t digits = length < 2 * n ? length : 2 * n;
        size_t wrong = 0, first = 0;
        for (size_t i = digits; i-- > 0;)
            if (!IsHexDigit(begin[i])) {
                ++wrong;
                first = i;
            }
        if (wrong)
            report(key, (wrong == 1 ? std::string("character ")
                                    : std::to_string(wrong) + " characters are not hexadecimal digits, the first ") +
                            Shown(begin[first]) + " at " + std::to_string(first) +
                            (wrong == 1 ? " is not a hexadecimal digit" : "") + ": byte " +
                            std::to_string(first / 2) + " stores " + Byte(stored[first / 2]));
        if (length > 2 * n)
            report(key, "text of " + std::to_string(length) + " characters: only the first " + std::to_string(2 * n) +
                            " digits are packed into the " + std::to_string(n) + "-byte region");
        else if (length % 2)
            report(key, "odd number of digits (" + std::to_string(length) +
                            "): the last one is the high nibble of byte " + std::to_string(length / 2) +
                            ", which stores " + Byte(stored[length / 2]));
    }

    // The inverse: upper-case text of all N bytes, which packs back to them.
    static void Write(const unsigned char* at, const Field& f, Json::Value& object)
    {
        static const char kDigits[] = "0123456789ABCDEF";
        std::string text;
        for (size_t i = 0; i < f.size; ++i) {
            text += kDigits[at[i] >> 4];
            text += kDigits[at[i] & 0x0F];
        }
        object[StepKey(f, 0)] = text;
    }

private:
    static bool IsHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f'); }
    static std::string Byte(unsigned char byte)
    {
        char text[8];
        std::snprintf(text, sizeof text, "0x%02X", byte);
        return text;
    }
    static std::string Shown(char c)
    {
        if (c >= 0x20 && c < 0x7F)
            return std::string("'") + c + "'";
        char text[8];
        std::snprintf(text, sizeof text, "\\x%02X", static_cast<unsigned char>(c));
        return text;
    }
};

// Calls f(Step()) with the step of an entry.
template <class F> void WithStep(const Field& field, F f)
{
    switch (field.step) {
    case StepId::PackNibbles: return f(PackNibbles());
    case StepId::MacText: return f(MacText());
    case StepId::VoltageText: return f(VoltageText());
    case StepId::TenthsText: return f(TenthsText());
    case StepId::HexRegion: return f(HexRegion());
    }
}

} // namespace para

#endif
