// What the leak sanitizer is told: the font library keeps the configuration that it has read until the program ends.

extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig\n";
}
