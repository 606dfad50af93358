# The names that are proposed for a misspelt one.
use strict;
use warnings;
use Test::More;

use VEL::Suggest qw(nearest);

my @known = qw(Inlet Outlet Opening Wall Symmetry);
sub near { return nearest($_[0], @known) // 'none' }

is near('Inlte'),     'Inlet',    'two letters swapped';
is near('Inle'),      'Inlet',    'a letter missing';
is near('Outlett'),   'Outlet',   'a letter too many';
is near('Opemimg'),   'Opening',  'two letters wrong in a longer word';
is near('WALL'),      'Wall',     'letter case alone';
is near('wal'),       'Wall',     'letter case and a typing error';
is near('Inxyt'),     'none',     'two letters wrong in a short one';
is near('Window'),    'none',     'too far from all';
is near(''),          'none',     'nothing';
is nearest('x', 'X', 'y'), 'X',   'one letter in another case';
is nearest('x', 'y'),      undef, 'a single letter is not near any other';
is nearest('ab', 'ba', 'ab'), 'ab', 'the nearest, not the first';
is nearest('x'), undef, 'no known words';

subtest 'among thousands' => sub {
    my @names = map { "Room $_" } 1 .. 5000;
    my $hints = VEL::Suggest->new(\@names);
    my %expected = (
        'ROOM 4711'  => 'Room 4711', 'Romo 4711' => 'Room 4711', 'Rom 4711' => 'Room 4711',
        'Rooom 4711' => 'Room 4711', 'Roam 4711' => 'Room 4711', 'Rm 4711'  => 'none',
        'Rom 1' => 'Room 1', 'ROOM 1' => 'Room 1', 'Cellar' => 'none',      ''          => 'none',
    );
    is $hints->find($_) // 'none', $expected{$_}, qq("$_") for sort keys %expected;
    is(VEL::Suggest->new([qw(Inlet Outlet)])->find('Outet'), 'Outlet', 'the same with few words');
};

done_testing;
