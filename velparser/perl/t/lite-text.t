# VEL text in and out.
use strict;
use warnings;

use File::Temp 'tempdir';
use Test::More;

use VEL::Parser::Lite;

my $folder = tempdir(CLEANUP => 1);

sub write_file {
    my ($name, @lines) = @_;
    open my $file, '>', "$folder/$name" or die;
    print {$file} map { "$_\n" } @lines;
    close $file or die;
    return "$folder/$name";
}

sub died {
    my ($code) = @_;
    return eval { $code->(); 1 } ? 'lived' : $@ =~ s/ at \S+ line \d+\.\n\z//r;
}

sub formatted {
    my ($data, $path, $width) = @_;
    my @lines = ('before');
    my $message = $data->getFormattedVEL($path, $width, \@lines);
    return join '|', $message // (), @lines;
}

sub whole {
    my ($data, $path, $library) = @_;
    my @lines = ('before');
    my $message = $data->getObjectVEL($path, \@lines, $library);
    return join '|', $message // (), @lines;
}

# Lines.
my $data = VEL::Parser::Lite::NEW();
is $data->getVELState, 0, 'no block open';
is $data->loadVELLine('FLOW:', 0), undef, 'a header';
is $data->loadVELLine('DOMAIN: Duct', 0), undef, 'another';
is $data->getVELState, 2, 'two blocks open';
is $data->loadVELLine('A = 1', 0), undef, 'a parameter';
is $data->loadVELLine('Long = 1, \\', 0), undef, 'a line that continues';
is $data->loadVELLine('  2', 0), undef, '... on the next line';
is $data->loadVELLine('no sense', 0), 'parseVELLineH: syntax error near "no sense"', 'a wrong line';
is_deeply [ $data->setVELState(1) ], [], 'setVELState returns nothing';
is $data->getVELState, 1, '... and closes blocks';
is $data->getCurrentPath, '/FLOW', '... with their paths';
$data->setVELState(-5);
is $data->getVELState, 0, 'all of them';
is $data->loadVELLine('END', 0), 'parseVELLineH: unmatched END', 'no block to end';
is $data->loadVELLine('RULES:', 1), undef, 'a library line';
$data->setVELState(0);
is $data->isLibrary('/RULES'), 1, '... makes library data';

is formatted($data, '/', 79), 'FLOW:|  DOMAIN: Duct|    A = 1|    Long = 1, 2|  END|END',
    'the text of user data';
is formatted($data, '/FLOW/DOMAIN:Duct', 0), 'A = 1|Long = 1, 2', '... below a node';
is formatted($data, '/', 2), 'velWrapLine: requested line length too short', 'too narrow';
is formatted($data, '/X', 79), 'getChildObjectList: path "/X" does not exist', 'unknown';
is whole($data, '/FLOW', 0), 'FLOW:|DOMAIN: Duct|  A = 1|  Long = 1, 2|END|END', 'with its header';
is whole($data, '/', 0), 'FLOW:|  DOMAIN: Duct|    A = 1|    Long = 1, 2|  END|END',
    'the root without';
is whole($data, '/', 1) =~ /RULES:/ ? 1 : 0, 1, 'library data if it is requested';
is whole($data, '/', 0) =~ /RULES:/ ? 1 : 0, 0, '... and only then';
is $data->getTreeText('/X'), undef, 'no tree, no text';
{
    my %text;
    for my $lines ([], ['A = 1'], ['A = 1', 'B = 2'], ['B = 2', 'A = 1'], ['A ='], ['OBJECT: A', 'END'],
        ['OBJECT:', 'END'], ['OBJECT: A', 'B = 1', 'END'], ['OBJECT: A', 'END', 'B = 1'],
        ['OBJECT: A', 'OBJECT: B', 'END', 'END'], ['OBJECT: A', 'END', 'OBJECT: B', 'END']) {
        my ($one, $two) = map { VEL::Parser::Lite::NEW() } 1, 2;
        $one->loadVELData([ 'TOP:', @$lines, 'END' ]);
        $two->loadLibraryData([ 'TOP:', @$lines, 'END' ]);
        my $text = $one->getTreeText('/TOP');
        is $two->getTreeText('/TOP'), $text, "the same tree: @$lines";
        ok !$text{$text}++, '... and different from all other trees';
    }
}
is whole($data, '/X', 0), 'getObjectVELH: path not found', 'unknown';

