package VEL::Version;

use strict;
use warnings;
use feature 'signatures';

=head1 NAME

VEL::Version - the order of language versions

=head1 FUNCTIONS

=over

=item C<compare($one, $other)>

-1, 0 or 1. Versions are compared number by number: 2.6 is older than 2.10, and 5 is the
same as 5.0.

=cut

sub compare ($one, $other) {
    my @one   = $one   =~ /[0-9]+/g;
    my @other = $other =~ /[0-9]+/g;
    while (@one || @other) {
        my $order = (shift @one // 0) <=> (shift @other // 0);
        return $order if $order;
    }
    return 0;
}

=back

=cut

1;
