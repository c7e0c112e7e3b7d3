// The inspector's lint: walks a record description over a section with the
// parser's own navigation and reports what the parser would silently lose.
#ifndef PARA_CHECK_H
#define PARA_CHECK_H

#include "ParaWalk.h"

#include <cstring>
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

// Checks one section object: walks its record's table over the JSON the way
// the parser navigates it and reports what the parser would lose. Values are
// read into scratch bytes with the library's own readers, so what is
// reported is what the parser stores.
class CheckVisitor {
public:
    CheckVisitor(const Json::Value& section, std::string root, std::vector<Finding>& out)
        : root_(std::move(root)), out_(&out)
    {
        stack_.push_back(&section);
    }

    unsigned Array(const Field& f, const Place& p, unsigned dim)
    {
        const Json::Value& list = dim > 0 ? Top() : Value(f, p);
        stack_.push_back(&list);
        if (list.isNull())
            return 0;
        const unsigned bound = f.count[dim];
        if (!list.isArray()) {
            if (shapes_.insert(&list).second)
                Report(p.keys, std::string(JsonTypeName(list)) + " where an array is read: nothing is stored");
            return 0;
        }
        if (list.size() > bound)
            Report(p.keys, "array of " + std::to_string(list.size()) + " elements: elements " + std::to_string(bound) +
                               " and later are ignored (bound " + std::to_string(bound) + ")");
        return list.size() < bound ? list.size() : bound;
    }
    void EnterElement(const Field&, const Place&, unsigned i) { stack_.push_back(&Top()[Json::ArrayIndex(i)]); }
    void LeaveElement() { stack_.pop_back(); }
    void EndArray() { stack_.pop_back(); }

    bool EnterRecord(const Field& f, const Place& p)
    {
        stack_.push_back(&Value(f, p));
        return true;
    }
    void LeaveRecord() { stack_.pop_back(); }

    void EnterGroup(const Field& f, const Place& p) { stack_.push_back(&Read(Top(), std::string(f.key, f.length), p.object)); }
    void LeaveGroup() { stack_.pop_back(); }

    void Leaf(const Field& f, const Place& p)
    {
        switch (f.op) {
        case Op::Scalar: Scalar(f, p, Value(f, p)); break;
        case Op::Text: Text(f, p, Value(f, p)); break;
        case Op::Step: Step(f, p); break;
        default: break;
        }
    }

    // Reports the members of every object read from that no parser reads.
    void Finish()
    {
        for (const auto& [object, path] : objects_)
            for (const std::string& name : object->getMemberNames())
                if (!read_.count({object, name}))
                    out_->push_back({Join(path, name), "key not read by the parser: ignored"});
    }

private:
    const Json::Value& Top() const { return *stack_.back(); }

    std::string Join(const std::string& keys, const std::string& name = "") const
    {
        std::string path = root_;
        if (!keys.empty())
            path += (keys[0] == '[' ? "" : ".") + keys;
        if (!name.empty())
            path += "." + name;
        return path;
    }

    void Report(const std::string& keys, std::string what) { out_->push_back({Join(keys), std::move(what)}); }

    // Member `key` of `object` (at key path `at`), as the parser reads it: a
    // non-object gives null, and is reported once.
    const Json::Value& Read(const Json::Value& object, const std::string& key, const std::string& at)
    {
        if (object.isObject()) {
            if (seen_.insert(&object).second)
                objects_.push_back({&object, at});
            read_.insert({&object, key});
            return Member(object, key.c_str(), key.size());
        }
        if (!object.isNull() && shapes_.insert(&object).second)
            Report(at, std::string(JsonTypeName(object)) + " where an object is read: its fields get their defaults");
        return Json::Value::nullSingleton();
    }

    // The value a field (or element) is read from.
    const Json::Value& Value(const Field& f, const Place& p)
    {
        if (p.element || (f.flags & Field::kSelf))
            return Top();
        return Read(Top(), std::string(f.key, f.length), p.object);
    }

