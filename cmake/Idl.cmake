# quill_idl(<target> <file.idl> [name...]): compiles an IDL file to <name>.h, <name>_i.c and <name>.tlb and
# offers them as the interface library <target>. A warning of the compiler fails the build.
# The names get a small first letter in the library.
find_program(WIDL i686-w64-mingw32-widl REQUIRED)

function(quill_idl target idl)
  get_filename_component(name ${idl} NAME_WE)
  set(out ${CMAKE_BINARY_DIR}/idl)
  add_custom_command(
    OUTPUT ${out}/${name}.h ${out}/${name}_i.c ${out}/${name}.tlb
    COMMAND ${CMAKE_COMMAND} -DWIDL=${WIDL} -DIDL=${idl} -DNAME=${name} -DOUT=${out} "-DRESPELL=${ARGN}"
            -P ${PROJECT_SOURCE_DIR}/cmake/RunWidl.cmake
    DEPENDS ${idl} ${PROJECT_SOURCE_DIR}/cmake/RunWidl.cmake ${PROJECT_SOURCE_DIR}/cmake/finish_library.pl
    VERBATIM)
  add_library(${target} STATIC ${out}/${name}_i.c ${out}/${name}.h ${out}/${name}.tlb)
  target_include_directories(${target} SYSTEM PUBLIC ${out})
endfunction()
