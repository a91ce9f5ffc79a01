# Qorn::platform: the runtime, event bus, log and SQL library that components are written against.
include(${CMAKE_CURRENT_LIST_DIR}/QornPlatformTargets.cmake)
