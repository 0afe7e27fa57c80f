// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/guard/CallbackGuard.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <ctime>

#include <dlfcn.h>
#include <pthread.h>
#include <semaphore.h>

// The system's allocator under the names that stay its own. Looking it up by name would need memory.
extern "C" void* systemMalloc(std::size_t size) __asm__("__libc_malloc");
extern "C" void* systemCalloc(std::size_t count, std::size_t size) __asm__("__libc_calloc");
extern "C" void* systemRealloc(void* memory, std::size_t size) __asm__("__libc_realloc");
extern "C" void* systemMemalign(std::size_t alignment, std::size_t size) __asm__("__libc_memalign");
extern "C" void systemFree(void* memory) __asm__("__libc_free");

namespace {

using vantiro::callbackGuard::refuseInside;

template <class Function>
Function next(std::atomic<Function>& known, const char* name) noexcept
{
    Function function = known.load(std::memory_order_relaxed);
    if (function == nullptr) {
        // Asked for by its library: "the next one" of some names is an old version with another memory layout.
        void* library = ::dlopen("libc.so.6", RTLD_LAZY | RTLD_NOLOAD);
        function = reinterpret_cast<Function>(::dlsym(library, name));
        known.store(function, std::memory_order_relaxed);
    }
    return function;
}

}  // namespace

// Defines a function that other libraries see under a name of the system's. Here it has another, since the system's
// headers, with all that they promise about it, stand above.
#define VANTIRO_REPLACE(Result, name, parameters)                                                      \
    extern "C" __attribute__((visibility("default"))) Result vantiro_##name parameters __asm__(#name); \
    Result vantiro_##name parameters

#define VANTIRO_TRAP(name, parameters, arguments)                       \
    VANTIRO_REPLACE(int, name, parameters)                              \
    {                                                                   \
        static constinit std::atomic<int(*) parameters> known{nullptr}; \
        refuseInside(#name);                                            \
        return next(known, #name) arguments;                            \
    }

VANTIRO_REPLACE(void*, malloc, (std::size_t size))
{
    refuseInside("malloc");
    return systemMalloc(size);
}

VANTIRO_REPLACE(void*, calloc, (std::size_t count, std::size_t size))
{
    refuseInside("calloc");
    return systemCalloc(count, size);
}

VANTIRO_REPLACE(void*, realloc, (void* memory, std::size_t size))
{
    refuseInside("realloc");
    return systemRealloc(memory, size);
}

VANTIRO_REPLACE(void, free, (void* memory))
{
    refuseInside("free");
    systemFree(memory);
}

VANTIRO_REPLACE(void*, memalign, (std::size_t alignment, std::size_t size))
{
    refuseInside("memalign");
    return systemMemalign(alignment, size);
}

VANTIRO_REPLACE(void*, aligned_alloc, (std::size_t alignment, std::size_t size))
{
    refuseInside("aligned_alloc");
    return systemMemalign(alignment, size);
}

VANTIRO_REPLACE(int, posix_memalign, (void** memory, std::size_t alignment, std::size_t size))
{
    refuseInside("posix_memalign");
    if (alignment % sizeof(void*) != 0 || (alignment & (alignment - 1)) != 0 || alignment == 0) {
        return EINVAL;
    }
    void* made = systemMemalign(alignment, size);
    if (made == nullptr) {
        return ENOMEM;
    }
    *memory = made;
    return 0;
}

using Mutex = pthread_mutex_t;
using Condition = pthread_cond_t;
using ReadWriteLock = pthread_rwlock_t;
using Semaphore = sem_t;

VANTIRO_TRAP(pthread_mutex_lock, (Mutex * mutex), (mutex))
VANTIRO_TRAP(pthread_mutex_trylock, (Mutex * mutex), (mutex))
VANTIRO_TRAP(pthread_mutex_timedlock, (Mutex * mutex, const timespec* until), (mutex, until))
VANTIRO_TRAP(pthread_mutex_clocklock, (Mutex * mutex, clockid_t clock, const timespec* until), (mutex, clock, until))

VANTIRO_TRAP(pthread_rwlock_rdlock, (ReadWriteLock * lock), (lock))
VANTIRO_TRAP(pthread_rwlock_tryrdlock, (ReadWriteLock * lock), (lock))
VANTIRO_TRAP(pthread_rwlock_timedrdlock, (ReadWriteLock * lock, const timespec* until), (lock, until))
VANTIRO_TRAP(pthread_rwlock_wrlock, (ReadWriteLock * lock), (lock))
VANTIRO_TRAP(pthread_rwlock_trywrlock, (ReadWriteLock * lock), (lock))
VANTIRO_TRAP(pthread_rwlock_timedwrlock, (ReadWriteLock * lock, const timespec* until), (lock, until))

VANTIRO_TRAP(pthread_cond_wait, (Condition * condition, Mutex* mutex), (condition, mutex))
VANTIRO_TRAP(
    pthread_cond_timedwait, (Condition * condition, Mutex* mutex, const timespec* until), (condition, mutex, until))
VANTIRO_TRAP(pthread_cond_clockwait, (Condition * condition, Mutex* mutex, clockid_t clock, const timespec* until),
    (condition, mutex, clock, until))
VANTIRO_TRAP(pthread_cond_signal, (Condition * condition), (condition))
VANTIRO_TRAP(pthread_cond_broadcast, (Condition * condition), (condition))

VANTIRO_TRAP(sem_wait, (Semaphore * semaphore), (semaphore))
VANTIRO_TRAP(sem_trywait, (Semaphore * semaphore), (semaphore))
VANTIRO_TRAP(sem_timedwait, (Semaphore * semaphore, const timespec* until), (semaphore, until))
VANTIRO_TRAP(sem_clockwait, (Semaphore * semaphore, clockid_t clock, const timespec* until), (semaphore, clock, until))
VANTIRO_TRAP(sem_post, (Semaphore * semaphore), (semaphore))
