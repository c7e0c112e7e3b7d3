// The interpreter of the record descriptions: fills a record from a JSON
// object by walking its table. Every parser of the library runs here.
#include "ParaLog.h"
#include "ParaSteps.h"
#include "ParaTypes.h"
#include "ParaWalk.h"

namespace para {
namespace {

// The members found for the keys of the levels being read: each level takes
// the next slots for its keys and gives them back when it ends.
struct Slots {
    static constexpr unsigned kCapacity = 160;
    const Json::Value* at[kCapacity];
    unsigned top = 0;
};

int ParseWith(const Parser& p, const Json::Value& object, void* record, Slots& slots);

// The keys mostly differ in their first byte: that byte decides before the
// common comparison runs.
int Compare(const char* name, unsigned length, const Field& f)
{
    if (length && name[0] != f.key[0])
        return int(static_cast<unsigned char>(name[0])) - int(static_cast<unsigned char>(f.key[0]));
    return CompareKeys(name, length, f);
}

// Matches the members of `object` to the level's keys (sorted the same way)
// in one pass; nullptr when the object is no object or the slots are full,
// and then each key is looked up by itself.
const Json::Value** Bind(Slots& slots, const Field* table, const uint8_t* order, unsigned keys, const Json::Value& object)
{
    if (!object.isObject() || keys > Slots::kCapacity - slots.top)
        return nullptr;
    const Json::Value** slot = slots.at + slots.top;
    slots.top += keys;
    std::memset(slot, 0, keys * sizeof *slot);
    // Both runs are sorted and a level's keys are distinct: each member name
    // is fetched once, and each comparison advances one run or both.
    unsigned k = 0, members = object.size();
    Json::Value::const_iterator it = object.begin();
    while (members > 0 && k < keys) {
        const char* nameEnd = nullptr;
        const char* name = it.memberName(&nameEnd);
        const unsigned length = unsigned(nameEnd - name);
        int c;
        while ((c = Compare(name, length, table[order[k]])) > 0)
            if (++k == keys)
                return slot;
        if (c == 0)
            slot[k++] = &*it;
        ++it;
        --members;
    }
    return slot;
}

// Fills a record from JSON as a visitor of the walk. A level is an object
// read into the record at `base`, with the members found for its keys; a
// place is a value and where it is stored.
struct Reader {
    Slots& slots;
    bool partRead = false; // an embedded record's parser read something (returned 0)

    struct Level {
        const Json::Value& object;
        char* base;
        const Field* table; // of the record the level belongs to, with its lookup order
        const uint8_t* order;
        const Json::Value** slot; // nullptr: each key is looked up by itself
    };
    struct Place {
        const Json::Value& value;
        char* at;
    };

    // Walks the level of the record's `keys` keys from `start` in its lookup order.
    template <class Walk>
    void Read(const Field* table, const uint8_t* order, unsigned start, unsigned keys, const Json::Value& object,
              char* base, Walk walk)
    {
        const Json::Value** slot = Bind(slots, table, order + start, keys, object);
        walk(Level{object, base, table, order, slot});
        if (slot)
            slots.top -= keys;
    }

    static const Json::Value& Value(const Field& f, const Level& l)
    {
        if (!l.slot)
            return Member(l.object, f);
        return l.slot[f.rank] ? *l.slot[f.rank] : Json::Value::nullSingleton();
    }

    template <class Walk> void Group(const Field& f, const Level& l, Walk walk)
    {
        Read(l.table, l.order, f.keyStart(), f.keyCount(), Value(f, l), l.base, walk);
    }

    template <class Walk> void Entry(const Field& f, const Level& l, Walk walk)
    {
        switch (f.op) {
        case Op::Reserved: return;
        case Op::Step:
            WithStep(f, [&](auto step) { step.Read(l.object, f, reinterpret_cast<unsigned char*>(l.base + f.offset)); });
            return;
        case Op::Scalar:
            if (!f.count[0]) { // the common case, without the calls of the walk
                ReadScalarField(f, Value(f, l), l.base + f.offset);
                return;
            }
            break;
        default: break;
        }
        walk(Place{(f.flags & Field::kSelf) ? l.object : Value(f, l), l.base + f.offset});
    }

