/// @file
/// Marks the declarations that BSCommonLibrary exports; everything else in the
/// shared object is hidden.
#ifndef BSCOMMON_EXPORT_H
#define BSCOMMON_EXPORT_H

/// Gives a declaration default visibility: it is part of the library's interface.
#define BSCOMMON_API __attribute__((visibility("default")))

/// Compile-time layout check of an exported record: fails the build unless
/// `sizeof(Type)` is @p size. A record is shared with separately built
/// processes on the ARM target, so its size is fixed.
#define BSCOMMON_RECORD_SIZE(Type, size) \
    static_assert(sizeof(Type) == (size), "size of " #Type)

#endif
