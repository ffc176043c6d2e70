// What the linked-in runtime needs of threads to throw an exception, without memory of its own. The GNU
// library's way takes memory and one of the process's thread slots with the first exception, ends the program
// where there is no memory left for that, and never gives the slot back: hosts load and unload the DLL all
// day, and a process has a thousand. What needs more of threads, as a static variable inside a function does,
// brings that library back, and then does not link: the names below are there twice.
#include <windows.h>

#if defined(__MINGW32__)
#include <cxxabi.h>
#include <pthread.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

// The part of the image that the loader makes for every thread and takes away with the DLL: its start, and
// its number in a thread's list of such parts.
extern "C" char _tls_start;
extern "C" ULONG _tls_index;

namespace {

// As the runtime lays it out: the exceptions that are caught, and how many are not yet.
struct ExceptionState {
    void* caught;
    unsigned uncaught;
};

// Of a thread that has thrown nothing. Each thread has a copy.
[[gnu::section(".tls$KVMR72"), gnu::used]] ExceptionState gInitialState = {};

ExceptionState* StateOfThread() noexcept {
    // The list stands in the system's description of the thread.
    char* const* list;
    asm("movq %%gs:0x58, %0" : "=r"(list));
    const auto offset =
        reinterpret_cast<std::uintptr_t>(&gInitialState) - reinterpret_cast<std::uintptr_t>(&_tls_start);
    return static_cast<ExceptionState*>(static_cast<void*>(list[_tls_index] + offset));
}

// What the runtime's locks hold before their first use, and after each.
constexpr pthread_mutex_t kFree = PTHREAD_MUTEX_INITIALIZER;
constexpr pthread_mutex_t kTaken = 0;

}  // namespace

namespace __cxxabiv1 {

extern "C" __cxa_eh_globals* __cxa_get_globals() noexcept {
    return reinterpret_cast<__cxa_eh_globals*>(StateOfThread());
}

extern "C" __cxa_eh_globals* __cxa_get_globals_fast() noexcept {
    return reinterpret_cast<__cxa_eh_globals*>(StateOfThread());
}

}  // namespace __cxxabiv1

// The one lock left is that of the runtime's reserve of memory for exceptions: two threads meet there when
// both are without memory.
extern "C" int pthread_mutex_init(pthread_mutex_t* lock, const pthread_mutexattr_t*) {
    *lock = kFree;
    return 0;
}

extern "C" int pthread_mutex_destroy(pthread_mutex_t*) {
    return 0;
}

extern "C" int pthread_mutex_lock(pthread_mutex_t* lock) {
    pthread_mutex_t found = kFree;
    while (!std::atomic_ref(*lock).compare_exchange_weak(found, kTaken, std::memory_order_acquire)) {
        found = kFree;
        Sleep(1);
    }
    return 0;
}

extern "C" int pthread_mutex_unlock(pthread_mutex_t* lock) {
    std::atomic_ref(*lock).store(kFree, std::memory_order_release);
    return 0;
}
#endif
