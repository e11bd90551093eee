#pragma once

namespace zuCIM {

// Whether a system call that failed is to be repeated: at once after EINTR, after EAGAIN when a
// second has passed. Clears errno then.
bool is_to_be_repeated() noexcept;

}  // namespace zuCIM
