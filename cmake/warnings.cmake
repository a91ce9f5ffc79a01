add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wthread-safety> $<$<COMPILE_LANGUAGE:CXX>:-Wthread-safety-beta>)
endif()
# g++ 12 reports overlaps in std::string's operator+ that are none (GCC bug 105329).
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()
# g++ notes on armhf wherever a template's parameters are passed otherwise than before GCC 7.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^armv7")
  add_compile_options(-Wno-psabi)
endif()
