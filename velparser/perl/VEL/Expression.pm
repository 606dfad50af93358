package VEL::Expression;

use strict;
use warnings;
use feature 'signatures';

use VEL::Findings qw(problem choice);
use VEL::Suggest qw(nearest);
use VEL::Value qw($NUMBER);

=head1 NAME

VEL::Expression - checks expressions: their form and the names in them

=head1 DESCRIPTION

A Real may be given as an expression over the parameters of
F</LIBRARY/EXPRESSIONS>. It is accepted if its parentheses match and every
name in it is known. Names may contain spaces, like parameter names. Brackets after a
number contain its unit. The unit of the result is not checked.

=head1 FUNCTIONS

=over

=item C<@FUNCTIONS>

The known functions.

=cut

our @FUNCTIONS = qw(abs sqrt exp loge log10 sin cos tan asin acos atan atan2
    min max if step floor ceil mod);
my %FUNCTION = map { $_ => 1 } @FUNCTIONS;

my $NAME = qr/[A-Za-z_%][A-Za-z0-9_. {}|\[\]]*/;

=item C<is_name($text)>

Whether the text is one name and nothing else.

=cut

sub is_name ($text) { return $text =~ /^$NAME$/ ? 1 : 0 }

=item C<looks_like_one($text)>

Whether the text has anything that only an expression has: an operator or a
parenthesis.

=cut

sub looks_like_one ($text) {
    (my $bare = $text) =~ s/\[[^\]]*\]//g;
    return $bare =~ m{[-+*/^()<>=&|!]} ? 1 : 0;
}

=item C<fault($text, $known, $used)>

What is wrong with the expression, a problem of L<VEL::Findings>, or C<undef>.
The keys of the hash C<$known> are the names that may be used. The names that are
used are pushed onto the array C<$used>, if it is given.

=cut

sub fault ($text, $known, $used = undef) {
    my @fault = _fault($text, $known, $used) or return undef;
    return problem(@fault, value => $text);
}

# The key of the sentence and the values of its placeholders.
sub _fault ($text, $known, $used) {
    my $depth = 0;
    pos($text) = 0;
    while (pos($text) < length $text) {
        next if $text =~ /\G\s+/gc;
        next if $text =~ /\G$NUMBER\s*\[[^\[\]]*\]/gc || $text =~ /\G$NUMBER/gc;
        if ($text =~ /\G\(/gc) { $depth++; next }
        if ($text =~ /\G\)/gc) {
            return 'unopened' if --$depth < 0;
            next;
        }
        next if $text =~ m{\G[-+*/^,<>=&|!]}gc;
        if ($text =~ /\G($NAME)/gc) {
            my @fault = _name_fault(\$text, $1, $known, $used) or next;
            return @fault;
        }
        $text =~ /\G(.)/gcs;
        return ('odd-character', character => $1);
    }
    return $depth > 0 ? 'unclosed' : ();
}

# Checks the name that has just been read. A name may contain brackets, so the longest
# known name is taken.
sub _name_fault ($text, $name, $known, $used) {
    $name =~ s/\s+$//;
    if ($$text =~ /\G\s*(?=\()/gc) {
        return $FUNCTION{$name} ? () : ('unknown-function', name => $name, choice(nearest($name, @FUNCTIONS), @FUNCTIONS));
    }
    if (!exists $known->{$name} && $name =~ /^([^\[]*?)\s*\[[^\]]*\]?$/ && exists $known->{$1}) {
        $name = $1;
    }
    if (exists $known->{$name}) {
        push @$used, $name if $used;
        return;
    }
    return ('unknown-expression', name => $name, near => nearest($name, sort keys %$known));
}

=back

=cut

1;
