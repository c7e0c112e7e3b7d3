// The interpreter of the record descriptions: fills a record from a JSON
// object by walking its table. Every parser of the library runs here.
#include "ParaLog.h"
#include "ParaSteps.h"
#include "ParaTypes.h"

namespace para {
namespace {

// The members found for the keys of the levels being read: each level takes
// the next slots for its keys and gives them back when it ends.
struct Slots {
    static constexpr unsigned kCapacity = 160;
    const Json::Value* at[kCapacity];
    unsigned top = 0;
};

// What a walk carries: the record's table and lookup order, the slots, and
// whether an embedded record's parser read something (returned 0).
struct Walk {
    const Field* table;
    const uint8_t* order;
    Slots& slots;
    bool partRead;
};

int ParseWith(const Parser& p, const Json::Value& object, void* record, Slots& slots);
const Field* Level(const Field* first, unsigned start, unsigned keys, const Json::Value& object, char* base, Walk& walk);

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
const Json::Value** Bind(const Walk& walk, unsigned start, unsigned keys, const Json::Value& object)
{
    Slots& slots = walk.slots;
    if (!object.isObject() || keys > Slots::kCapacity - slots.top)
        return nullptr;
    const Json::Value** slot = slots.at + slots.top;
    slots.top += keys;
    std::memset(slot, 0, keys * sizeof *slot);
    const uint8_t* order = walk.order + start;
    // Both runs are sorted and a level's keys are distinct: each member name
    // is fetched once, and each comparison advances one run or both.
    unsigned k = 0, members = object.size();
    Json::Value::const_iterator it = object.begin();
    while (members > 0 && k < keys) {
        const char* nameEnd = nullptr;
        const char* name = it.memberName(&nameEnd);
        const unsigned length = unsigned(nameEnd - name);
        int c;
        while ((c = Compare(name, length, walk.table[order[k]])) > 0)
            if (++k == keys)
                return slot;
        if (c == 0)
            slot[k++] = &*it;
        ++it;
        --members;
    }
    return slot;
}

void Element(const Field& f, const Json::Value& value, char* at, Walk& walk)
{
    switch (f.op) {
    case Op::Scalar: ReadScalarField(f, value, at); break;
    case Op::Text: GetJsonCString(value, at, f.size); break;
    case Op::Record: {
        const Record& r = f.record();
        Walk inner{r.fields, r.order, walk.slots, false};
        Level(r.fields, 0, r.keys, value, at, inner);
        break;
    }
    case Op::Parsed:
        if (ParseWith(f.parser(), value, at, walk.slots) == 0)
            walk.partRead = true;
        break;
    default: break;
    }
}

// Entry i of dimension `dim` is read only where `list` is an array with a
// valid index i < bound; entries beyond a shorter array keep their bytes.
// The array is iterated, not indexed.
void Elements(const Field& f, unsigned dim, const Json::Value& list, char* at, Walk& walk)
{
    if (!list.isArray())
        return;
    const unsigned size = list.size(); // the last index + 1
    const unsigned n = size < f.count[dim] ? size : f.count[dim];
    const size_t stride = f.stride(dim);
    const bool inner = dim + 1 < f.dims();
    const auto visit = [&](unsigned i, const Json::Value& e) {
        if (inner)
            Elements(f, dim + 1, e, at + i * stride, walk);
        else
            Element(f, e, at + i * stride, walk);
    };
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

void ReadField(const Field& f, const Json::Value& value, char* base, Walk& walk)
{
    if (f.count[0])
        Elements(f, 0, value, base + f.offset, walk);
    else
        Element(f, value, base + f.offset, walk);
}

// Reads the entries of one level (a record, a group) from `object`, from
// `first` up to the End of the level; returns that End.
const Field* Level(const Field* first, unsigned start, unsigned keys, const Json::Value& object, char* base, Walk& walk)
{
    const Json::Value** slot = Bind(walk, start, keys, object);
    const auto value = [&](const Field& f) -> const Json::Value& {
        if (!slot)
            return Member(object, f);
        return slot[f.rank] ? *slot[f.rank] : Json::Value::nullSingleton();
    };
    const Field* f = first;
    for (; f->op != Op::End; ++f) {
        switch (f->op) {
        case Op::Group: f = Level(f + 1, f->keyStart(), f->keyCount(), value(*f), base, walk); break;
        case Op::Reserved: break;
        case Op::Step:
            WithStep(*f, [&](auto step) { step.Read(object, *f, reinterpret_cast<unsigned char*>(base + f->offset)); });
            break;
        case Op::Scalar:
            if (!f->count[0]) { // the common case, without the calls below
                ReadScalarField(*f, value(*f), base + f->offset);
                break;
            }
            Elements(*f, 0, value(*f), base + f->offset, walk);
            break;
        default: ReadField(*f, (f->flags & Field::kSelf) ? object : value(*f), base, walk); break;
        }
    }
    if (slot)
        walk.slots.top -= keys;
    return f;
}

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
    Walk walk{r.fields, r.order, slots, false};
    const unsigned top = slots.top;
    try {
        Level(r.fields, 0, r.keys, object, static_cast<char*>(record), walk);
    } catch (...) {
        slots.top = top;
        if (p.rules.failed)
            Common::gclDebugPrintf(0, PARA_SOURCE_FILE, p.name, __LINE__, "%s", p.rules.failed);
        return -1;
    }
    return p.rules.fromParts && !walk.partRead ? 1 : 0;
}

} // namespace

void ReadEntry(const Field& field, const Json::Value& object, void* base)
{
    Slots slots;
    Walk walk{&field, nullptr, slots, false};
    ReadField(field, (field.flags & Field::kSelf) ? object : Member(object, field), static_cast<char*>(base), walk);
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
