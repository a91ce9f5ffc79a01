if(QORN_SANITIZE)
  list(JOIN QORN_SANITIZE "," qorn_sanitize_list)
  add_compile_options(-fsanitize=${qorn_sanitize_list} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer -g1)
  add_link_options(-fsanitize=${qorn_sanitize_list})
  # The sanitizers' own code makes g++ see uninitialised values in the standard library that are none.
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    add_compile_options(-Wno-maybe-uninitialized)
  endif()
  # Tests of unloading leave a library mapped under a sanitizer, so that its reports have names.
  add_compile_definitions(QORN_SANITIZED=1)
endif()
