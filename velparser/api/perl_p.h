// Perl's headers, for the sources of this folder only.
//
// They are included only here, after the standard headers: Perl defines macros with
// common names, and a standard or Qt header that is included after them does not
// compile. Calls pass the interpreter explicitly (pTHX, aTHX).
//
// A Perl exception (`croak`) is a longjmp. It must never skip the destructor of a C++
// object: convert the arguments first, do the C++ work in an inner scope with a plain
// result, and croak or convert after that scope.
#pragma once

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#pragma GCC system_header

#define PERL_NO_GET_CONTEXT

#include <EXTERN.h>
#include <perl.h>

#include <XSUB.h>

// Common words that Perl defines as macros.
#undef do_open
#undef do_close
#undef seed
#undef ref
#undef list
#undef instr
#undef bind
#undef _