    // Entry i of dimension `dim` is read only where the value is an array with
    // a valid index i < bound; entries beyond a shorter array keep their
    // bytes. The array is iterated, not indexed.
    template <class Each> void Elements(const Field& f, unsigned dim, const Place& p, Each each)
    {
        const Json::Value& list = p.value;
        char* const at = p.at;
        if (!list.isArray())
            return;
        const unsigned size = list.size(); // the last index + 1
        const unsigned n = size < f.count[dim] ? size : f.count[dim];
        const size_t stride = f.stride(dim);
        const auto visit = [&](unsigned i, const Json::Value& e) { each(Place{e, at + i * stride}); };
        // Indexes rise from 0, so member n - 1 has index n - 1 only when members
        // 0 to n - 1 have indexes 0 to n - 1, as in every array a parser makes.
        const Json::Value::const_iterator begin = list.begin(), end = list.end();
        Json::Value::const_iterator it = begin;
        unsigned k = 1;
        for (; k < n && it != end; ++k)
            ++it;
        if (k == n && it != end && it.index() == n - 1) {
            it = begin;
            for (unsigned i = 0; i < n; ++i, ++it)
                visit(i, *it);
            return;
        }
        // Built sparsely by a program: an index that the array lacks reads the
        // null value, as list[i] gives.
        unsigned next = 0;
        for (it = begin; it != end && next < n; ++it) {
            const unsigned index = it.index();
            for (; next < index && next < n; ++next)
                visit(next, Json::Value::nullSingleton());
            if (index >= n)
                break;
            visit(index, *it);
            next = index + 1;
        }
    }

    template <class Walk> void Record(const Field& f, const Place& p, Walk walk)
    {
        if (f.op == Op::Record) {
            const para::Record& r = f.record();
            Read(r.fields, r.order, 0, r.keys, p.value, p.at, walk);
        } else if (ParseWith(f.parser(), p.value, p.at, slots) == 0) {
            partRead = true;
        }
    }

    static void Leaf(const Field& f, const Place& p)
    {
        if (f.op == Op::Scalar)
            ReadScalarField(f, p.value, p.at);
        else if (f.op == Op::Text)
            GetJsonCString(p.value, p.at, f.size);
    }
};

int ParseWith(const Parser& p, const Json::Value& object, void* record, Slots& slots)
{
    if (object.empty() || (p.rules.needs && Member(object, p.rules.needs).empty())) {
        if (p.rules.empty)
            Common::gclDebugPrintf(0, PARA_SOURCE_FILE, p.name, __LINE__, "%s", p.rules.empty);
        return -1;
    }
    // Nothing in the walk is expected to throw: member lookups never do and
    // the readers catch their own exceptions. The guard keeps a later change
    // of the tables or of the JSON library from letting one out.
    const Record& r = *p.record;
    Reader reader{slots};
    const unsigned top = slots.top;
    try {
        reader.Read(r.fields, r.order, 0, r.keys, object, static_cast<char*>(record),
                    [&](const Reader::Level& level) { Walk<Reader>(reader).Entries(r.fields, level); });
    } catch (...) {
        slots.top = top;
        if (p.rules.failed)
            Common::gclDebugPrintf(0, PARA_SOURCE_FILE, p.name, __LINE__, "%s", p.rules.failed);
        return -1;
    }
    return p.rules.fromParts && !reader.partRead ? 1 : 0;
}

} // namespace

void ReadEntry(const Field& field, const Json::Value& object, void* base)
{
    Slots slots;
    Reader reader{slots};
    const Json::Value& value = (field.flags & Field::kSelf) ? object : Member(object, field);
    Walk<Reader>(reader).Value(field, Reader::Place{value, static_cast<char*>(base) + field.offset}, 0);
}

int Parse(const Parser& p, const Json::Value& object, void* record)
{
    Slots slots;
    return ParseWith(p, object, record, slots);
}

int ParseSection(const Type& type, const Json::Value& doc, void* record)
{
    return Parse(type.parser, Section(doc, type.key), record);
}

} // namespace para
