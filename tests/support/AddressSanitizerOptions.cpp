// Part of every program that is built with the address sanitizer.

extern "C" {

/// What is not said in ASAN_OPTIONS. Found by the sanitizer's own library, hence visible.
///
/// WORKAROUND: g++ 12: where memory of a thread that a library allocates on demand lies, the sanitizer only guesses.
/// Now and then it guesses wrong, and the search for leaks crashes at the end of a program without mistakes.
__attribute__((visibility("default"))) const char *__asan_default_options()
{
    return "intercept_tls_get_addr=0";
}

} // extern "C"
