package VEL::Suggest;

use strict;
use warnings;
use feature 'signatures';

use Exporter 'import';
use List::Util qw(min);

=head1 NAME

VEL::Suggest - finds the known word nearest to a misspelt one, for "did you mean"

=head1 FUNCTIONS

=over

=item C<nearest($word, @known)>

The known word nearest to C<$word>, or C<undef> if none is near enough: one typing error
(an extra, missing or wrong letter, or two letters swapped) for every three letters.
Letter case counts less than a typing error, so a word that differs only in case is
always found. If several words are equally near, the first is taken.

=cut

our @EXPORT_OK = qw(nearest);

sub nearest ($word, @known) {
    my $folded = lc $word;
    my $limit  = int(length($word) / 3);
    my @near   = grep { abs(length($_) - length $word) <= $limit } @known;
    for my $candidate (@near) {
        return $candidate if lc $candidate eq $folded;
    }
    my ($best, $least) = (undef, $limit + 1);
    for my $candidate (@near) {
        my $errors = _distance($folded, lc $candidate, $least - 1);
        ($best, $least) = ($candidate, $errors) if $errors < $least;
    }
    return $best;
}

# Edit distance with swaps of neighbours, row by row. If it is certainly above $limit, the
# result is any number above $limit.
sub _distance ($from, $to, $limit) {
    my @from = split //, $from;
    my @to   = split //, $to;
    my (@before, @above);
    my @row = (0 .. @to);
    for my $i (1 .. @from) {
        @before = @above;
        @above  = @row;
        @row    = ($i);
        for my $j (1 .. @to) {
            my $cost = $from[$i - 1] eq $to[$j - 1] ? 0 : 1;
            $row[$j] = min($above[$j] + 1, $row[$j - 1] + 1, $above[$j - 1] + $cost);
            $row[$j] = min($row[$j], $before[$j - 2] + 1)
                if $i > 1 && $j > 1 && $from[$i - 1] eq $to[$j - 2] && $from[$i - 2] eq $to[$j - 1];
        }
        return $limit + 1 if min(@row) > $limit;
    }
    return $row[-1];
}

=back

=head1 METHODS

For thousands of names that are searched often.

=over

=item C<< VEL::Suggest->new($known) >>

C<$known> is an array that does not change while the object exists.

=item C<find($word)>

Like C<nearest>. But among more than a hundred words it finds only words that differ by
one typing error, or by one letter in another place, in a time that does not depend on
their number.

=cut

my $FEW = 100;

sub new ($class, $known) { return bless { known => $known }, $class }

sub find ($self, $word) {
    my $known = $self->{known};
    return nearest($word, @$known) if @$known <= $FEW;
    my $place = $self->{place} //= _places($known);
    my $folded = lc $word;
    my $found = $place->{$folded} // min(grep { defined } @$place{ _shortened($folded) });
    return defined $found ? $known->[$found] : undef;
}

# Two words that differ by one typing error become the same if one of them, or both, lose a
# letter. So each word is entered as it is, and without each of its letters. The first word
# wins.
sub _places ($known) {
    my %place;
    for my $i (0 .. $#$known) {
        $place{ lc $known->[$i] } //= $i;
    }
    for my $i (0 .. $#$known) {
        $place{$_} //= $i for _shortened(lc $known->[$i]);
    }
    return \%place;
}

sub _shortened ($word) {
    return map { substr($word, 0, $_) . substr $word, $_ + 1 } 0 .. length($word) - 1;
}

=back

=cut

1;
