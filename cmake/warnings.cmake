# The strict flags of every target that is ours.
add_library(strict_warnings INTERFACE)
if(NOT MSVC)
  target_compile_options(strict_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wcast-align -Wundef -Wvla
    $<$<BOOL:${KVMR72_WERROR}>:-Werror>)
endif()
