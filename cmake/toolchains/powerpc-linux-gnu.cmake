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
# 64-bit atomic operations are library calls on this processor (libatomic),
# in the simulator and in OpenSSL's libcrypto.
set(CMAKE_C_STANDARD_LIBRARIES -latomic)
set(CMAKE_CXX_STANDARD_LIBRARIES -latomic)
