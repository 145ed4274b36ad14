# Runs smilint at level 6 on every module of MIB_DIR (base modules from
# MIB_DIR/base) and fails on any error or warning (severity 0..5); lines of
# severity 6 are information attached to another message.
#   cmake -DSMILINT=... -DMIB_DIR=... -P smilint.cmake
file(GLOB modules ${MIB_DIR}/*.txt)
if(NOT modules)
  message(FATAL_ERROR "no MIB module in ${MIB_DIR}")
endif()
set(ENV{SMIPATH} "${MIB_DIR}:${MIB_DIR}/base")
set(failed FALSE)
foreach(module ${modules})
  execute_process(COMMAND ${SMILINT} -s -l 6 ${module}
                  OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE rc)
  set(report "${out}${err}")
  if(NOT rc EQUAL 0 OR report MATCHES "\\[[0-5]\\]")
    message(SEND_ERROR "smilint ${module} (exit ${rc}):\n${report}")
    set(failed TRUE)
  else()
    message(STATUS "smilint ${module}: clean")
  endif()
endforeach()
if(failed)
  message(FATAL_ERROR "smilint found problems")
endif()
