// The inspector's lint: walks a record description over a section with the
// parser's own navigation and reports what the parser would silently lose.
#ifndef PARA_CHECK_H
#define PARA_CHECK_H

#include "ParaPlace.h"
#include "ToolText.h"

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

// Checks one section object: walks its record's table over the JSON the way
// the parser navigates it and reports what the parser would lose. Values are
// read into scratch bytes with the library's own readers, so what is
// reported is what the parser stores.
class CheckVisitor {
public:
    // A level with the object its fields are read from; a place with its value.
    struct ObjectLevel {
        para::Level where;
        const Json::Value& object;
    };
    struct ValuePlace {
        Place where;
        const Json::Value& value;
    };

    CheckVisitor(std::string root, std::vector<Finding>& out) : root_(std::move(root)), out_(&out) {}

    template <class Walk> void Group(const Field& group, const ObjectLevel& l, Walk walk)
    {
        const para::Level inner = GroupLevel(group, l.where);
        walk(ObjectLevel{inner, Read(l.object, inner.group, l.where.object)});
    }

    template <class Walk> void Entry(const Field& f, const ObjectLevel& l, Walk walk)
    {
        const Place p = FieldPlace(f, l.where);
        if (f.op == Op::Step)
            Step(f, p, l.object);
        else if (f.op != Op::Reserved)
            walk(ValuePlace{p, (f.flags & Field::kSelf) ? l.object : Read(l.object, std::string(f.key, f.length), p.object)});
    }

    template <class Walk> void Elements(const Field& f, unsigned dim, const ValuePlace& p, Walk walk)
    {
        const Json::Value& list = p.value;
        if (list.isNull())
            return;
        const unsigned bound = f.count[dim];
        if (!list.isArray()) {
            if (shapes_.insert(&list).second)
                Report(p.where.keys, std::string(JsonTypeName(list)) + " where an array is read: nothing is stored");
            return;
        }
        if (list.size() > bound)
            Report(p.where.keys, "array of " + std::to_string(list.size()) + " elements: elements " +
                                     std::to_string(bound) + " and later are ignored (bound " + std::to_string(bound) + ")");
        for (unsigned i = 0; i < list.size() && i < bound; ++i)
            walk(ValuePlace{ElementPlace(f, dim, p.where, i), list[Json::ArrayIndex(i)]});
    }

    template <class Walk> void Record(const Field&, const ValuePlace& p, Walk walk)
    {
        walk(ObjectLevel{RecordLevel(p.where), p.value});
    }

    void Leaf(const Field& f, const ValuePlace& p)
    {
        if (f.op == Op::Scalar)
            Scalar(f, p.where, p.value);
        else if (f.op == Op::Text)
            Text(f, p.where, p.value);
    }

    // Reports the members of every object read from that no parser reads.
    void Finish()
    {
        for (const auto& [object, path] : objects_)
            for (const std::string& name : object->getMemberNames())
                if (!read_.count({object, name}))
                    out_->push_back({Join(Joined(path, name)), "key not read by the parser: ignored"});
    }

private:
    // The JSON path of a key path under the section.
    std::string Join(const Path& keys) const
    {
        const std::string text = PathText(keys);
        return text.empty() ? root_ : root_ + (text[0] == '[' ? "" : ".") + text;
    }

    void Report(const Path& keys, std::string what) { out_->push_back({Join(keys), std::move(what)}); }

    // Member `key` of `object` (at key path `at`), as the parser reads it: a
    // non-object gives null, and is reported once.
    const Json::Value& Read(const Json::Value& object, const std::string& key, const Path& at)
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

    void Step(const Field& f, const Place& p, const Json::Value& object)
    {
        WithStep(f, [&](auto step) {
            step.Check(object, f, [&](const std::string& key, const std::string& what) {
                out_->push_back({Join(Joined(p.object, key)), what});
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
    std::vector<std::pair<const Json::Value*, Path>> objects_; // with their key paths
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
    CheckVisitor check(root, findings);
    WalkRecord(record, check, CheckVisitor::ObjectLevel{Level(), section});
    check.Finish();
    return findings;
}

} // namespace para

#endif
