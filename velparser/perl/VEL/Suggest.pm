package VEL::Suggest;

use strict;
use warnings;
use feature 'signatures';

use Exporter 'import';
use List::Util qw(min);

our @EXPORT_OK = qw(nearest);

=head1 NAME

VEL::Suggest - "did you mean": the known word that a mistyped one stands for

=head1 FUNCTIONS

=over

=item C<nearest($word, @known)>

The known word nearest to C<$word>, or C<undef> when none is near enough: one
slip (a letter too many, missing, wrong, or two swapped) for every three
letters of it. Letter case counts for less than a slip, so a word that
differs in case alone is always found. Of equals the first is taken.

=cut

sub nearest ($word, @known) {
    my $folded = lc $word;
    my $limit  = int(length($word) / 3);
    my @near   = grep { abs(length($_) - length $word) <= $limit } @known;
    for my $candidate (@near) {
        return $candidate if lc $candidate eq $folded;
    }
    my ($best, $least) = (undef, $limit + 1);
    for my $candidate (@near) {
        my $slips = _slips($folded, lc $candidate, $least - 1);
        ($best, $least) = ($candidate, $slips) if $slips < $least;
    }
    return $best;
}

# Edit distance with swaps of neighbours, by rows; any number above $limit
# where the distance is certain to exceed it.
sub _slips ($from, $to, $limit) {
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

For names by the thousand, which are asked for again and again.

=over

=item C<< VEL::Suggest->new($known) >>

C<$known> is an array that does not change meanwhile.

=item C<find($word)>

As C<nearest>; but among more than a hundred words only those are found that
differ by one slip, or by a letter moved elsewhere, in a time that does not
depend on their number.

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

# Words that are one slip apart become the same when the one or the other, or
# both, lose a letter. So each word is entered as it is and without each of its
# letters, in favour of the first.
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
