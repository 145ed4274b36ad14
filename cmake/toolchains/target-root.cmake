# Shared part of the cross toolchain files: the target's libraries that the
# project builds against but Debian does not ship for the target here
# (googletest built from /usr/src/googletest, OpenSSL's libcrypto, net-snmp),
# prepared by scripts/cross-deps.sh in one folder per architecture:
#
#   ROOT/gtest     googletest built for the target (GTestConfig.cmake)
#   ROOT/include   headers of the target's libraries (openssl/, net-snmp/)
#   ROOT/lib       static libraries built for the target (libcrypto.a)
#   ROOT/sys       Debian's packages of the target, unpacked (32-bit x86 only)
#
# The folder comes from -DSWITCH_TARGET_ROOT=... or the environment variable
# of the same name.
if(NOT SWITCH_TARGET_ROOT)
  set(SWITCH_TARGET_ROOT "$ENV{SWITCH_TARGET_ROOT}")
endif()
if(NOT SWITCH_TARGET_ROOT)
  message(FATAL_ERROR "cross build: set SWITCH_TARGET_ROOT (scripts/cross-test.sh does)")
endif()
set(ENV{SWITCH_TARGET_ROOT} "${SWITCH_TARGET_ROOT}")  # seen again by try_compile

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${SWITCH_TRIPLE}-gcc)
set(CMAKE_CXX_COMPILER ${SWITCH_TRIPLE}-g++)

# Target libraries only from the cross toolchain and the target root;
# header-only packages (nlohmann_json, CLI11) from the build machine.
set(CMAKE_FIND_ROOT_PATH /usr/${SWITCH_TRIPLE} ${SWITCH_TARGET_ROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
set(GTest_DIR ${SWITCH_TARGET_ROOT}/gtest/lib/cmake/GTest CACHE PATH "googletest built for the target")
set(OPENSSL_INCLUDE_DIR ${SWITCH_TARGET_ROOT}/include CACHE PATH "OpenSSL headers of the target")

foreach(lang C CXX)
  set(CMAKE_${lang}_FLAGS_INIT "-isystem ${SWITCH_TARGET_ROOT}/include")
endforeach()
