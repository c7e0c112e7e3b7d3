// JSON Schema (draft 2020-12) of section objects, from the record
// descriptions: one property per key, integer bounds from each field's width
// and signedness, maxItems from array bounds, text limits from field sizes,
// and no other keys (additionalProperties false), so that a schema-aware
// editor flags what `mdvr-param check` reports.
#ifndef PARA_SCHEMA_H
#define PARA_SCHEMA_H

#include "ParaDescribe.h"

#include <cstring>
#include <limits>
#include <memory>
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
template <class T> Json::Value ScalarSchema()
{
    Json::Value s(Json::objectValue);
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
    return s;
}

class SchemaWalk {
public:
    // `object` is the object schema of the record's JSON object.
    SchemaWalk(const void* base, Json::Value& object) : base_(static_cast<const char*>(base)), cur_(&object) {}

    template <class T> void field(const char* name, const char* key, T& f)
    {
        Prop(key) = Leaf(name, f);
    }

    template <class C, size_t N> void text(const char* name, const char* key, C (&f)[N])
    {
        Prop(key) = TextSchema(name, f);
    }

    template <class E, size_t N> void array(const char* name, const char* key, E (&a)[N])
    {
        (key ? Prop(key) : *cur_) = ArraySchema(name, a);
    }

    template <class C, size_t N, size_t M> void texts(const char* name, const char* key, C (&a)[M][N])
    {
        Json::Value s(Json::objectValue);
        s["type"] = "array";
        s["maxItems"] = Json::UInt64(M);
        s["items"] = TextSchema(Push(name, sizeof a[0]), a[0]);
        strides_.pop_back();
        Prop(key) = s;
    }

    template <class S, class Parser> void sub(const char* name, const char* key, S& s, Parser)
    {
        Prop(key) = RecordSchema(name, s, "embedded record of " + std::to_string(sizeof s) + " bytes, " + Where(name, &s) +
                                              ", read by its own parser");
    }

    // A conversion step: the JSON type of each of its keys is what its Write
    // gives for a zeroed field; an integer key that Write gives as 0 for a
    // zeroed field and as a larger number for an all-ones one is bounded by
    // these two.
    template <class F, class Step> void custom(const char* name, F& f, const Step& step)
    {
        static_assert(std::is_trivially_copyable_v<F>, "a step's field is plain bytes");
        F zero, ones;
        std::memset(static_cast<void*>(&zero), 0, sizeof zero);
        std::memset(static_cast<void*>(&ones), 0xFF, sizeof ones);
        Json::Value low(Json::objectValue), high(Json::objectValue);
        step.Write(zero, low);
        step.Write(ones, high);
        const std::string keys = step.Keys();
        const std::string what = std::string(" converted into ") + Where(name, &f, TypeLabel<F>()) +
                                 (keys.find(',') != std::string::npos ? " with the keys " + keys : "");
        for (const std::string& key : Split(keys)) {
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
            Prop(key.c_str()) = s;
        }
    }

    template <class F> void reserved(const char*, F&) {}

    template <class Body> void group(const char* key, Body body)
    {
        Json::Value& node = Prop(key);
        if (!node.isMember("properties"))
            node = ObjectSchema("group of keys stored in this record");
        Json::Value* outer = cur_;
        cur_ = &node;
        body();
        cur_ = outer;
    }

private:
    static std::vector<std::string> Split(const std::string& keys)
    {
        std::vector<std::string> out;
        for (size_t at = 0; at <= keys.size();) {
            size_t comma = keys.find(',', at);
            if (comma == std::string::npos)
                comma = keys.size();
            out.push_back(keys.substr(at, comma - at));
            at = comma + 1;
        }
        return out;
    }

    Json::Value& Prop(const char* key) { return (*cur_)["properties"][key]; }

    // The index letter of array depth d: i, j, k, ...
    static char IndexName(size_t d) { return "ijklmn"[d % 6]; }

