if(QORN_SANITIZE)
  list(JOIN QORN_SANITIZE "," qorn_sanitize_list)
  add_compile_options(-fsanitize=${qorn_sanitize_list} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer -g1)
  add_link_options(-fsanitize=${qorn_sanitize_list})
  # Tests of unloading leave a library mapped under a sanitizer, so that its reports have names.
  add_compile_definitions(QORN_SANITIZED=1)
endif()
