// What the sanitizers of every program of the lane look for; ASAN_OPTIONS and its like still override it.

extern "C" const char* __asan_default_options() {
    return "detect_leaks=1:detect_stack_use_after_return=1:strict_string_checks=1:check_initialization_order=1:"
           "strict_init_order=1:detect_invalid_pointer_pairs=0:allocator_may_return_null=1";
}

extern "C" const char* __tsan_default_options() {
    return "halt_on_error=1:second_deadlock_stack=1:detect_deadlocks=1";
}

extern "C" const char* __ubsan_default_options() {
    return "print_stacktrace=1:halt_on_error=1";
}