    // "field RCP[i].RSI[j][k].S, u32 at offset 0 + 1796*i + 112*j + 16*k"
    // (arrays are described by their first element).
    std::string Where(const std::string& name, const void* at, const std::string& type = "") const
    {
        std::string where = "field " + path_ + name;
        if (!type.empty())
            where += ", " + type;
        where += " at offset " + std::to_string(size_t(static_cast<const char*>(at) - base_));
        for (size_t d = 0; d < strides_.size(); ++d)
            where += " + " + std::to_string(strides_[d]) + "*" + IndexName(d);
        return where;
    }

    // Enters an array of stride `stride`: the name of its element, "RSI[j]".
    std::string Push(const std::string& name, size_t stride)
    {
        strides_.push_back(stride);
        return name + "[" + IndexName(strides_.size() - 1) + "]";
    }

    // "u8", "i32", "char", "f32", "u8[6]".
    template <class T> static std::string TypeLabel()
    {
        if constexpr (std::is_array_v<T>)
            return TypeLabel<std::remove_extent_t<T>>() + "[" + std::to_string(std::extent_v<T>) + "]";
        else if constexpr (std::is_floating_point_v<T>)
            return "f32";
        else if constexpr (std::is_same_v<T, char>)
            return "char";
        else
            return (std::is_signed_v<T> ? "i" : "u") + std::to_string(8 * sizeof(T));
    }

    template <class T> Json::Value Leaf(const std::string& name, T& f)
    {
        if constexpr (std::is_array_v<T>) {
            return ArraySchema(name, f);
        } else {
            static_assert(std::is_arithmetic_v<T>, "a scalar field");
            Json::Value s = ScalarSchema<T>();
            s["description"] = Where(name, &f, TypeLabel<T>()) +
                               (std::is_floating_point_v<T> ? " (a number, or decimal text)" : "");
            return s;
        }
    }

    template <class C, size_t N> Json::Value TextSchema(const std::string& name, C (&f)[N])
    {
        Json::Value s(Json::objectValue);
        s["type"] = "string";
        s["maxLength"] = Json::UInt64(N - 1);
        s["description"] = "text of at most " + std::to_string(N - 1) + " bytes (maxLength counts characters: " +
                           "one byte each in ASCII), " + Where(name, &f, "char[" + std::to_string(N) + "]") +
                           "; " + std::to_string(N) + " bytes or more fill the field with no terminator";
        return s;
    }

    template <class E, size_t N> Json::Value ArraySchema(const std::string& name, E (&a)[N])
    {
        Json::Value s(Json::objectValue);
        s["type"] = "array";
        s["maxItems"] = Json::UInt64(N);
        s["description"] = "up to " + std::to_string(N) + " entries; entries beyond the array keep the record's bytes";
        const std::string element = Push(name, sizeof(E));
        if constexpr (std::is_arithmetic_v<E> || std::is_array_v<E>)
            s["items"] = Leaf(element, a[0]);
        else
            s["items"] = RecordSchema(element, a[0], "entry of " + std::to_string(sizeof(E)) + " bytes");
        strides_.pop_back();
        return s;
    }

    template <class R> Json::Value RecordSchema(const std::string& name, R& record, const std::string& description)
    {
        Json::Value s = ObjectSchema(description);
        Json::Value* outerCur = cur_;
        const std::string outerPath = path_;
        cur_ = &s;
        path_ += name + ".";
        Describe(*this, record);
        path_ = outerPath;
        cur_ = outerCur;
        return s;
    }

    const char* base_;
    Json::Value* cur_;
    std::string path_;           // field path of the enclosing records, "RCP[i]."
    std::vector<size_t> strides_; // strides of the enclosing arrays
};

// The schema of the section object of record type R.
template <class R> Json::Value SectionSchema(const std::string& description)
{
    std::unique_ptr<R> record(new R());
    Json::Value s = ObjectSchema(description);
    SchemaWalk walk(record.get(), s);
    Describe(walk, *record);
    return s;
}

} // namespace para

#endif
