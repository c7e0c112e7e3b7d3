/// @file
/// Small utilities for the recorder's processes: byte stuffing of serial
/// frames, a millisecond wall clock and detached threads. None of them keeps
/// state or throws.
#ifndef COMMON_UTILS_H
#define COMMON_UTILS_H

#include "BSCommonExport.h"

// --- Serial frame escaping ----------------------------------------------------
//
// A frame is its leading bytes, a body and one end byte. Inside the body every
// byte that serves as a flag, and the escape byte 0x7D itself, is replaced by
// 0x7D and a code, so a flag only ever appears at the frame's edges. The
// leading bytes and the end byte are copied as they are, whatever they hold.
//
//   variant 7e7e: 1 leading byte, the frame ends at the buffer's last byte;
//                 0x7E -> 7D 5E, 0x7D -> 7D 5D
//   variant 7e7f: 2 leading bytes, the frame ends at the first 0x7F;
//                 0x7E -> 7D 01, 0x7F -> 7D 02, 0x7D -> 7D 03
//
// Encoders return the number of bytes written to `dst`, which must hold the
// worst case of every body byte doubled: 2 * len - 2 bytes (7e7e) or
// 2 * len - 3 bytes (7e7f). They return 0 and write nothing when `src` or `dst`
// is null, when len is shorter than the leading bytes plus the end byte
// (len < 2 for 7e7e, len < 3 for 7e7f), or when len > INT_MAX / 2 (the worst
// case would not be countable).
//
// Decoders write at most len bytes to `dst` and return the size of the decoded
// frame, end byte included. A result of 0 means that no complete frame was
// found; the bytes written to `dst` are then meaningless. `*remain` (when
// `remain` is not null) is written on every path: the number of input bytes,
// counted back from the end of the buffer, that the caller still holds:
//   - a frame was decoded: 0 for 7e7e, the bytes after the 0x7F for 7e7f;
//   - a 0x7E inside the body: the bytes from that 0x7E on, so the caller can
//     start again at that flag;
//   - an incomplete frame (7e7e: an escape pair took the last byte; 7e7f: no
//     0x7F, or a 0x7D as the last byte): len;
//   - `src` or `dst` null, or len < 2 (7e7e) or len < 3 (7e7f): len, or 0 when
//     len is negative; nothing is written to `dst`.
// A 0x7D followed by a byte that is not one of the variant's codes is kept as
// a literal 0x7D and the following byte is decoded normally.
//
// `src` and `dst` must not overlap.

/// Escapes a frame of variant 7e7e (see the frame escaping rules above in CommonUtils.h).
/// @param src the frame: 1 leading byte, the body, 1 end byte
/// @param dst receives the escaped frame; at least 2 * @p len - 2 bytes, not overlapping @p src
/// @param len the frame's length
/// @return the number of bytes written; 0, with nothing written, when @p src or @p dst is null,
///         @p len < 2 or @p len > INT_MAX / 2.
BSCOMMON_API int serial_transfrom_7e7e(char const* src, char* dst, int len) noexcept;
/// Unescapes one frame of variant 7e7e, which ends at the buffer's last byte.
/// @param src    the escaped frame
/// @param dst    receives at most @p len bytes, not overlapping @p src
/// @param len    the number of bytes in @p src
/// @param remain when not null, receives the number of bytes, counted back from the end of
///               @p src, that the caller still holds: 0 after a frame, the bytes from a 0x7E inside
///               the body on, @p len for an incomplete frame or bad arguments (0 for a negative
///               @p len)
/// @return the decoded frame's length, end byte included; 0 when no complete frame was found
///         (a 0x7E inside the body, an escape pair that took the last byte, null pointers or
///         @p len < 2), and then the bytes in @p dst mean nothing.
BSCOMMON_API int serial_retransfrom_7e7e(char const* src, char* dst, int len, int* remain) noexcept;
/// Escapes a frame of variant 7e7f.
/// @param src the frame: 2 leading bytes, the body, 1 end byte
/// @param dst receives the escaped frame; at least 2 * @p len - 3 bytes, not overlapping @p src
/// @param len the frame's length
/// @return the number of bytes written; 0, with nothing written, when @p src or @p dst is null,
///         @p len < 3 or @p len > INT_MAX / 2.
BSCOMMON_API int serial_transfrom_7e7f(char const* src, char* dst, int len) noexcept;
/// Unescapes one frame of variant 7e7f, which ends at the first 0x7F.
/// @param src    the escaped input, which may hold more after the frame
/// @param dst    receives at most @p len bytes, not overlapping @p src
/// @param len    the number of bytes in @p src
/// @param remain when not null, receives the number of bytes, counted back from the end of
///               @p src, that the caller still holds: the bytes after the 0x7F after a frame, the
///               bytes from a 0x7E inside the body on, @p len for an incomplete frame (no 0x7F, or
///               a 0x7D as the last byte) or bad arguments (0 for a negative @p len)
/// @return the decoded frame's length, the 0x7F included; 0 when no complete frame was found,
///         and then the bytes in @p dst mean nothing.
BSCOMMON_API int serial_retransfrom_7e7f(char const* src, char* dst, int len, int* remain) noexcept;

// --- Clock and threads ------------------------------------------------------

/// Milliseconds since the Unix epoch from the settable wall clock (it jumps
/// when the clock is set; use it for time stamps, not for measuring intervals).
/// @return the time in milliseconds; it cannot fail.
BSCOMMON_API long long GetSystemMilliSecond() noexcept;

/// Starts `entry(arg)` on a detached thread of system scope. The thread must
/// not be joined; its resources are released when it returns. It may already
/// be running before *id is written.
/// @param entry the thread's function
/// @param arg   its argument
/// @param id    when not null, receives the thread's pthread_t on success
/// @return 0 on success; -1, with *id left alone, when @p entry is null or the thread cannot be
///         created (the error number is not kept).
BSCOMMON_API int CreateNormalThread(void* (*entry)(void*), void* arg, unsigned long* id) noexcept;

#endif
