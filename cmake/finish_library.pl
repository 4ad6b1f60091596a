# Finishes a type library that the IDL compiler has made: perl finish_library.pl <library> <Name>...
#
# 1. The compiler notes when it ran, as text and as a number behind it. Without that, the same
#    sources give the same library.
# 2. Each Name gets a small first letter: a published name that is a word of the compiler, which the
#    IDL therefore has with a capital. The library stores each name once, behind a byte with its
#    length and three bytes more. The hash that it is looked up by ignores case, so it stays right.
use strict;
use warnings;

my ($file, @names) = @ARGV;
open(my $in, '<:raw', $file) or die "$file: $!\n";
my $library = do { local $/; <$in> };
close $in;

my $times = ($library =~
  s/(Created by WIDL version \S+ at ).{24}(\n\x57*\x13\x00).{4}/${1}Thu Jan  1 00:00:00 1970$2\0\0\0\0/gs);
$times == 1 or die "the time of the compilation was not found\n";

for my $name (@names) {
  my $length = chr(length $name);
  my $published = lcfirst $name;
  my $found = ($library =~ s/(\Q$length\E[\x00-\xff]{3})\Q$name\E(?![a-z])/$1$published/g);
  $found == 1 or die "$name stands in the library " . ($found || 0) . " times as a name, not once\n";
}

open(my $out, '>:raw', $file) or die "$file: $!\n";
print {$out} $library;
close $out or die "$file: $!\n";