# Arrays of lines.
my $second = VEL::Parser::Lite::NEW();
is whole($second, '/', 0), '', 'nothing';
is $second->loadVELData([ "A = 1\n", 'B = 2', '# comment', '' ]), undef, 'user data';
is $second->loadLibraryData([ 'RULES:', 'END' ]), undef, 'library data';
is $second->isLibrary('/RULES'), 1, '... is marked';
is formatted($second, '/', 79), 'A = 1|B = 2', '... is not saved';
is $second->loadVELData([]), undef, 'no lines';
is $second->loadVELData([ 'X:', 'Y:', 'END' ]), '1 missing END statement(s) in input', 'an END missing';
is $second->getVELState, 0, '... nothing stays open';
is $second->loadVELData([ 1, 'C = 3' ]), 'parseVELLineH: syntax error near "1"', 'a number is a line';
my $undefined = 'Undefined element in array or fetch error';
is died(sub { $second->loadVELData([ 'C = 3', undef ]) }), $undefined, 'an undefined element';
my @holes;
$holes[2] = 'C = 3';
is died(sub { $second->loadLibraryData(\@holes) }), $undefined, 'a missing element';
is $second->havePath('/C'), 0, '... and nothing is parsed';
{
    package Lines;
    sub TIEARRAY { my ($class, @lines) = @_; return bless [@lines], $class }
    sub FETCH { return $_[0][ $_[1] ] }
    sub FETCHSIZE { return scalar @{ $_[0] } }
    package Line;
    use overload '""' => sub { return "$_[0][0] = object" };
}
tie my @tied, 'Lines', 'T = 1', 'U = 2';
is $second->loadVELData(\@tied), undef, 'a tied array';
is $second->loadVELData([ map { bless [$_], 'Line' } 'V', 'W' ]), undef, 'objects';
is formatted($second, '/', 79), 'A = 1|B = 2|T = 1|U = 2|V = object|W = object|X:|  Y:|  END|END',
    '... as their texts';
my $count = 20_000;
my $large = VEL::Parser::Lite::NEW();
is $large->loadVELData([ map { "Parameter $_ = $_" } map { "n$_" } 1 .. $count ]), undef, 'many lines';
$large->getFormattedVEL('/', 79, \my @many);
is scalar @many, $count, '... are returned';

# Handlers change what is being parsed.
my $watched = VEL::Parser::Lite::NEW();
my @source = map { "P$_ = " . 'x' x 100 } 1 .. 50;
$watched->addChangeHandler(sub { @source = (); undef $watched if $_[0] eq '/P50'; return });
is $watched->loadVELData(\@source), undef, 'lines that are cleared by a handler';

# Files.
my $file = write_file('a file.vel', 'FLOW:', ' A = 1', 'END');
my $third = VEL::Parser::Lite::NEW();
is $third->loadVELFile($file), undef, 'a file';
is formatted($third, '/', 79), 'FLOW:|  A = 1|END', '... is read';
is $third->loadVELFile("$folder/none"), "loadFileData: $folder/none: open failed", 'no file';

# Libraries.
write_file('one.vel', 'RULES:', ' A = 1', 'END');
write_file('two.vel', 'RULES:', ' B = 2', 'END');
write_file('wrong.vel', 'END');
is $third->readNamedLibraries('one.vel;two.vel', $folder), undef, 'libraries';
is $third->isLibrary('/RULES/B'), 1, '... are library data';
is $third->readNamedLibraries('wrong.vel', $folder),
    "Error reading library file $folder/wrong.vel: parseVELLineH: unmatched END", 'a wrong one';
is $third->readNamedLibraries('one.vel', "$folder/none"),
    "readNamedLibraries: unable to find a valid lib directory\n", 'no folder';
{
    local $ENV{ZOT5_VEL_LIBSDIR} = $folder;
    local $ENV{ZOT5_VEL_LIBS} = 'one.vel;two.vel';
    my $fourth = VEL::Parser::Lite::NEW();
    is $fourth->readLibraries, undef, 'the libraries of the environment';
    is $fourth->havePath('/RULES/A') + $fourth->havePath('/RULES/B'), 2, '... both';
    is $fourth->readNamedLibraries("$folder/wrong.vel", ''),
        "Error reading library file $folder/wrong.vel: parseVELLineH: unmatched END",
        'a wrong one by its own folder';
    delete local $ENV{ZOT5_VEL_LIBSDIR};
    delete local $ENV{ZOT5_VEL_LIBS};
    is $fourth->readLibraries,
        "Error: No library files specified by \$ZOT5_VEL_LIBS. No libraries were read.\n", 'none';
}

done_testing;
