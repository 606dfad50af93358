package VEL::Rules::Places;

use strict;
use warnings;
use feature 'signatures';

use VEL::Findings qw(compose);

=head1 NAME

VEL::Rules::Places - checks that each type is allowed somewhere, and where it is required

=head1 DESCRIPTION

Both rules must allow an object in a parent: a list of the parent contains the type, and the
C<Parents> of the type contain the parent.

=head1 METHODS

=over

=item C<< VEL::Rules::Places->new($rules, $source, $heirs) >>

For compiled L<VEL::Rules>, their L<VEL::Rules::Source>, and the
L<VEL::Rules::Heirs> of its blocks.

=cut

sub new ($class, $rules, $source, $heirs) {
    my $self = bless { source => $source, heirs => $heirs, listed => {}, parents => {}, anywhere => {}, faulty => {} },
        $class;
    for my $type ($rules->types) {
        my $word = $type->{type};
        # If an object and a singleton have the same type, the places of both count.
        $self->{parents}{$word}{$_} = 1 for keys %{ $type->{parents} // {} };
        $self->{faulty}{$word}   = 1 if !$source->is_sound("/RULES/$type->{kind}:$word");
        $self->{anywhere}{$word} = 1 if !$type->{parents};
        for my $part ($type, @{ $type->{cases} }) {
            $self->{listed}{$_}{$word} = 1 for map { @{ $part->{$_} } } qw(required_objects optional_objects);
        }
    }
    return $self;
}

=item C<faults($block, $type)>

The faults of the places of a type: a list of C<[path, sentence]>.

=back

=cut

sub faults ($self, $block, $type) {
    return ($self->_nowhere($block, $type), map { $self->_contradictions($block, $type, $_) } $type,
        @{ $type->{cases} });
}

# If a rule exists only so that others inherit it, no list needs to name it.
sub _nowhere ($self, $block, $type) {
    my $parents = $type->{parents} // return;
    return if $parents->{'/'} || $self->{heirs}->has_heirs($block);
    my $listed = $self->{listed}{ $type->{type} } // {};
    return if grep { $listed->{$_} || $self->_is_faulty($_) } keys %$parents;
    my $path = exists $block->{fields}{'Parents'} ? "$block->{path}/Parents" : $block->{path};
    return [ $path, compose('unlisted-type', parents => [ sort keys %$parents ], type => $type->{type}) ];
}

# The places in a faulty rule are not reliable.
sub _is_faulty ($self, $word) { return $self->{faulty}{$word} || $self->{source}->is_misspelt($word) }

# Types that a rule or one of its cases requires although they are not allowed there.
sub _contradictions ($self, $block, $type, $part) {
    my ($stated) = $part == $type ? $block : grep { $_->{kind} eq 'CASE' && $_->{name} eq $part->{label} } @{ $block->{blocks} };
    $stated //= $block;
    my $path = exists $stated->{fields}{'Required Objects'} ? "$stated->{path}/Required Objects" : $stated->{path};
    my @faults;
    for my $word (@{ $part->{required_objects} }) {
        my $parents = $self->{parents}{$word} // {};
        next if $parents->{ $type->{type} } || $self->{anywhere}{$word} || $self->_is_faulty($word);
        push @faults, [ $path, compose('misplaced-object', type => $word, parent => $type->{type}) ];
    }
    return @faults;
}

1;
