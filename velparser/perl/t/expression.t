# Expressions: which texts are accepted, and the sentence about each mistake.
use strict;
use warnings;
use Test::More;

use VEL::Expression;
use VEL::Findings qw(sentence);

my %known = map { $_ => 1 } 'Speed', 'Inlet Area', 'T[1]', 'Rate 2';

# What is wrong, without the text itself.
sub fault {
    my ($text, $names) = @_;
    my $problem = VEL::Expression::fault($text, $names // \%known) // return 'none';
    return sentence($problem) =~ s/^"\Q$text\E" | in "\Q$text\E"//r;
}

is fault('Speed * Inlet Area'),             'none', 'names may contain spaces';
is fault('2 * (Speed + 1 [m s^-1])'),       'none', 'brackets after a number are a unit';
is fault('max(Speed, 0.5 [m s^-1]) ^ 2'),   'none', 'a function';
is fault('sqrt (Speed)'),                   'none', 'a space before the parenthesis';
is fault('T[1] + Rate 2'),                  'none', 'brackets and digits in names';
is fault('if(Speed > 1, 2, 3)'),            'none', 'comparison';
is fault('2   *   (  Speed  )'),            'none', 'any number of spaces';
is fault("abs  \t(Speed)"),                 'none', 'even before a parenthesis';
is fault('1  [m  s^-1] + Speed'),           'none', 'and before a unit';
is fault('T[1]/Speed [s] + 1'),             'none', 'a unit after a name';
is fault('-Speed/2e3'),                     'none', 'sign and exponent';

is fault('2 * (Speed + 1'),   'has a "(" without a ")"; add ")"',            'a parenthesis that stays open';
is fault('2 * Speed) + 1'),   'has a ")" without a "("; remove it or add "("', 'a parenthesis that was never opened';
is fault('Sped * 2'), 'Unknown name "Sped"; did you mean Speed?',
    'an unknown name';
is fault('sqr(Speed)'), 'Unknown function "sqr"; did you mean sqrt?', 'an unknown function';
is fault('Speed $ 2'),  'contains "$", which is not allowed in an expression; remove it', 'a character without a meaning';

ok VEL::Expression::looks_like_one("a $_ b"), "$_ makes an expression"
    for qw(+ - * / ^ < > = & | !), '(', ')', '[] -';
ok !VEL::Expression::looks_like_one('a b'),      'spaces do not';
ok !VEL::Expression::looks_like_one('x [s^-1]'), 'nor what is in brackets';

my @used;
VEL::Expression::fault('Speed + Inlet Area', \%known, \@used);
is_deeply \@used, [ 'Speed', 'Inlet Area' ], 'the names that are used';
VEL::Expression::fault('Rate 2 [s] * 3', \%known, \my @with_unit);
is_deeply \@with_unit, ['Rate 2'], 'without the unit after them';

my %alike = map { $_ => 1 } map { "Speed $_" } 'a' .. 'j';
is fault('Speed z', \%alike),
    'Unknown name "Speed z"; did you mean Speed a?', 'only the first of several hints';

for my $function (@VEL::Expression::FUNCTIONS) {
    is fault("$function(1)"), 'none', "$function is known";
}

# A function's name is followed by a parenthesis, a parameter's is not.
my %both = (step => 1, Speed => 1);
is fault('2 * step + step(Speed)', \%both), 'none', 'a parameter may have the name of a function';
is fault('Speed (2)', \%both), 'Unknown function "Speed"; use one of '
    . 'abs, sqrt, exp, loge, log10, sin, cos, tan, asin, acos, atan, atan2, ...', 'a parameter is not a function';
is fault('2 * sqrt', \%both), 'Unknown name "sqrt"; define it in /LIBRARY/EXPRESSIONS', 'a function is not a parameter';

done_testing;
