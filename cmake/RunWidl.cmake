# Compiles an IDL file; see Idl.cmake.
file(MAKE_DIRECTORY ${OUT})
execute_process(
  COMMAND ${WIDL} -I/usr/include/wine/wine/windows -L/usr/lib/i386-linux-gnu/wine/i386-windows
          -t -h -H ${NAME}.h -u -U ${NAME}_i.c ${IDL}
  WORKING_DIRECTORY ${OUT}
  RESULT_VARIABLE result
  ERROR_VARIABLE said
  OUTPUT_VARIABLE said)
if(NOT result EQUAL 0 OR said MATCHES "warning")
  file(REMOVE ${OUT}/${NAME}.h)
  message(FATAL_ERROR "${said}")
endif()

execute_process(COMMAND perl ${CMAKE_CURRENT_LIST_DIR}/finish_library.pl ${OUT}/${NAME}.tlb ${RESPELL}
                RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  file(REMOVE ${OUT}/${NAME}.h)
  message(FATAL_ERROR "the type library could not be finished")
endif()
