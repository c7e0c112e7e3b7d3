// Reading JSON values into fields: the member lookup that never throws, the
// scalar reader every field of a table goes through, and the entry points of
// the interpreter (ParaReader.cpp) that fills records from their tables.
#ifndef PARA_READ_H
#define PARA_READ_H

#include "ParaJsonReader.h"
#include "ParaTable.h"

#include <json/value.h>

#include <cstring>

namespace para {

// Member lookup that never throws: a non-object (array, number, string,
// boolean) yields the null value like an absent key does.
inline const Json::Value& Member(const Json::Value& value, const char* key, size_t length)
{
    const Json::Value* found = value.isObject() ? value.find(key, key + length) : nullptr;
    return found ? *found : Json::Value::nullSingleton();
}
inline const Json::Value& Member(const Json::Value& value, const char* key)
{
    return Member(value, key, std::strlen(key));
}
inline const Json::Value& Member(const Json::Value& object, const Field& f)
{
    return Member(object, f.key, f.length);
}

// "PARAMETER" -> "MDVR" -> key of a parameter document.
inline const Json::Value& Section(const Json::Value& doc, const char* key)
{
    return Member(Member(Member(doc, "PARAMETER"), "MDVR"), key);
}

// Calls f(T()) with the C++ type of a scalar field.
template <class F> auto WithScalarType(const Field& field, F f)
{
    switch (field.scalar) {
    case ScalarType::U8: return f((unsigned char)0);
    case ScalarType::I8: return f((signed char)0);
    case ScalarType::Char: return f((char)0);
    case ScalarType::U16: return f((unsigned short)0);
    case ScalarType::I16: return f((short)0);
    case ScalarType::U32: return f(0u);
    case ScalarType::I32: return f(0);
    case ScalarType::U64: return f(0ULL);
    case ScalarType::I64: return f(0LL);
    case ScalarType::F32: break;
    }
    return f(0.0f);
}

// Reads a scalar field's value into `at` with the reader of its type and the
// default 0 that every parameter field has. An integer field of up to 32 bits
// given a JSON integer is read here directly, with the readers' rule: a value
// from INT_MIN to UINT_MAX keeps its low bytes, anything else gives 0 and -1.
// Every other case goes to the reader itself.
inline int ReadScalarField(const Field& field, const Json::Value& value, void* at)
{
    const Json::ValueType type = value.type();
    if ((type == Json::intValue || type == Json::uintValue) && field.scalar < ScalarType::U64) {
        bool fits;
        uint32_t bits;
        if (type == Json::intValue) {
            const Json::LargestInt v = value.asLargestInt();
            fits = v >= -2147483648LL && v <= 4294967295LL;
            bits = fits ? static_cast<uint32_t>(v) : 0;
        } else {
            const Json::LargestUInt v = value.asLargestUInt();
            fits = v <= 4294967295ULL;
            bits = fits ? static_cast<uint32_t>(v) : 0;
        }
        if (field.size == 1) {
            const uint8_t low = static_cast<uint8_t>(bits);
            std::memcpy(at, &low, 1);
        } else if (field.size == 2) {
            const uint16_t low = static_cast<uint16_t>(bits);
            std::memcpy(at, &low, 2);
        } else {
            std::memcpy(at, &bits, 4);
        }
        return fits ? 0 : -1;
    }
    return WithScalarType(field, [&](auto zero) {
        decltype(zero) v = zero;
        int result;
        if constexpr (std::is_floating_point_v<decltype(v)>)
            result = GetJsonFloat(value, v, 0.0f);
        else
            result = GetJsonIntegral(value, v, decltype(v)(0));
        std::memcpy(at, &v, sizeof v);
        return result;
    });
}

// Runs an exported parser's rules and walk over `object` into `record`.
int Parse(const Parser& parser, const Json::Value& object, void* record);

// Reads one entry of a table from `object` into the record at `base`.
void ReadEntry(const Field& field, const Json::Value& object, void* base);

} // namespace para


#endif
