# Builds each probe (a source including a header of a higher floor, compiled
# against a lower floor's view) and requires that it fails for want of that
# header. PROBES: a list of target=header pairs.
foreach(probe ${PROBES})
  string(REPLACE "=" ";" pair ${probe})
  list(GET pair 0 target)
  list(GET pair 1 header)
  execute_process(COMMAND ${CMAKE_COMMAND} --build ${BUILD_DIR} --target ${target}
                  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(result EQUAL 0)
    message(FATAL_ERROR "${target}: including ${header} built, but that header is above its floor")
  endif()
  string(FIND "${output}" "${header}: No such file or directory" found)
  if(found EQUAL -1)
    message(FATAL_ERROR "${target} failed for another reason than ${header}:\n${output}")
  endif()
  message(STATUS "${target}: ${header} is out of reach")
endforeach()
