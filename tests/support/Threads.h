#pragma once

// The number of threads of row loops, set for the length of a test.

#ifdef _OPENMP
#include <omp.h>
#endif

namespace velloran::test {

class Threads {
 public:
    explicit Threads(int count) { Set(count); }
    ~Threads() { Set(before_); }
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;

 private:
    static int Get() {
#ifdef _OPENMP
        return omp_get_max_threads();
#else
        return 1;
#endif
    }

    static void Set([[maybe_unused]] int count) {
#ifdef _OPENMP
        omp_set_num_threads(count);
#endif
    }

    int before_ = Get();
};

}  // namespace velloran::test
