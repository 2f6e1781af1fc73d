#!/usr/bin/env bash
# The library stands on the C++ standard library and OpenCV alone: its sources include no other system header, and
# nothing that starts threads or takes locks; the built library calls no function of the system but ISO C's:
# standard-library-only.sh SOURCE LIBRARY NM
source "$(dirname "$0")/../support/checks.sh"
source=$1 library=$2 nm=$3
cd "$source"

standard_headers='algorithm|array|bitset|cassert|cctype|cerrno|cfloat|charconv|chrono|climits|cmath|codecvt|cstddef|cstdint|cstdio|cstdlib|cstring|deque|exception|filesystem|fstream|functional|initializer_list|iomanip|ios|iosfwd|iostream|istream|iterator|limits|list|locale|map|memory|new|numeric|optional|ostream|queue|random|ratio|regex|set|sstream|stack|stdexcept|streambuf|string|string_view|system_error|tuple|type_traits|typeinfo|unordered_map|unordered_set|utility|valarray|variant|vector'
others=$(grep -HnE '^ *# *include *<' framework/*.{h,cpp} geometry/*.{h,cpp} Includes/*.{h,cpp} calibration/*.{h,cpp} algorithms/*.{h,cpp} *.h |
    grep -vE "<($standard_headers|opencv2/[a-z0-9_/]+\.(hpp|h))>" || true)
[ -z "$others" ] || fail "headers beyond the standard library and OpenCV: $others"

# The functions of ISO C that C++ code may call, each of the mathematics also for float and long double.
mathematics='acos|asin|atan|atan2|ceil|cos|cosh|exp|exp2|expm1|fabs|floor|fma|fmax|fmin|fmod|frexp|hypot|ldexp|llrint|llround|log|log10|log1p|log2|lrint|lround|modf|nan|nearbyint|pow|remainder|rint|round|sin|sinh|sqrt|tan|tanh|trunc'
strings='mem(chr|cmp|cpy|move|set)|str(chr|cmp|cpy|len|ncmp|ncpy|rchr|str|to(d|f|l|ld|ll|ul|ull))'
others_of_c='abort|abs|atexit|calloc|clock|exit|free|fprintf|fputs|fwrite|getenv|isspace|malloc|printf|putchar|puts|qsort|realloc|snprintf|std(err|out)|time|tolower|toupper|vsnprintf'
# What the compiler itself makes of standard C++: start and end of objects, errno, stack guards, checked copies of the
# above, one call for a sine and a cosine, shared pointers without threads.
compilers_own='__(cxa_atexit|cxa_finalize|errno_location|stack_chk_fail|libc_single_threaded|[a-z]+_chk|tls_get_addr|assert_fail|isoc23_strto[a-z]+)|sincosf?'
calls=$("$nm" --dynamic --undefined-only "$library" | sed -nE 's/.* ([A-Za-z_0-9]+)@.*GLIBC_[0-9.]+$/\1/p' | sort -u)
[ -n "$calls" ] || skip "this library is not linked against the GNU C library"
system=$(grep -vxE "($mathematics)[fl]?|$strings|$others_of_c|$compilers_own" <<<"$calls" || true)
[ -z "$system" ] || fail "calls of the system: $(tr '\n' ' ' <<<"$system")"
echo "$(wc -l <<<"$calls") functions of the C library, all of them ISO C's: $(tr '\n' ' ' <<<"$calls")"
