// JSON Schema (draft 2020-12) of section objects, from the record
// descriptions: one property per key, integer bounds from each field's width
// and signedness, maxItems from array bounds, text limits from field sizes,
// and no other keys (additionalProperties false), so that a schema-aware
// editor flags what `mdvr-param check` reports.
#ifndef PARA_SCHEMA_H
#define PARA_SCHEMA_H

#include "ParaPlace.h"

#include <cstring>
#include <limits>
#include <vector>
#include <string>
#include <type_traits>
#include <vector>

namespace para {

inline Json::Value ObjectSchema(const std::string& description)
{
    Json::Value s(Json::objectValue);
    s["type"] = "object";
    if (!description.empty())
        s["description"] = description;
    s["properties"] = Json::Value(Json::objectValue);
    s["additionalProperties"] = false;
    return s;
}

// The schema of a scalar field: what the reader of its width stores as written.
inline Json::Value ScalarSchema(const Field& f)
{
    Json::Value s(Json::objectValue);
    WithScalarType(f, [&](auto zero) {
        using T = decltype(zero);
        if constexpr (std::is_floating_point_v<T>) {
            s["type"].append("number");
            s["type"].append("string"); // decimal text, converted like atof
        } else {
            s["type"] = "integer";
            if constexpr (std::is_signed_v<T>) {
                s["minimum"] = Json::Int64(std::numeric_limits<T>::min());
                s["maximum"] = Json::Int64(std::numeric_limits<T>::max());
            } else {
                s["minimum"] = 0;
                s["maximum"] = Json::UInt64(std::numeric_limits<T>::max());
            }
        }
    });
    return s;
}

// Builds the schema of a section object: each property where the parser
// reads its key, arrays described by their first element.
class SchemaVisitor {
public:
    // A level with the object schema its keys go into; a place with the
    // schema of its value.
    struct SchemaLevel {
        para::Level where;
        Json::Value* object;
    };
    struct SchemaPlace {
        Place where;
        Json::Value* schema;
    };

    template <class Walk> void Group(const Field& group, const SchemaLevel& l, Walk walk)
    {
        Json::Value& node = Property(*l.object, group);
        if (!node.isMember("properties"))
            node = ObjectSchema("group of keys stored in this record");
        walk(SchemaLevel{GroupLevel(group, l.where), &node});
    }

    template <class Walk> void Entry(const Field& f, const SchemaLevel& l, Walk walk)
    {
        const Place p = FieldPlace(f, l.where);
        if (f.op == Op::Step)
            Step(f, p, *l.object);
        else if (f.op != Op::Reserved)
            walk(SchemaPlace{p, (f.flags & Field::kSelf) ? l.object : &Property(*l.object, f)});
    }

    template <class Walk> void Elements(const Field& f, unsigned dim, const SchemaPlace& p, Walk walk)
    {
        Json::Value& s = *p.schema = Json::Value(Json::objectValue);
        s["type"] = "array";
        s["maxItems"] = Json::UInt64(f.count[dim]);
        if (f.op != Op::Text)
            s["description"] = "up to " + std::to_string(f.count[dim]) +
                               " entries; entries beyond the array keep the record's bytes";
        walk(SchemaPlace{ElementPlace(f, dim, p.where, 0), &s["items"]});
    }

    template <class Walk> void Record(const Field& f, const SchemaPlace& p, Walk walk)
    {
        const para::Record& r = f.embedded();
        Json::Value& s = *p.schema =
            ObjectSchema(p.where.element ? "entry of " + std::to_string(r.size) + " bytes"
                                         : "embedded record of " + std::to_string(r.size) + " bytes, " +
                                               Where(p.where) + ", read by its own parser");
        walk(SchemaLevel{RecordLevel(p.where), &s});
    }

    void Leaf(const Field& f, const SchemaPlace& sp)
    {
        const Place& p = sp.where;
        const size_t n = f.size;
        switch (f.op) {
        case Op::Scalar: {
            Json::Value s = ScalarSchema(f);
            s["description"] =
                Where(p, ScalarLabel(f)) + (f.kind() == Kind::Float ? " (a number, or decimal text)" : "");
            *sp.schema = s;
            break;
        }
        case Op::Text: {
            Json::Value s(Json::objectValue);
            s["type"] = "string";
            s["maxLength"] = Json::UInt64(n - 1);
            s["description"] = "text of at most " + std::to_string(n - 1) +
                               " bytes (maxLength counts characters: one byte each in ASCII), " +
                               Where(p, "char[" + std::to_string(n) + "]") + "; " + std::to_string(n) +
                               " bytes or more fill the field with no terminator";
            *sp.schema = s;
            break;
        }
        default: break;
        }
    }

private:
    static Json::Value& Property(Json::Value& object, const Field& f)
    {
        return object["properties"][std::string(f.key, f.length)];
    }

    // "field RCP[i].RSI[j][k].S, u32 at offset 0 + 1796*i + 112*j + 16*k":
    // arrays are described by their first element.
    static std::string Where(const Place& p, const std::string& type = "")
    {
        static const char kLetters[] = "ijklmn";
        std::string where = "field " + PathText(p.path, kLetters);
        if (!type.empty())
            where += ", " + type;
        where += " at offset " + std::to_string(p.offset);
        for (size_t d = 0; d < p.strides.size(); ++d)
            where += " + " + std::to_string(p.strides[d]) + "*" + kLetters[d % 6];
        return where;
    }

    // A conversion step: the JSON type of each of its keys is what its Write
    // gives for a zeroed field; an integer key that Write gives as 0 for a
    // zeroed field and as a larger number for an all-ones one is bounded by
    // these two.
    void Step(const Field& f, const Place& p, Json::Value& object)
    {
        const size_t bytes = f.count[0] ? size_t(f.count[0]) * f.size : f.size;
        const std::vector<unsigned char> zero(bytes, 0), ones(bytes, 0xFF);
        Json::Value low(Json::objectValue), high(Json::objectValue);
        WithStep(f, [&](auto step) {
            step.Write(zero.data(), f, low);
            step.Write(ones.data(), f, high);
        });
        const std::string keys(f.key, f.length);
        const std::string label = TypeLabel(f.count[0] ? Kind::Hex : f.kind(), f.count[0] ? bytes : f.size);
        const std::string what = " converted into " + Where(p, label) +
                                 (keys.find(',') != std::string::npos ? " with the keys " + keys : "");
        for (unsigned i = 0; i < 2; ++i) {
            const std::string key = StepKey(f, i);
            if (key.empty())
                break;
            const Json::Value& v0 = low[key];
            const Json::Value& v1 = high[key];
            Json::Value s(Json::objectValue);
            if (v0.isString()) {
                s["type"] = "string";
                s["description"] = "text" + what + ", e.g. \"" + v1.asString() + "\"";
            } else if (v0.isIntegral()) {
                s["type"] = "integer";
                if (v0.asLargestInt() == 0 && v1.isIntegral() && v1.asLargestInt() > 0) {
                    s["minimum"] = 0;
                    s["maximum"] = v1;
                }
                s["description"] = "number" + what;
            } else {
                s["description"] = "value" + what;
            }
            object["properties"][key] = s;
        }
    }
};

// The schema of the section object of a record.
inline Json::Value SectionSchema(const Record& record, const std::string& description)
{
    Json::Value s = ObjectSchema(description);
    SchemaVisitor schema;
    WalkRecord(record, schema, SchemaVisitor::SchemaLevel{Level(), &s});
    return s;
}

} // namespace para

#endif
