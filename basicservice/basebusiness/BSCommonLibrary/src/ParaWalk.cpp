// The interpreter of the record descriptions: fills a record from a JSON
// object by walking its table. Every parser of the library runs here.
#include "ParaLog.h"
#include "ParaSteps.h"
#include "ParaTypes.h"

namespace para {
namespace {

// What a walk learns on its way: whether an embedded record's parser read
// something (returned 0).
struct Walk {
    bool partRead = false;
};

const Field* Fields(const Field* f, const Json::Value& object, char* base, Walk& walk);

void Element(const Field& f, const Json::Value& value, char* at, Walk& walk)
{
    switch (f.op) {
    case Op::Scalar: ReadScalarField(f, value, at); break;
    case Op::Text: GetJsonCString(value, at, f.size); break;
    case Op::Record: Fields(f.record().fields, value, at, walk); break;
    case Op::Parsed:
        if (Parse(f.parser(), value, at) == 0)
            walk.partRead = true;
        break;
    default: break;
    }
}

// Entry i of dimension `dim` is read only where `list` is an array with a
// valid index i < bound; entries beyond a shorter array keep their bytes. The
// array is iterated, not indexed; an index that the array lacks (one built
// sparsely by a program) reads the null value, as list[i] gives.
void Elements(const Field& f, unsigned dim, const Json::Value& list, char* at, Walk& walk)
{
    if (!list.isArray())
        return;
    const unsigned bound = f.count[dim];
    const size_t stride = f.stride(dim);
    const bool inner = dim + 1 < f.dims();
    const auto visit = [&](unsigned i, const Json::Value& e) {
        if (inner)
            Elements(f, dim + 1, e, at + i * stride, walk);
        else
            Element(f, e, at + i * stride, walk);
    };
    unsigned next = 0;
    const Json::Value::const_iterator end = list.end();
    for (Json::Value::const_iterator it = list.begin(); it != end && next < bound; ++it) {
        const unsigned index = it.index();
        for (; next < index && next < bound; ++next)
            visit(next, Json::Value::nullSingleton());
        if (index >= bound)
            break;
        visit(index, *it);
        next = index + 1;
    }
}

void Entry(const Field& f, const Json::Value& object, char* base, Walk& walk)
{
    const Json::Value& value = (f.flags & Field::kSelf) ? object : Member(object, f);
    if (f.count[0])
        Elements(f, 0, value, base + f.offset, walk);
    else
        Element(f, value, base + f.offset, walk);
}

// Reads the entries from f up to the End of its level; returns that End.
const Field* Fields(const Field* f, const Json::Value& object, char* base, Walk& walk)
{
    for (;; ++f) {
        switch (f->op) {
        case Op::End: return f;
        case Op::Group: f = Fields(f + 1, Member(object, *f), base, walk); break;
        case Op::Reserved: break;
        case Op::Step:
            WithStep(*f, [&](auto step) { step.Read(object, *f, reinterpret_cast<unsigned char*>(base + f->offset)); });
            break;
        default: Entry(*f, object, base, walk); break;
        }
    }
}

} // namespace

void ReadEntry(const Field& field, const Json::Value& object, void* base)
{
    Walk walk;
    Entry(field, object, static_cast<char*>(base), walk);
}

int Parse(const Parser& p, const Json::Value& object, void* record)
{
    if (object.empty() || (p.needs && Member(object, p.needs).empty())) {
        if (p.empty)
            Common::gclDebugPrintf(0, PARA_SOURCE_FILE, p.name, __LINE__, "%s", p.empty);
        return -1;
    }
    // Nothing in the walk is expected to throw: member lookups never do and
    // the readers catch their own exceptions. The guard keeps a later change
    // of the tables or of the JSON library from letting one out.
    Walk walk;
    try {
        Fields(p.record->fields, object, static_cast<char*>(record), walk);
    } catch (...) {
        if (p.failed)
            Common::gclDebugPrintf(0, PARA_SOURCE_FILE, p.name, __LINE__, "%s", p.failed);
        return -1;
    }
    return p.fromParts && !walk.partRead ? 1 : 0;
}

int ParseSection(const Type& type, const Json::Value& doc, void* record)
{
    return Parse(type.parser, Section(doc, type.key), record);
}

} // namespace para
