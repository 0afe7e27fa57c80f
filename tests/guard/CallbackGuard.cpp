// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/guard/CallbackGuard.h"

#include "tests/guard/SystemCallTrap.h"

#include <pipewire/filter.h>
#include <pipewire/stream.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string_view>
#include <utility>

#include <dlfcn.h>
#include <execinfo.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vantiro::callbackGuard {

namespace {

    using Process = void (*)(void*, spa_io_position*);
    using StreamProcess = void (*)(void*);

    enum class Probe {
        none,
        clock,
        malloc,
        mutex,
        write
    };

    /// The callback in which the probe strikes: not the first, so that it also shows that the guard stays.
    constexpr long probedCallback = 20;
    constexpr int deepestWay = 32;

    constinit thread_local bool inside __attribute__((tls_model("initial-exec"))) = false;
    constinit std::atomic<Process> guarded{nullptr};
    constinit std::atomic<StreamProcess> guardedStream{nullptr};
    constinit std::atomic<long> callbacks{0};
    constinit std::atomic<Probe> probe{Probe::none};
    constinit pthread_mutex_t probeMutex = PTHREAD_MUTEX_INITIALIZER;

    void print(std::string_view words) noexcept
    {
        // Nothing can be done about a message that finds no reader.
        static_cast<void>(!::write(STDERR_FILENO, words.data(), words.size()));
    }

    Probe wantedProbe() noexcept
    {
        constexpr std::array<std::pair<std::string_view, Probe>, 4> words{{
            {"clock", Probe::clock},
            {"malloc", Probe::malloc},
            {"mutex", Probe::mutex},
            {"write", Probe::write},
        }};
        const char* wanted = std::getenv("VANTIRO_GUARD_PROBE");
        for (const auto& [word, meaning] : words) {
            if (wanted != nullptr && word == wanted) {
                return meaning;
            }
        }
        return Probe::none;
    }

    void strike(Probe what) noexcept
    {
        switch (what) {
        case Probe::none:
            break;
        case Probe::clock: {
            timespec now{};
            if (::syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &now) != 0 || now.tv_sec == 0) {
                violated("a clock that does not tell the time");
            }
            break;
        }
        case Probe::malloc: {
            // The compiler drops an allocation that nobody looks at.
            void* volatile memory = std::malloc(1);
            std::free(memory);
            break;
        }
        case Probe::mutex:
            ::pthread_mutex_lock(&probeMutex);
            ::pthread_mutex_unlock(&probeMutex);
            break;
        case Probe::write:
            print({});
            break;
        }
    }

    template <class Call>
    void runGuarded(Call call)
    {
        prepareSystemCallTrap();
        const bool isProbed = callbacks.fetch_add(1) + 1 == probedCallback;
        const Probe probing = isProbed ? probe.load() : Probe::none;
        inside = true;
        forbidSystemCalls();
        strike(probing);
        call();
        allowSystemCalls();
        inside = false;
    }

    void processGuarded(void* data, spa_io_position* position)
    {
        runGuarded([&] { guarded.load()(data, position); });
    }

    void processStreamGuarded(void* data)
    {
        runGuarded([&] { guardedStream.load()(data); });
    }

    /// A copy of the events in which the guard stands around the callback. PipeWire keeps its address for the life of
    /// the listener, and a program has only a few.
    template <class Events, class Function>
    const Events* withGuard(const Events& events, std::atomic<Function>& slot, Function stand)
    {
        auto* table = new Events(events);
        if (table->process != nullptr) {
            Function none = nullptr;
            if (!slot.compare_exchange_strong(none, table->process) && none != table->process) {
                print("callback guard: a second kind of callback, which it has no place for\n");
                std::abort();
            }
            probe.store(wantedProbe());
            table->process = stand;
        }
        return table;
    }

    __attribute__((destructor)) void tellCount()
    {
        std::array<char, 160> words{};
        const int length =
            std::snprintf(words.data(), words.size(), "callback guard: %ld callbacks watched%s\n", callbacks.load(),
                isSystemCallTrapMissing() ? ", WITHOUT their system calls, which this machine cannot trap" : "");
        print({words.data(), static_cast<std::size_t>(length)});
    }

}  // namespace

bool isInside() noexcept
{
    return inside;
}

void violated(const char* what) noexcept
{
    allowSystemCalls();
    inside = false;
    print("callback guard: ");
    print(what);
    print(" inside the audio callback\n");
    std::array<void*, deepestWay> way{};
    ::backtrace_symbols_fd(way.data(), ::backtrace(way.data(), deepestWay), STDERR_FILENO);
    std::abort();
}

}  // namespace vantiro::callbackGuard

/// Both stand before PipeWire's own functions and put the guard around the callback.
extern "C" __attribute__((visibility("default"))) void pw_filter_add_listener(
    pw_filter* filter, spa_hook* listener, const pw_filter_events* events, void* data)
{
    using namespace vantiro::callbackGuard;

    const auto real = reinterpret_cast<decltype(&pw_filter_add_listener)>(::dlsym(RTLD_NEXT, "pw_filter_add_listener"));
    real(filter, listener, withGuard(*events, guarded, processGuarded), data);
}

extern "C" __attribute__((visibility("default"))) void pw_stream_add_listener(
    pw_stream* stream, spa_hook* listener, const pw_stream_events* events, void* data)
{
    using namespace vantiro::callbackGuard;

    const auto real = reinterpret_cast<decltype(&pw_stream_add_listener)>(::dlsym(RTLD_NEXT, "pw_stream_add_listener"));
    real(stream, listener, withGuard(*events, guardedStream, processStreamGuarded), data);
}
