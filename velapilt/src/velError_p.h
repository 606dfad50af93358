// Error texts and the trace: how the database says what went wrong.
#pragma once

struct velHandle;

/// Makes the handle's error text and returns it; it is valid until the next
/// error. Without memory the result is a constant that says so. Every formatted
/// message of the library is made here.
[[gnu::format(printf, 2, 3)]] const char *velSetError(velHandle *handle, const char *format, ...);

/// Overwrites the error text now and frees it with the next, so that a pointer
/// kept for one message too long reads a text that says so.
void velRetireError(velHandle *handle);

/// The handle as the trace names it.
[[nodiscard]] unsigned velTraceName(const velHandle *handle);
