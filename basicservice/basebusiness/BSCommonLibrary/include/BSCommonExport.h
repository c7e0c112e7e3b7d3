// Marks the declarations that BSCommonLibrary exports; everything else in the
// shared object is hidden.
#ifndef BSCOMMON_EXPORT_H
#define BSCOMMON_EXPORT_H

#define BSCOMMON_API __attribute__((visibility("default")))

// Compile-time layout checks of the exported records. A record is shared with
// separately built processes on the ARM target, so its size is fixed.
#define BSCOMMON_RECORD_SIZE(Type, size) \
    static_assert(sizeof(Type) == (size), "size of " #Type)

#endif
