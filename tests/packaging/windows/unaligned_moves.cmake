# Fails if a DLL moves vectors of 32 or 64 bytes with instructions that fault unless the memory is
# aligned to them: GCC keeps such vectors on a stack that is aligned to 16 bytes.
#   cmake -DOBJDUMP=... -DDLL=... -DLEAST=<instructions on such vectors> -P unaligned_moves.cmake
set(wide "%[yz]mm")
set(aligned "vmov(aps|apd|dqa|dqa32|dqa64|ntps|ntpd|ntdq|ntdqa) .*\\(")
# The moves with a memory operand, and the number of all instructions that use wide vectors.
execute_process(
  COMMAND "${OBJDUMP}" -d --no-show-raw-insn "${DLL}"
  COMMAND awk "/${wide}/ {wide++; if (/${aligned}/) print} END {print wide + 0, \"wide\"}"
  OUTPUT_VARIABLE found RESULTS_VARIABLE codes)
if(NOT codes STREQUAL "0;0" OR NOT found MATCHES "([0-9]+) wide\n$")
  message(FATAL_ERROR "cannot read the code of ${DLL}: ${codes}")
endif()
if(CMAKE_MATCH_1 LESS LEAST)
  message(FATAL_ERROR "${DLL} has only ${CMAKE_MATCH_1} instructions on wide vectors")
endif()
if(NOT found MATCHES "^[0-9]+ wide\n$")
  message(FATAL_ERROR "moves that need alignment:\n${found}")
endif()
