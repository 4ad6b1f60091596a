# keep_symbols(<target>): leaves the symbols of a program in <program>.debug beside it, and a program
# without them that names this file.
# The dates stay: else the tools would note the time of day in the program.
function(keep_symbols target)
  set(program $<TARGET_FILE:${target}>)
  set(symbols ${program}.debug)
  set_target_properties(${target} PROPERTIES QUILL_SYMBOLS ON)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_OBJCOPY} -p --only-keep-debug ${program} ${symbols}
    COMMAND ${CMAKE_STRIP} -p ${program}
    COMMAND ${CMAKE_OBJCOPY} -p --add-gnu-debuglink=${symbols} ${program}
    VERBATIM)
endfunction()
