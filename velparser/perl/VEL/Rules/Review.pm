package VEL::Rules::Review;

use strict;
use warnings;
use feature 'signatures';

use VEL::Suggest qw(nearest);
use VEL::Value qw(split_list logical);
use VEL::Version;

=head1 NAME

VEL::Rules::Review - whether rules that are sound one by one make sense together

=head1 DESCRIPTION

L<VEL::Rules::Source> looks at each field by itself. What this finds takes the
whole: a default that its own rule refuses, bounds that leave nothing, a case
that can never hold, a rule for a parameter that no list names, an upgrade to a
version later than that of the rules. Such a rule
harms nothing and stays in force; most often a name in it is misspelt. What is
already known to be at fault is passed over, lest one slip be told twice.

=head1 METHODS

=over

=item C<< VEL::Rules::Review->new($rules, $source) >>

For compiled L<VEL::Rules> and the L<VEL::Rules::Source> that they are made of.

=cut

sub new ($class, $rules, $source) {
    return bless { rules => $rules, source => $source, faults => [] }, $class;
}

=item C<faults>

A list of C<[path, sentence]>.

=cut

sub faults ($self) {
    my $blocks = $self->{source}->top->{blocks};
    my $heirs  = $self->_heirs($blocks);
    for my $block (@$blocks) {
        if ($block->{kind} eq 'PARAMETER') {
            $self->_review_values($block, $self->{rules}->general($block->{name}));
        }
        elsif ($block->{kind} eq 'UPGRADE') {
            $self->_review_upgrade($block);
        }
        else {
            my $type = $self->{rules}->type($block->{kind}, $block->{name});
            $self->_review_type($block, $type);
            $self->_review_names($block, $type, @{ $heirs->{"$block->{kind}:$block->{name}"} // [] });
        }
    }
    return @{ $self->{faults} };
}

=back

=cut

sub _fault ($self, $path, $sentence) {
    push @{ $self->{faults} }, [ $path, $sentence ];
    return;
}

# Data would be brought to a version that it does not state afterwards.
sub _review_upgrade ($self, $block) {
    my $version = $self->{rules}->version // return;
    $self->_fault($block->{path}, "is later than Language Version $version")
        if VEL::Version::compare($block->{name}, $version) > 0;
    return;
}

# For each rule, by kind and type, the types that inherit it, directly or not.
sub _heirs ($self, $blocks) {
    my %block = map { +"$_->{kind}:$_->{name}" => $_ } @$blocks;
    my %heirs;
    for my $block (@$blocks) {
        my ($at, %passed) = ($block);
        while ($at && !$passed{$at}++) {
            my $from = $at->{fields}{'Inherits'} // last;
            my $base = $from =~ s/\s*:\s*/:/r;
            push @{ $heirs{$base} }, $self->{rules}->type($block->{kind}, $block->{name});
            $at = $block{$base};
        }
    }
    return \%heirs;
}

# --- Values: the bounds and defaults of a parameter as it is in one place --------

sub _review_type ($self, $block, $type) {
    for my $inner (@{ $block->{blocks} }) {
        my ($case) = grep { $_->{label} eq $inner->{name} } @{ $type->{cases} };
        my @rules = $inner->{kind} eq 'CASE' ? @{ $inner->{blocks} } : $inner;
        my %variant = (cases => $inner->{kind} eq 'CASE' ? [$case] : [], parameters => {});
        for my $rule (@rules) {
            my $parameter = $type->parameter(\%variant, $rule->{name});
            $self->_review_values($rule, $parameter);
            $self->_review_numbers($rule, $parameter);
        }
    }
    return;
}

# A fault that comes of fields elsewhere stands at the rule as a whole.
sub _review_values ($self, $rule, $parameter) {
    return if !$self->{source}->is_sound($rule->{path});
    for my $fault ($parameter->faults) {
        my ($field, $sentence) = @$fault;
        $self->_fault(exists $rule->{fields}{$field} ? "$rule->{path}/$field" : $rule->{path}, $sentence);
    }
    return;
}

# A general rule may leave the type to others; what holds in an object may not.
sub _review_numbers ($self, $rule, $parameter) {
    return if $parameter->{type} =~ /^(?:Real|Integer)$/ || !$self->{source}->is_sound($rule->{path});
    $self->_fault("$rule->{path}/$_", "means something for numbers only; this is a $parameter->{type}")
        for grep { exists $rule->{fields}{$_} } 'Units', 'Lower Bound', 'Upper Bound';
    return;
}

# --- Names: what a rule of objects says of its parameters ------------------------

# A base may hold rules for what only its heirs list.
sub _review_names ($self, $block, $type, @heirs) {
    return if grep { $_->{free} || !$self->{source}->is_sound("/RULES/$_->{kind}:$_->{type}") } $type, @heirs;
    my %listed = map { $_ => 1 } map { $_->listed_parameters } $type, @heirs;
    for my $inner (@{ $block->{blocks} }) {
        $self->_review_case($inner, $type, \%listed) if $inner->{kind} eq 'CASE';
        $self->_review_listed($_, $type, \%listed)
            for $inner->{kind} eq 'CASE' ? @{ $inner->{blocks} } : $inner;
    }
    return;
}

sub _review_listed ($self, $rule, $type, $listed) {
    $self->_fault($rule->{path}, _not_listed($rule->{name}, $type, $listed)) if !$listed->{ $rule->{name} };
    return;
}

sub _not_listed ($name, $type, $listed) {
    my $near = nearest($name, sort keys %$listed);
    return qq(no list of $type->{type} names "$name") . (defined $near ? "; did you mean $near?" : '');
}

sub _review_case ($self, $case, $type, $listed) {
    my $switch = $case->{fields}{'If Parameter'};
    return $self->_fault("$case->{path}/If Parameter", _not_listed($switch, $type, $listed))
        if !$listed->{$switch};
    return if $type->{cased}{$switch};    # another case may change what it may be
    my $parameter = $type->parameter($type->plain_variant, $switch);
    for my $value (split_list($case->{fields}{'Is One Of'})) {
        my $fault = _value_fault($parameter, $value) // next;
        $self->_fault("$case->{path}/Is One Of", qq("$value" is no value of "$switch"$fault));
    }
    return;
}

# Why the parameter can never have the value, as the end of a sentence.
sub _value_fault ($parameter, $value) {
    return undef if $parameter->{objects};
    return defined logical($value) ? undef : ', which is Yes or No' if $parameter->{type} eq 'Logical';
    return undef if !$parameter->{values} || grep { $_ eq $value } @{ $parameter->{values} };
    my $near = nearest($value, @{ $parameter->{values} });
    return defined $near ? "; did you mean $near?" : '';
}

1;
