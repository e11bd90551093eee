#include "heap_count.h"

#include <malloc.h>

#include <algorithm>
#include <cstdint>

// glibc's own functions, behind the names that are replaced below.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

// The program that counts has one thread.
bench::HeapUse use;
std::intptr_t in_use = 0;

// A block with what the heap keeps before it.
std::intptr_t size_of(void* block) {
  return block == nullptr
             ? 0
             : static_cast<std::intptr_t>(malloc_usable_size(block) + sizeof(std::size_t));
}

void* count(void* block) {
  in_use += size_of(block);
  ++use.allocations;
  use.peak = std::max(use.peak, static_cast<std::size_t>(std::max<std::intptr_t>(in_use, 0)));
  return block;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
  return count(__libc_malloc(size));
}

void* calloc(std::size_t number, std::size_t size) {
  return count(__libc_calloc(number, size));
}

void* realloc(void* block, std::size_t size) {
  in_use -= size_of(block);
  return count(__libc_realloc(block, size));
}

void* memalign(std::size_t alignment, std::size_t size) {
  return count(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return memalign(alignment, size);
}

void free(void* block) {
  in_use -= size_of(block);
  __libc_free(block);
}
}

namespace bench {

void start_heap_count() {
  use = {};
  in_use = 0;
}

HeapUse heap_use() {
  return use;
}

}  // namespace bench
