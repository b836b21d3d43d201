// Independent pieces of work on as many threads as OpenMP gives (--threads of qelpic).
#pragma once

#include <cstdint>
#include <exception>

#ifdef _OPENMP
#include <omp.h>
#endif

namespace qel::codec {

// How many threads are worth their start for a picture of so many pixels.
inline int threadsFor([[maybe_unused]] uint64_t pixels)
{
    [[maybe_unused]] constexpr uint64_t kWorthwhile = 1 << 18;
#ifdef _OPENMP
    if (pixels >= kWorthwhile) return omp_get_max_threads();
#endif
    return 1;
}

// True on the thread that started the others.
inline bool isFirstThread()
{
#ifdef _OPENMP
    return omp_get_thread_num() == 0;
#else
    return true;
#endif
}

// What a piece of work throws on one thread, to be thrown again when all have ended.
class FirstFailure {
public:
    template <class Body> void guard(Body body)
    {
        try {
            body();
        } catch (...) {
#ifdef _OPENMP
#pragma omp critical(qelcodec_failure)
#endif
            if (!failure_) failure_ = std::current_exception();
        }
    }
    void rethrow() const
    {
        if (failure_) std::rethrow_exception(failure_);
    }

private:
    std::exception_ptr failure_;
};

// Calls body(0) to body(count - 1), in any order on so many threads.
template <class Body> void forEachInParallel(int count, [[maybe_unused]] int threads, Body body)
{
    FirstFailure failure;
#ifdef _OPENMP
#pragma omp parallel for schedule(dynamic) num_threads(threads) if (threads > 1)
#endif
    for (int i = 0; i < count; ++i) failure.guard([&] { body(i); });
    failure.rethrow();
}

}