    void Scalar(const Field& f, const Place& p, const Json::Value& value)
    {
        if (value.isNull())
            return; // an absent key takes the default: nothing is lost
        unsigned char scratch[8] = {};
        const int result = ReadScalarField(f, value, scratch);
        const std::string width = ScalarLabel(f), stored = Stored(f, scratch);
        if (result != 0) {
            Report(p.keys, std::string(JsonTypeName(value)) + " is not read into " + width + ": stores " + stored);
            return;
        }
        if (f.kind() == Kind::Float)
            return;
        const bool isSigned = f.kind() == Kind::Signed || (f.kind() == Kind::Char && std::is_signed_v<char>);
        if (!isSigned && value.isIntegral() && value.asDouble() < 0)
            Report(p.keys, "negative value " + Text(value) + " into unsigned " + width + ": stores " + stored);
        else if (isSigned ? !(value.isInt64() && std::to_string(value.asInt64()) == stored)
                          : !(value.isUInt64() && std::to_string(value.asUInt64()) == stored))
            Report(p.keys, "value " + Text(value) + " does not fit " + width + ": stores " + stored);
    }

    void Text(const Field& f, const Place& p, const Json::Value& value)
    {
        const size_t n = f.size;
        if (value.isNull())
            return;
        if (!value.isString()) {
            Report(p.keys, std::string(JsonTypeName(value)) + " where text is read: stores " + std::to_string(n) +
                               " zero bytes");
            return;
        }
        const char* begin = nullptr;
        const char* end = nullptr;
        value.getString(&begin, &end);
        const size_t length = size_t(end - begin);
        if (length > n)
            Report(p.keys, "text of " + std::to_string(length) + " bytes cut to its field's " + std::to_string(n) +
                               ": stores the first " + std::to_string(n) + " with no terminator");
        else if (length == n)
            Report(p.keys, "text fills its " + std::to_string(n) + "-byte field: stored with no terminator");
    }

    void Step(const Field& f, const Place& p)
    {
        const Json::Value& object = Top();
        WithStep(f, [&](auto step) {
            step.Check(object, f, [&](const std::string& key, const std::string& what) {
                out_->push_back({Join(p.object, key), what});
            });
        });
        for (unsigned i = 0; i < 2; ++i) {
            const std::string key = StepKey(f, i);
            if (key.empty())
                break;
            Read(object, key, p.object);
        }
    }

    // The stored value as text.
    static std::string Stored(const Field& f, const unsigned char* at)
    {
        return WithScalarType(f, [&](auto zero) {
            decltype(zero) v = zero;
            std::memcpy(&v, at, sizeof v);
            if constexpr (std::is_floating_point_v<decltype(v)>)
                return std::to_string(v);
            else
                return std::to_string(
                    static_cast<std::conditional_t<std::is_signed_v<decltype(v)>, long long, unsigned long long>>(v));
        });
    }

    static std::string Text(const Json::Value& v)
    {
        return v.isUInt64() ? std::to_string(v.asUInt64()) : std::to_string(v.asLargestInt());
    }

    std::string root_;
    std::vector<Finding>* out_;
    std::vector<const Json::Value*> stack_;
    std::vector<std::pair<const Json::Value*, std::string>> objects_; // with their key paths
    std::set<const Json::Value*> seen_;
    std::set<const Json::Value*> shapes_;
    std::set<std::pair<const Json::Value*, std::string>> read_;
};

// Checks one section object against the description of its record.
inline std::vector<Finding> CheckSection(const Record& record, const Json::Value& section, const std::string& root)
{
    std::vector<Finding> findings;
    if (section.isNull())
        return findings;
    if (section.empty()) {
        findings.push_back({root, "empty section: the parser returns -1 and writes nothing"});
        return findings;
    }
    CheckVisitor check(section, root, findings);
    WalkRecord(record, check);
    check.Finish();
    return findings;
}

} // namespace para

#endif
