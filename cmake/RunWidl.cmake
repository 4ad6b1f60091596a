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

# Changes the library by a perl script, which must die where it does not find what it changes.
function(change what script)
  execute_process(COMMAND perl -0777 -we "
    use strict; my ($file, $name) = @ARGV;
    open(my $in, '<:raw', $file) or die; $_ = <$in>; close $in;
    ${script}
    open(my $out, '>:raw', $file) or die; print $out $_; close $out or die;"
    ${OUT}/${NAME}.tlb ${ARGN} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    file(REMOVE ${OUT}/${NAME}.h)
    message(FATAL_ERROR "${what}")
  endif()
endfunction()

# The compiler notes when it ran, as text and as a number behind it. Without that, the same sources
# give the same library.
change("the time of the compilation was not found" [=[
  s/(Created by WIDL version \S+ at ).{24}(\n\x57*\x13\x00).{4}/${1}Thu Jan  1 00:00:00 1970$2\0\0\0\0/gs == 1 or die;
]=])

# Names that are words of the compiler: the IDL has them with a capital, the library as published. A
# name stands in the library once, behind a byte with its length and three more; its hash does not
# know upper from lower case.
foreach(name IN LISTS RESPELL)
  change("${name} could not be respelled" [=[
    my $length = chr(length $name); my $published = lcfirst $name;
    my $found = s/(\Q$length\E[\x00-\xff]{3})\Q$name\E(?![a-z])/$1$published/g;
    $found == 1 or die "$name stands in the library $found times as a name, not once\n";
  ]=] ${name})
endforeach()
