// Records back to JSON: walks a record description over a record and builds
// the section object that the record's parser turns back into it. Scalars
// become numbers, texts strings (their bytes up to the trailing zero bytes,
// so a text that fills its field or holds a NUL inside comes back whole),
// arrays full-length arrays, sub-records and groups objects, and each
// conversion step writes its own keys (its Write member).
//
// What no document can give back: reserved bytes and tail padding (no parser
// writes them) and floats that are not finite (JSON has no number for them).
#ifndef PARA_DECODE_H
#define PARA_DECODE_H

#include "ParaShow.h"
#include "ToolText.h"


#include <string>
#include <type_traits>

namespace para {

// The value at a key path of a JSON tree, made (an object or an array, as
// the path says) where it is missing.
inline Json::Value& At(Json::Value& root, const Path& keys)
{
    Json::Value* at = &root;
    for (const Part& part : keys) {
        const Json::ValueType type = part.name.empty() ? Json::arrayValue : Json::objectValue;
        if (at->type() != type)
            *at = Json::Value(type);
        at = part.name.empty() ? &(*at)[Json::ArrayIndex(part.index)] : &(*at)[part.name];
    }
    return *at;
}

// The section object whose parser gives back `bytes` (a record of the
// table's size).
inline Json::Value DecodeRecord(const Record& record, const std::string& bytes)
{
    struct Decode : PlaceVisitor {
        Json::Value section{Json::objectValue};
        const std::string& bytes;
        explicit Decode(const std::string& b) : bytes(b) {}

        void Leaf(const Field& f, const Place& p)
        {
            const char* at = bytes.data() + p.offset;
            if (f.op == Op::Scalar) {
                At(section, p.keys) = ValueJson(bytes, {"", "", p.offset, f.size, f.kind()});
            } else if (f.op == Op::Text) {
                // all bytes up to the trailing zero bytes: a text that fills its
                // field or holds a NUL inside comes back whole
                size_t length = f.size;
                while (length > 0 && at[length - 1] == 0)
                    --length;
                At(section, p.keys) = std::string(at, length);
            } else if (f.op == Op::Step) {
                Json::Value& object = At(section, p.object);
                if (!object.isObject()) // a step of a level with no other key
                    object = Json::Value(Json::objectValue);
                WithStep(f, [&](auto step) { step.Write(reinterpret_cast<const unsigned char*>(at), f, object); });
            }
        }
    } decode(bytes);
    WalkRecord(record, decode);
    return decode.section;
}

// A decoded document as text. Texts keep their bytes as they are, valid UTF-8
// or not, so that the text read back stores the same bytes.
inline std::string DocumentText(const Json::Value& value) { return JsonText(value, "  ", true); }

} // namespace para

#endif
