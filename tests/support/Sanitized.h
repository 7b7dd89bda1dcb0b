#pragma once

// Whether the program under test runs under a sanitizer, which keeps freed memory, wants address
// space of its own and takes several times as long.

namespace velloran::test {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

}  // namespace velloran::test
