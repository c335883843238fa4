// How often the program asked for memory. Apart from the tests, so that they do not see through the operators.
#include "gauge/edge/Allocations.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<int> allocations{0};

} // namespace

int Tesk::checks::Allocations()
{
    return allocations;
}

#if !defined(__SANITIZE_ADDRESS__)
void* operator new(std::size_t size)
{
    allocations++;
    if (void* memory = std::malloc(size > 0 ? size : 1)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
#endif
