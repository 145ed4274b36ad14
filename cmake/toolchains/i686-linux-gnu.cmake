# 32-bit little-endian x86.  Everything is built, the net-snmp edge against
# Debian's i386 net-snmp (headers and libraries unpacked into the target
# root), and the programs run on the build machine itself: they name the
# cross toolchain's loader and carry run paths to its libraries and to the
# unpacked ones, so no i386 package is installed on the machine.
set(SWITCH_TRIPLE i686-linux-gnu)
set(CMAKE_SYSTEM_PROCESSOR i686)
include(${CMAKE_CURRENT_LIST_DIR}/target-root.cmake)

set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(sys ${SWITCH_TARGET_ROOT}/sys)
set(OPENSSL_CRYPTO_LIBRARY ${sys}/usr/lib/i386-linux-gnu/libcrypto.so CACHE FILEPATH "Debian's i386 libcrypto")
# net-snmp-config of Debian's i386 package names its libraries; they are
# found in the unpacked tree.
set(NET_SNMP_CONFIG ${sys}/usr/bin/net-snmp-config CACHE FILEPATH "net-snmp-config of the target")
# Debian's i386 snmpd hosts the 32-bit module in the integration tests.
set(SNMPD_EXECUTABLE ${SWITCH_TARGET_ROOT}/bin/snmpd CACHE FILEPATH "the target's snmpd")

set(libdirs /usr/${SWITCH_TRIPLE}/lib ${sys}/usr/lib/i386-linux-gnu ${sys}/lib/i386-linux-gnu)
list(JOIN libdirs ":" path)
set(link "-L${sys}/usr/lib/i386-linux-gnu -Wl,-rpath-link,${path} -Wl,-rpath,${path} -Wl,--disable-new-dtags")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${link} -Wl,--dynamic-linker=/usr/${SWITCH_TRIPLE}/lib/ld-linux.so.2")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${link}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${link}")
