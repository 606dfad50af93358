# The class API: each method that the program calls, with its results and messages.
use strict;
use warnings;
use feature 'signatures';
use Test::More;
use File::Temp ();
use FindBin;
use lib "$FindBin::Bin/lib";

use VELTest;

my $folder = File::Temp->newdir;

sub file ($name, $text) {
    open my $handle, '>:raw', "$folder/$name" or die "$name: $!";
    print {$handle} $text;
    close $handle or die "$name: $!";
    return "$folder/$name";
}

subtest 'the methods on which the program relies' => sub {
    my $api = API::new('API');
    isa_ok $api->{database}, 'VEL::Parser::Lite', 'its database';
    my $database = VEL::Parser::Lite::NEW();
    is(API->new($database)->{database}, $database, 'or the one that is given');
    can_ok 'API', qw(readTextFile parseVELData readLibraries updateSolverVEL getAllowedParamStrings
        getAllowedParams isParamEditable isItemExpert explainItem);
};

subtest 'readTextFile' => sub {
    my $api = API->new;
    my @lines = ('old');
    my $read = sub ($path) { return $api->readTextFile($path, \@lines) };
    is $read->(file('plain', "a\n  b\n\nc\n")), '', 'a file';
    is_deeply \@lines, [ 'a', '  b', '', 'c' ], 'its lines';
    is $read->(file('open', "a\nb")), '', 'without a last line end';
    is_deeply \@lines, [ 'a', 'b' ], 'the last line counts';
    is $read->(file('bytes', "\xC3\xBC\xFF\0x\r\n")), '', 'any bytes';
    is_deeply \@lines, ["\xC3\xBC\xFF\0x\r"], 'stay as they are';
    is $read->(file('marked', "\xEF\xBB\xBFa\n\xEF\xBB\xBFb\n")), '', 'a byte order mark';
    is_deeply \@lines, [ 'a', "\xEF\xBB\xBFb" ], 'is skipped at the start only';
    is $read->(file('empty', '')), '', 'an empty file';
    is_deeply \@lines, [], 'has no lines';
    is $read->(file(' -odd; name|', "x\n")), '', 'a name with odd characters';
    like $read->("$folder/nowhere"), qr/^readTextFile: \Q$folder\E\/nowhere: open failed: /, 'no such file';
    is $read->("$folder"), "readTextFile: $folder: open failed: it is a directory", 'a directory';
};

subtest 'parseVELData' => sub {
    my $api = API->new;
    ok !$api->parseVELData([ 'FLOW:', 'A = 1', 'END' ], 0), 'user data';
    ok !$api->parseVELData([ "STOCK:\n", "END\n" ], 1), 'library data, lines with their ends';
    is $api->{database}->isLibrary('/FLOW'),  0, 'one is of the user';
    is $api->{database}->isLibrary('/STOCK'), 1, 'the other of a library';
    is $api->parseVELData([ 'FLOW:' ], 0), '1 missing END statement(s) in input', 'a failure is returned';
};

subtest 'readLibraries' => sub {
    my $api = API->new;
    delete local @ENV{qw(ZOT5_VEL_LIBS ZOT5_VEL_LIBSDIR)};
    like $api->readLibraries, qr/No library files specified/, 'none are named';
    local $ENV{ZOT5_VEL_LIBSDIR} = "$folder";
    local $ENV{ZOT5_VEL_LIBS} = 'good.vel';
    file('good.vel', "RULES:\nOBJECT: A\nExpert = Yes\nEND\nEND\n");
    is $api->readLibraries, '', 'a good one';
    is $api->isItemExpert('/A:x'), 1, 'its rules apply at once';
    file('bad.vel', "RULES:\nOBJECT: B\nExpert = Yes\nColour = red\nEND\nEND\n");
    local $ENV{ZOT5_VEL_LIBS} = 'good.vel;bad.vel';
    is $api->readLibraries, '/RULES/OBJECT:B/Colour: OBJECT has no field "Colour"; correct the name or remove the field [bad-rule]',
        'a wrong rule is reported';
    is $api->isItemExpert('/B:x'), 1, 'its correct rules apply';
    is $api->readLibraries, '', 'it is reported once';
    local $ENV{ZOT5_VEL_LIBS} = 'none.vel';
    like $api->readLibraries, qr/^Error reading library file .*none\.vel: /, 'a file that cannot be read';
};

subtest 'explainItem' => sub {
    my $api = with_libraries();
    $api->parseVELData(lines("FLOW:\nDOMAIN: d\nKind = Solid\nEND\nTIMING:\nKind = Unsteady\nEND\nEND"), 0);
    my @lines;
    my $explain = sub ($path) { return $api->explainItem($path, \@lines) || join '', map { "$_\n" } @lines };
    is $explain->('/FLOW/DOMAIN:d/BOUNDARY:b/THROUGHFLOW/Mass Flow Rate'), <<'TEXT', 'a parameter that is not there';
Description = Mass per unit of time through the whole surface.
Type = Real
Units = kg s^-1
Lower Bound = 0 [kg s^-1]
Bounds Exclusive = No
Editable = Yes
Editable While Running = Yes
Expert = No
Expressions = Yes
Presence = not used here, only in CASE:Mass of SINGLETON:THROUGHFLOW (Given is Mass Flow Rate)
TEXT
    is $explain->('/FLOW/DOMAIN:d/STARTING VALUES/Temperature'), <<'TEXT', 'a bound that is not itself allowed';
Description = An absolute temperature.
Type = Real
Units = K
Lower Bound = 0 [K]
Bounds Exclusive = Yes
Default = 293.15 [K]
Editable = Yes
Editable While Running = No
Expert = No
Expressions = Yes
Presence = optional, by "Optional Parameters" of SINGLETON:STARTING VALUES
TEXT
    is $explain->('/FLOW/DOMAIN:d/Substance'), <<'TEXT', 'values and objects';
Description = A substance or mixture of the library, or one that the solver knows by itself.
Type = String
Allowed Values = Water, Air, Steel, Copper, Aluminium
Allowed Objects = SUBSTANCE, MIXTURE
Default = Water
Editable = Yes
Editable While Running = No
Expert = No
Presence = required, by "Required Parameters" of OBJECT:DOMAIN
TEXT
    is $explain->('/FLOW/TIMING'), <<'TEXT', 'an object, with what its case adds';
Description = Whether and how the flow changes with time.
Help Topic = Time
Parents = FLOW
Required Parameters = Kind, Duration
Optional Parameters = Remark, Start Time
Free Parameters = No
Required Objects = TIME STEP
Maximum Count = 1
Expert = No
Output Ordering Priority = 90
Presence = optional, by "Optional Objects" of SINGLETON:FLOW
TEXT
    is $explain->('/NOWHERE/Thing'), '', 'an item that no rule describes';
};

subtest 'no path' => sub {
    my @warnings;
    local $SIG{__WARN__} = sub { push @warnings, @_ };
    my @names = ('as before');
    is(API->new->getAllowedParams(undef, \@names, 1), 'getAllowedParams: no path', 'a message');
    is "@names|@warnings", 'as before|', 'and no more';
};

subtest 'no failure ends the program' => sub {
    my $api = API->new;
    ok !eval { $api->isItemExpert(); 1 }, 'a call without arguments is an exception';
    ok !eval { $api->getAllowedParams('/', 'no array', 1); 1 }, 'and so is a wrong array';
    ok !eval { $api->parseVELData([undef], 0); 1 }, 'and a line that is not an array';
};

done_testing;
