# Targets zrlib::zrlib and hcbase::hcbase.
include(CMakeFindDependencyMacro)
find_dependency(Threads)
include("${CMAKE_CURRENT_LIST_DIR}/zrlib-targets.cmake")
