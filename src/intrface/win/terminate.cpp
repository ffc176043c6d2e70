// What ends a program when an exception is caught by nobody. The GNU library's own function for it brings the
// demangler of C++ names and formatted output into the DLL, a seventh of its size, to write a line that no
// program with windows shows.
#include <cstdlib>
#include <exception>

#if defined(__GLIBCXX__)
void __gnu_cxx::__verbose_terminate_handler() {
    std::abort();
}
#endif
