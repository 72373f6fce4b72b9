// Allocation-failure tests ask for more memory than exists: under AddressSanitizer the
// allocator must then return null, so that the library's own error is what the test sees,
// however the test binary is started (ctest, a debugger, by hand).
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1";
}
