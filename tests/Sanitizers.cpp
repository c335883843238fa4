// What the sanitizers are told: the font library keeps the configuration that it has read until the program ends, and a
// lack of memory is an answer that the library handles.

extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __asan_default_options();

extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig\n";
}

extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1";
}
