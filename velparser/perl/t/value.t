# The texts of values: lists, logicals, numbers and quantities.
use strict;
use warnings;
use Test::More;

use VEL::Parser::Lite;
use VEL::Value qw(split_list logical is_number is_integer quantity);

sub entries { return join '|', split_list($_[0]) }

is entries('a, b,c'),               'a|b|c',                    'entries are trimmed';
is entries('Cartesian, (1, 2), 3'), 'Cartesian|(1, 2)|3',       'no cut inside parentheses';
is entries('f(a,b), g(h(1,2),3)'),  'f(a,b)|g(h(1,2),3)',       'no cut in nested parentheses';
is entries('a,'),                   'a|',                       'a last comma makes an empty entry';
is entries('a), b'),                'a), b',                    'a depth below zero does not cut';
is entries("  a \t,\t  b  "),         'a|b',                      'of all white space';
is entries('  '),                   '',                         'white space has no entries';
is scalar(my @none = split_list(undef)), 0,                     'nor has nothing';

for my $text (qw(Yes yes Y TRUE t on 1 0.5 27)) { is logical($text), 1, "$text is yes" }
for my $text (qw(No n FALSE f Off 0 0.4))       { is logical($text), 0, "$text is no" }
is logical("  on\t "), 1, 'white space around a logical';
is logical(undef),   undef, 'undef is not a logical';
for my $text ('', ' ', 'maybe', 'say yes', '-1') {
    is logical($text), undef, qq("$text" is not a logical);
}

# A value that the database reads as a logical is a logical, and says the same.
my $database = VEL::Parser::Lite::NEW();
$database->createParam('/P', 'x');
for my $text ('yes,', qw(yes Y tRUE t on no N False f oFF maybe 1 0 2 -1 +1 0.4 0.5 .5 1x 0x10 1e3 1e-3 9e99 1.5.2 5e 00),
    'yes please', 'no, yes', 'say yes', "\ton ", "on\x0b", "\xa0yes", '1 2', '0 1') {
    $database->setStringValue('/P', $text);
    my $error = $database->getLogicalValue('/P', \my $value);
    is logical($text), $error ? undef : $value ? 1 : 0, qq("$text" as the database reads it);
}

for my $text (qw(1 -1 +1 1. .5 1e5 -2.5E-3)) { ok is_number($text), "$text is a number" }
for my $text ('', '1,5', '0x10', 'inf', 'nan', '1e', '1 2', '.', "1\n") {
    ok !is_number($text), qq("$text" is not a number);
}
ok is_integer('-12'),   '-12 is a whole number';
ok !is_integer($_), "$_ is not a whole number" for '1.0', '1e3', '';

sub shown {
    my @parts = quantity($_[0]) or return 'none';
    return "$parts[0] " . (ref $parts[1] ? "open ${ $parts[1] }" : $parts[1] // 'bare');
}
is shown('0.5 [kg s^-1]'),  '0.5 kg s^-1',      'number and unit';
is shown('0.5[kg s^-1]'),   '0.5 kg s^-1',      'no space is needed';
is shown('5 [ m ]'),        '5 m',              'blanks in the bracket';
is shown('-2e3'),           '-2e3 bare',        'a bare number';
is shown('5 [m'),           '5 open m',         'a bracket that does not close';
is shown('5 [m] x'),        'none',             'something after it';
is shown('5 m'),            'none',             'a unit without brackets';
is shown('m 5 [m]'),        'none',             'something in front';
is shown('5 x [m]'),        'none',             'or between';
is shown('5 [a] [m]'),      'none',             'two brackets';
is shown('fast'),           'none',             'a text';
is shown('1.5.2'),          'none',             'two points';

done_testing;
