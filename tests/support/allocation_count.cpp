#include "tests/support/allocation_count.h"

#include <cstdlib>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define COUNT_BY_HOOK 1
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void*, std::size_t),
                                                         void (*onFree)(const volatile void*));
#endif

namespace {

thread_local std::size_t Taken = 0;

void NoteAllocation() {
    ++Taken;
}

}  // namespace

CountAllocations::CountAllocations() {
#ifdef COUNT_BY_HOOK
    static const int installed = __sanitizer_install_malloc_and_free_hooks(
        [](const volatile void*, std::size_t) { NoteAllocation(); }, [](const volatile void*) {});
    if (installed == 0) {
        std::abort();
    }
#endif
    start_ = Taken;
}

std::size_t CountAllocations::Count() const {
    return Taken - start_;
}

#ifndef COUNT_BY_HOOK

// The C library's own allocator does the work under its inner names; its free stays as it is.
#define COUNTED(name, parameters, arguments)   \
    extern "C" void* __libc_##name parameters; \
    extern "C" void* name parameters {         \
        NoteAllocation();                      \
        return __libc_##name arguments;        \
    }
COUNTED(malloc, (std::size_t size), (size))
COUNTED(calloc, (std::size_t count, std::size_t size), (count, size))
COUNTED(realloc, (void* old, std::size_t size), (old, size))

#endif
