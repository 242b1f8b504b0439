// Compiled into ThreadSanitizer builds of the programs that serve HTTPS.
extern "C" const char* __tsan_default_suppressions();

// The HTTP library is not instrumented, so the guard of its function-local static (the set of known methods)
// is not seen, and its first two requests seem to race where the one builds that set and the other reads
// it. This leaves out only memory accesses made by the library itself; the locks it takes still count, and
// so does everything that our own functions do when it calls them.
extern "C" const char* __tsan_default_suppressions()
{
    return "called_from_lib:libcpp-httplib.so\n";
}
