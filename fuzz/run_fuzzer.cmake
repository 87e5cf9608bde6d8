# SPDX-License-Identifier: MIT
# Runs a fuzz target for a while on its seeds and on what earlier runs found; fails on the first finding, whose
# input then lies beside the corpus.
file(MAKE_DIRECTORY "${CORPUS}")
execute_process(
  COMMAND "${FUZZER}" -max_total_time=${SECONDS} -timeout=10 -rss_limit_mb=2048 -print_final_stats=1
          "-artifact_prefix=${CORPUS}-finding-" "${CORPUS}" "${SEEDS}"
  RESULT_VARIABLE result OUTPUT_VARIABLE log ERROR_VARIABLE log)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${log}")
endif()
string(REGEX MATCH "number_of_executed_units: [0-9]+" units "${log}")
if(units STREQUAL "number_of_executed_units: 0" OR NOT units)
  message(FATAL_ERROR "nothing was executed\n${log}")
endif()
message("${units}")
