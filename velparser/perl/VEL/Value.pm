package VEL::Value;

use strict;
use warnings;
use feature 'signatures';

use Exporter 'import';

=head1 NAME

VEL::Value - reads the text of a value: lists, logicals, numbers, quantities

=head1 DESCRIPTION

All values are text. These functions read it as the command database does. None of them
depends on the locale.

=head1 FUNCTIONS

=over

=item C<$NUMBER>

A pattern for a decimal number: sign, digits, point, exponent. No hexadecimal,
no C<inf>, no C<nan>.

=cut

our @EXPORT_OK = qw(split_list logical is_number is_integer quantity $NUMBER);

our $NUMBER = qr/[+-]?(?:[0-9]+(?:\.[0-9]*)?|\.[0-9]+)(?:[eE][+-]?[0-9]+)?/;

=item C<split_list($text)>

The entries of a list: the text cut at the commas outside parentheses, each
entry trimmed. A text of white space alone has no entries.

=cut

sub split_list ($text) {
    return () if !defined $text || $text !~ /\S/;
    my @entries = $text =~ /[()]/ ? _split_outside_parentheses($text) : split /,/, $text, -1;
    for (@entries) { s/^\s+//; s/\s+$// }
    return @entries;
}

sub _split_outside_parentheses ($text) {
    my ($depth, @entries) = (0, '');
    for my $piece ($text =~ /([(),]|[^(),]+)/g) {
        if ($piece eq ',' && $depth == 0) {
            push @entries, '';
            next;
        }
        $depth++ if $piece eq '(';
        $depth-- if $piece eq ')';
        $entries[-1] .= $piece;
    }
    return @entries;
}

=item C<logical($text)>

1 for yes, y, true, t, on and any number except zero; 0 for no, n, false, f, off and zero;
C<undef> for every other text. Upper and lower case are the same. As in the command
database, only the first word counts. If it begins with a digit, it is the number at its
beginning, rounded.

=cut

my %LOGICAL = (
    (map { $_ => 1 } qw(yes y true t on)),
    (map { $_ => 0 } qw(no n false f off)),
);

sub logical ($text) {
    return undef if !defined $text;
    my ($word) = $text =~ /^\s*(\S+)/ or return undef;
    return $LOGICAL{ lc $word } if exists $LOGICAL{ lc $word };
    my ($number) = $word =~ /^(?=[0-9])($NUMBER)/ or return undef;
    return int($number + 0.5) ? 1 : 0;
}

=item C<is_number($text)>, C<is_integer($text)>

Whether the text is a number, or a whole number, and nothing else.

=cut

sub is_number ($text) { return $text =~ /^$NUMBER\z/ ? 1 : 0 }

sub is_integer ($text) { return $text =~ /^[+-]?[0-9]+\z/ ? 1 : 0 }

=item C<quantity($text)>

The number and the text of the unit (C<undef> without brackets) of a quantity such as
C<0.5 [kg s^-1]>. If the bracket is not closed, the result has a reference to the text
after the bracket instead of the unit. An empty list if the text does not begin with a
number, or contains more than number and unit.

=cut

sub quantity ($text) {
    my ($number, $rest) = $text =~ /^($NUMBER)\s*(.*)$/ or return;
    return ($number, undef) if $rest eq '';
    return if $rest !~ /^\[/;
    return ($number, $1) if $rest =~ /^\[\s*([^\[\]]*?)\s*\]$/;
    return ($number, \substr($rest, 1)) if $rest !~ /\]/;
    return;
}

=back

=cut

1;
