// Error texts and the trace of the database.
#pragma once

struct velHandle;

/// Makes the handle's error text and returns it; it is valid until the next
/// error. Without memory the result is a constant that says so. Every formatted
/// message of the library is made here.
[[gnu::format(printf, 2, 3)]] const char *velSetError(velHandle *handle, const char *format, ...);

/// Overwrites the error text with a warning and frees it with the next one. So a
/// caller that keeps a message for too long reads the warning.
void velRetireError(velHandle *handle);

/// The name of the handle in the trace.
[[nodiscard]] unsigned velTraceName(const velHandle *handle);
