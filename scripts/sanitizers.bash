# To be sourced from the top folder: how programs that are built with sanitizers are run.

export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export TSAN_OPTIONS="halt_on_error=1:second_deadlock_stack=1:suppressions='$PWD/.tsan-suppressions'"

# What such programs, and the builds that start them, have to be started with on this machine.
runner=()

# Some kernels randomise addresses more than the sanitizers of GCC 12 and Clang 14 can bear. A
# small program shows it; then everything runs without that randomisation.
sanitizer_works() {
  for _ in {1..10}; do "$@" build/probe || return 1; done
} >/dev/null 2>&1

try_sanitizer() {
  local compiler="$1" sanitizer="$2"
  mkdir -p build
  echo 'int main() {}' | "$compiler" "-fsanitize=$sanitizer" -x c++ - -o build/probe
  if sanitizer_works; then return; fi
  if sanitizer_works setarch -R; then
    runner=(setarch -R)
    return
  fi
  echo "The $sanitizer sanitizer does not work on this machine; with fewer random address bits" >&2
  echo "(sysctl vm.mmap_rnd_bits=28) or where setarch -R is permitted it may." >&2
  exit 1
}

# Sets `runner` to what a preset of CMakePresets.json needs, if it needs anything.
adapt_to_kernel() {
  case "$1" in
    asan) try_sanitizer c++ address ;;
    tsan) try_sanitizer c++ thread ;;
    fuzz) try_sanitizer clang++-14 address ;;
  esac
}
