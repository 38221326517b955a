#include "cost/heap_count.h"

#include <cstddef>

namespace cost {

unsigned long allocations = 0;
bool counting = false;

}  // namespace cost

namespace {

void Note() {
    if (cost::counting) {
        ++cost::allocations;
    }
}

}  // namespace

// The C library's own allocator under the names by which it lets itself be wrapped. operator new
// comes here as well.
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);

void* malloc(std::size_t size) {
    Note();
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    Note();
    return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) {
    Note();
    return __libc_realloc(block, size);
}

}  // extern "C"
