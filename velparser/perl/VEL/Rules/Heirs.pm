package VEL::Rules::Heirs;

use strict;
use warnings;
use feature 'signatures';

use VEL::Value qw(split_list);

=head1 NAME

VEL::Rules::Heirs - finds quickly what a rule and the rules that inherit from it list

=head1 DESCRIPTION

The heirs of a rule are the rules that inherit from it, directly or not. The rules are
numbered so that the heirs of a rule come directly after it: they have the numbers from its
own up to an end. For each name the numbers of the rules that list it are kept in order. So a
question about all heirs of a rule needs only one binary search.

=head1 METHODS

=over

=item C<< VEL::Rules::Heirs->new($blocks, $is_open) >>

For the blocks of the rules of objects (see L<VEL::Rules::Source>). C<$is_open>
returns true for a block whose lists are not completely known.

=cut

sub new ($class, $blocks, $is_open) {
    my $self = bless { first => {}, end => {}, listing => {}, open => [], order => [] }, $class;
    my %heirs;
    for my $block (@$blocks) {
        my $base = $block->{fields}{'Inherits'};
        push @{ $heirs{ defined $base ? "/RULES/" . $base =~ s/\s*:\s*/:/r : '' } }, $block;
    }
    $self->_number(\%heirs, $is_open);
    return $self;
}

# Without recursion, because chains of heirs may be long. A block is taken off the stack
# twice, before its heirs and after them.
sub _number ($self, $heirs, $is_open) {
    my @stack = reverse @{ $heirs->{''} // [] };
    while (my $next = pop @stack) {
        if (!ref $next) {
            $self->{end}{$next} = @{ $self->{order} };
            next;
        }
        my $path   = $next->{path};
        my $number = @{ $self->{order} };
        $self->{first}{$path} = $number;
        push @{ $self->{order} }, [ _stated_names($next) ];
        push @{ $self->{listing}{$_} }, $number for @{ $self->{order}[-1] };
        push @{ $self->{open} }, $number if $is_open->($next);
        push @stack, $path, reverse @{ $heirs->{$path} // [] };
    }
    return;
}

# The parameters that the lists of a rule and its cases name.
sub _stated_names ($block) {
    my %names;
    for my $part ($block, grep { $_->{kind} eq 'CASE' } @{ $block->{blocks} }) {
        $names{$_} = 1
            for map { split_list($part->{fields}{$_}) } 'Required Parameters', 'Optional Parameters';
    }
    my @sorted = sort keys %names;
    return @sorted;
}

=item C<has_heirs($block)>, C<has_open_heir($block)>

Whether any rule inherits this one; whether one of these is open.

=item C<lists($block, $name)>

Whether the rule or one of its heirs lists the parameter itself.

=item C<names($block)>

All names that the rule and its heirs list, some of them repeated.

=back

=cut

sub has_heirs ($self, $block) {
    my ($first, $end) = $self->_range($block);
    return $end - $first > 1;
}

sub has_open_heir ($self, $block) { return $self->_has_any($self->{open}, $block) }

sub lists ($self, $block, $name) { return $self->_has_any($self->{listing}{$name} // [], $block) }

sub names ($self, $block) {
    my ($first, $end) = $self->_range($block);
    return map { @$_ } @{ $self->{order} }[ $first .. $end - 1 ];
}

sub _range ($self, $block) {
    my $first = $self->{first}{ $block->{path} } // return (0, 0);
    return ($first, $self->{end}{ $block->{path} });
}

# Whether one of the ascending numbers belongs to the rule or an heir.
sub _has_any ($self, $numbers, $block) {
    my ($first, $end) = $self->_range($block);
    my ($low, $high) = (0, scalar @$numbers);
    while ($low < $high) {
        my $middle = int(($low + $high) / 2);
        if   ($numbers->[$middle] < $first) { $low  = $middle + 1 }
        else                                { $high = $middle }
    }
    return $low < @$numbers && $numbers->[$low] < $end ? 1 : 0;
}

1;
