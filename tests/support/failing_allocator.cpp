#include "support/failing_allocator.h"

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <new>

// The replacements serve the shared libraries of the program too.
#pragma GCC visibility push(default)

namespace {

// Plain data without a constructor, so that it can be used before and after everything else.
struct Plan {
  bool exists;
  bool armed;
  bool happened;
  unsigned nth;
  unsigned count;
  AllocationKind kind;
  FailureSpan span;
};

constinit thread_local Plan plan{};

unsigned length_of(FailureSpan span) {
  switch (span) {
    case FailureSpan::once:
      return 1;
    case FailureSpan::twice:
      return 2;
    default:
      return UINT_MAX;
  }
}

// Counts an allocation of this kind and tells whether it has to fail.
bool must_fail(AllocationKind kind) noexcept {
  if (!plan.armed || (plan.kind != AllocationKind::any && plan.kind != kind)) return false;
  ++plan.count;
  const bool fails =
      plan.nth != 0 && plan.count >= plan.nth && plan.count - plan.nth < length_of(plan.span);
  plan.happened = plan.happened || fails;
  return fails;
}

}  // namespace

AllocationFailure::AllocationFailure(unsigned nth, AllocationKind kind, FailureSpan span) {
  if (plan.exists) throw std::logic_error("this thread has an AllocationFailure already");
  plan = Plan{.exists = true,
              .armed = true,
              .happened = false,
              .nth = nth,
              .count = 0,
              .kind = kind,
              .span = span};
}

AllocationFailure::~AllocationFailure() {
  plan = Plan{};
}

void AllocationFailure::disarm() {
  plan.armed = false;
}

void AllocationFailure::arm() {
  plan.armed = true;
}

bool AllocationFailure::happened() const {
  return plan.happened;
}

unsigned AllocationFailure::count() const {
  return plan.count;
}

UncountedAllocations::UncountedAllocations() : were_counted_(plan.armed) {
  plan.armed = false;
}

UncountedAllocations::~UncountedAllocations() {
  plan.armed = were_counted_;
}

#if ZUCIM_SANITIZER_ALLOCATES

namespace {

void* real_malloc(std::size_t size) noexcept {
  return std::malloc(size);
}

}  // namespace

#else

// The C library's own allocator, under the names that it keeps for those who replace the usual
// ones. Blocks come from its heap, so `free` need not be replaced.
extern "C" {
void* __libc_malloc(std::size_t size) noexcept;
void* __libc_calloc(std::size_t count, std::size_t size) noexcept;
void* __libc_realloc(void* block, std::size_t size) noexcept;
}

namespace {

void* real_malloc(std::size_t size) noexcept {
  return __libc_malloc(size);
}

void* out_of_memory() noexcept {
  errno = ENOMEM;
  return nullptr;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) noexcept {
  return must_fail(AllocationKind::c) ? out_of_memory() : __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept {
  return must_fail(AllocationKind::c) ? out_of_memory() : __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) noexcept {
  return must_fail(AllocationKind::c) ? out_of_memory() : __libc_realloc(block, size);
}

}  // extern "C"

#endif

namespace {

void* allocate(std::size_t size) noexcept {
  return must_fail(AllocationKind::cpp) ? nullptr : real_malloc(size != 0 ? size : 1);
}

void* allocate_aligned(std::size_t size, std::align_val_t alignment) noexcept {
  if (must_fail(AllocationKind::cpp)) return nullptr;
  const std::size_t unit = static_cast<std::size_t>(alignment);
  return std::aligned_alloc(unit, (size + unit - 1) / unit * unit);
}

void* or_throw(void* block) {
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

}  // namespace

// Every form is replaced: a sanitizer checks that a block goes back the way it came.
void* operator new(std::size_t size) {
  return or_throw(allocate(size));
}
void* operator new[](std::size_t size) {
  return or_throw(allocate(size));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return or_throw(allocate_aligned(size, alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return or_throw(allocate_aligned(size, alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate_aligned(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate_aligned(size, alignment);
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete[](void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
  std::free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
  std::free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
  std::free(block);
}
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept {
  std::free(block);
}

#pragma GCC visibility pop
