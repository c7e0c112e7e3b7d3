// Logging of the parameter adapter through the support library.
#ifndef PARA_LOG_H
#define PARA_LOG_H

#include "CommonToolkit.h"
#include "ParaDescribe.h"

#define PARA_SOURCE_FILE "basicservice/basebusiness/BSCommonLibrary/src/CommonParaAdapter"

// Level-0 (error) line with the calling function's name and line.
#define PARA_LOG_ERROR(...) Common::gclDebugPrintf(0, PARA_SOURCE_FILE, __func__, __LINE__, __VA_ARGS__)

namespace para {

// Walks `object` into `record`; an empty or absent object is reported with
// `message` on behalf of the calling parser and gives -1.
template <class R> int WalkOrLog(const Json::Value& object, R& record, const char* function, int line,
                                 const char* message)
{
    if (object.empty()) {
        Common::gclDebugPrintf(0, PARA_SOURCE_FILE, function, line, "%s", message);
        return -1;
    }
    return WalkSection(object, record);
}

} // namespace para

#define PARA_WALK_OR_LOG(object, record, message) para::WalkOrLog((object), (record), __func__, __LINE__, message)

#endif
