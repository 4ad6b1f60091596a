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

# Names that are words of the compiler: the IDL has them with a capital, the library as published. A
# name stands in the library once, behind a byte with its length and three more; its hash does not
# know upper from lower case.
set(respell [=[
  my ($file, $name) = @ARGV;
  open(my $in, "<:raw", $file) or die; local $/; my $library = <$in>; close $in;
  my $length = chr(length $name); my $published = lcfirst $name;
  my $found = ($library =~ s/(\Q$length\E[\x00-\xff]{3})\Q$name\E(?![a-z])/$1$published/g);
  $found == 1 or die "$name stands in the library $found times as a name, not once\n";
  open(my $out, ">:raw", $file) or die; print $out $library; close $out or die;
]=])
foreach(name IN LISTS RESPELL)
  execute_process(COMMAND perl -e "${respell}" ${OUT}/${NAME}.tlb ${name} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    file(REMOVE ${OUT}/${NAME}.h)
    message(FATAL_ERROR "${name} could not be respelled")
  endif()
endforeach()
