# Where pointers have 32 bits, glibc's times have too unless it is asked for 64, and asking needs the
# 64-bit file offsets. tests/install/check-time.sh looks for what still imports the short ones.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  add_compile_definitions(_TIME_BITS=64 _FILE_OFFSET_BITS=64)
endif()
