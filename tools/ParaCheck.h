// The inspector's lint: walks a record description over a section with the
// parser's own navigation and reports what the parser would silently lose.
#ifndef PARA_CHECK_H
#define PARA_CHECK_H

#include "ParaDescribe.h"

#include <memory>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace para {

struct Finding {
    std::string path; // JSON path, e.g. MDVR.RP.RCP[0].RSI[7]
    std::string what; // what the library does with it and what it stores
};

inline const char* JsonTypeName(const Json::Value& v)
{
    switch (v.type()) {
    case Json::nullValue: return "null";
    case Json::intValue:
    case Json::uintValue: return "an integer";
    case Json::realValue: return "a real number";
    case Json::stringValue: return "a string";
    case Json::booleanValue: return "a boolean";
    case Json::arrayValue: return "an array";
    case Json::objectValue: return "an object";
    }
    return "a value";
}

// Whether a conversion step can report its own losses: Check(object, report).
struct IgnoreReport {
    void operator()(const char*, const std::string&) const {}
};
template <class Step, class = void> struct HasCheck : std::false_type {};
template <class Step>
struct HasCheck<Step, std::void_t<decltype(std::declval<const Step&>().Check(std::declval<const Json::Value&>(),
                                                                             IgnoreReport()))>>
    : std::true_type {};

// The leaf of the checking walk. Values are read into scratch copies with the
// library's own readers, so what is reported is what the parser stores.
class CheckLeaf {
public:
    CheckLeaf(std::string root, std::vector<Finding>& out) : out_(&out) { path_.push_back(std::move(root)); }

    template <class T> void Scalar(const Json::Value& value, T&)
    {
        T stored{};
        const int result = ReadScalar(value, stored);
        if (value.isNull())
            return; // an absent key takes the default: nothing is lost
        const std::string width = WidthName<T>();
        if (result != 0) {
            Report(std::string(JsonTypeName(value)) + " is not read into " + width + ": stores " + Show(stored));
            return;
        }
        if constexpr (std::is_integral_v<T>) {
            if (std::is_unsigned_v<T> && value.isIntegral() && value.asDouble() < 0)
                Report("negative value " + Text(value) + " into unsigned " + width + ": stores " + Show(stored));
            else if (!Fits(value, stored))
                Report("value " + Text(value) + " does not fit " + width + ": stores " + Show(stored));
        }
    }

    template <class C, size_t N> void Text(const Json::Value& value, C (&)[N])
    {
        if (value.isNull())
            return;
        if (!value.isString()) {
            Report(std::string(JsonTypeName(value)) + " where text is read: stores " + std::to_string(N) + " zero bytes");
            return;
        }
        const char* begin = nullptr;
        const char* end = nullptr;
        value.getString(&begin, &end);
        const size_t length = size_t(end - begin);
        if (length > N)
            Report("text of " + std::to_string(length) + " bytes cut to its field's " + std::to_string(N) +
                   ": stores the first " + std::to_string(N) + " with no terminator");
        else if (length == N)
            Report("text fills its " + std::to_string(N) + "-byte field: stored with no terminator");
    }

    template <class S, class Parser, class Walk> void Sub(const Json::Value& value, S& s, Parser, Walk& walk)
    {
        walk.Record(value, s);
    }

    template <class F, class Step> void Custom(const Json::Value& object, F&, const Step& step)
    {
        F scratch{};
        step.Read(object, scratch);
        if constexpr (HasCheck<Step>::value)
            step.Check(object, [&](const char* key, const std::string& what) {
                out_->push_back({Path() + "." + key, what});
            });
        const std::string keys = step.Keys();
        for (size_t at = 0; at <= keys.size();) {
            size_t comma = keys.find(',', at);
            if (comma == std::string::npos)
                comma = keys.size();
            Enter(object, keys.substr(at, comma - at).c_str());
            Leave();
            at = comma + 1;
        }
    }

    void Enter(const Json::Value& object, const char* key)
    {
        if (object.isObject()) {
            if (seen_.insert(&object).second)
                objects_.push_back({&object, Path()});
            read_.insert({&object, key});
        } else if (!object.isNull() && shapes_.insert(&object).second) {
            Report(std::string(JsonTypeName(object)) + " where an object is read: its fields get their defaults");
        }
        path_.push_back(std::string(".") + key);
    }

    void EnterIndex(unsigned i) { path_.push_back("[" + std::to_string(i) + "]"); }

    void Leave() { path_.pop_back(); }

    void Array(const Json::Value& value, size_t bound)
    {
        if (value.isNull())
            return;
        if (!value.isArray()) {
            if (shapes_.insert(&value).second)
                Report(std::string(JsonTypeName(value)) + " where an array is read: nothing is stored");
        } else if (value.size() > bound) {
            Report("array of " + std::to_string(value.size()) + " elements: elements " + std::to_string(bound) +
                   " and later are ignored (bound " + std::to_string(bound) + ")");
        }
    }

    // Reports the members of every object read from that no parser reads.
    void Finish()
    {
        for (const auto& [object, path] : objects_)
            for (const std::string& name : object->getMemberNames())
                if (!read_.count({object, name}))
                    out_->push_back({path + "." + name, "key not read by the parser: ignored"});
    }

private:
    std::string Path() const
    {
        std::string p;
        for (const std::string& part : path_)
            p += part;
        return p;
    }

    void Report(std::string what) { out_->push_back({Path(), std::move(what)}); }

    template <class T> static std::string WidthName()
    {
        if constexpr (std::is_floating_point_v<T>)
            return "f32";
        else if constexpr (std::is_same_v<T, char>)
            return "char";
        else
            return (std::is_signed_v<T> ? "i" : "u") + std::to_string(8 * sizeof(T));
    }

    template <class T> static std::string Show(T v)
    {
        if constexpr (std::is_floating_point_v<T>)
            return std::to_string(v);
        else
            return std::to_string(static_cast<std::conditional_t<std::is_signed_v<T>, long long, unsigned long long>>(v));
    }

    static std::string Text(const Json::Value& v) { return v.isUInt64() ? std::to_string(v.asUInt64()) : std::to_string(v.asLargestInt()); }

    // Whether the stored integer equals the JSON number.
    template <class T> static bool Fits(const Json::Value& value, T stored)
    {
        if constexpr (std::is_signed_v<T>)
            return value.isInt64() && static_cast<long long>(stored) == value.asInt64();
        else
            return value.isUInt64() && static_cast<unsigned long long>(stored) == value.asUInt64();
    }

    std::vector<Finding>* out_;
    std::vector<std::string> path_;
    std::vector<std::pair<const Json::Value*, std::string>> objects_;
    std::set<const Json::Value*> seen_;
    std::set<const Json::Value*> shapes_;
    std::set<std::pair<const Json::Value*, std::string>> read_;
};

// Checks one section object against the description of its record.
template <class R> std::vector<Finding> CheckSection(const Json::Value& section, const std::string& root)
{
    std::vector<Finding> findings;
    if (section.isNull())
        return findings;
    if (section.empty()) {
        findings.push_back({root, "empty section: the parser returns -1 and writes nothing"});
        return findings;
    }
    std::unique_ptr<R> scratch(new R());
    BasicJsonWalk<CheckLeaf> walk(section, CheckLeaf(root, findings));
    Describe(walk, *scratch);
    walk.leaf().Finish();
    return findings;
}

} // namespace para

#endif
