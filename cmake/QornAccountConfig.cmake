# Qorn::account_interface: the account component's header, and the platform that hands it out. The
# component itself is loaded by the runtime and never linked.
include(CMakeFindDependencyMacro)
find_dependency(QornPlatform)
include(${CMAKE_CURRENT_LIST_DIR}/QornAccountTargets.cmake)
