# 32-bit big-endian PowerPC, the switch's own kind of processor.  Test
# programs run under qemu-user; only the parts that need no net-snmp are
# built (SWITCH_NETSNMP=OFF): Debian has no net-snmp for this target.
set(SWITCH_TRIPLE powerpc-linux-gnu)
set(CMAKE_SYSTEM_PROCESSOR powerpc)
include(${CMAKE_CURRENT_LIST_DIR}/target-root.cmake)

set(OPENSSL_CRYPTO_LIBRARY ${SWITCH_TARGET_ROOT}/lib/libcrypto.a CACHE FILEPATH "libcrypto built for the target")
set(OPENSSL_USE_STATIC_LIBS TRUE)
set(SWITCH_NETSNMP OFF CACHE BOOL "no net-snmp for this target")
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-ppc -L /usr/${SWITCH_TRIPLE})
# This processor has no 64-bit atomic instructions: the compiler calls
# libatomic for them (OpenSSL's libcrypto needs it).  Its locks are private to
# one process, so the simulator's words shared between processes do not use
# it (sim/src/shared_atomic.hpp).
set(CMAKE_C_STANDARD_LIBRARIES -latomic)
set(CMAKE_CXX_STANDARD_LIBRARIES -latomic)
