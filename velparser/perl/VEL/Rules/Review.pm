package VEL::Rules::Review;

use strict;
use warnings;
use feature 'signatures';

use VEL::Findings qw(compose named choice);
use VEL::Rules::Fields;
use VEL::Rules::Heirs;
use VEL::Rules::Places;
use VEL::Suggest qw(nearest);
use VEL::Value qw(split_list logical);
use VEL::Version;

=head1 NAME

VEL::Rules::Review - finds rules that are correct by themselves but contradict each other

=head1 DESCRIPTION

L<VEL::Rules::Source> checks each field by itself. This package finds contradictions: a
default that its own rule does not allow, bounds without a value between them, a case that
never applies, a rule for a parameter that no list contains, a type without a place, a
name that is both required and optional, an upgrade to a version later than that of the
rules. Usually a name is misspelt. Rules with known faults are skipped, so that one
mistake is reported once.

=head1 METHODS

=over

=item C<< VEL::Rules::Review->new($rules, $source) >>

For compiled L<VEL::Rules> and their L<VEL::Rules::Source>.

=cut

sub new ($class, $rules, $source) {
    return bless {
        rules  => $rules,
        source => $source,
        blocks => [ grep { $_->{kind} =~ /^(?:OBJECT|SINGLETON)$/ } @{ $source->top->{blocks} } ],
        faults => [],
        reported => {},  # by parameter: field and sentence
    }, $class;
}

=item C<faults>

A list of C<[path, sentence]>.

=cut

sub faults ($self) {
    $self->{heirs} = VEL::Rules::Heirs->new($self->{blocks}, sub ($block) { $self->_is_open($block) });
    $self->{places} = VEL::Rules::Places->new($self->{rules}, $self->{source}, $self->{heirs});
    my @blocks = map { [ $_, $self->_parameters_of($_) ] } @{ $self->{source}->top->{blocks} };
    for my $block (@blocks) {
        my (undef, @ruled) = @$block;
        $self->_note_own_faults(@$_) for @ruled;
    }
    for my $block (@blocks) {
        my ($rule, @ruled) = @$block;
        $self->_review_values(@$_) for @ruled;
        $self->_review_block($rule);
    }
    return @{ $self->{faults} };
}

=back

=cut

sub _fault ($self, $path, $sentence) {
    push @{ $self->{faults} }, [ $path, $sentence ];
    return;
}

sub _review_block ($self, $block) {
    return if $block->{kind} eq 'PARAMETER';
    return $self->_review_upgrade($block) if $block->{kind} eq 'UPGRADE';
    my $type = $self->{rules}->type($block->{kind}, $block->{name});
    $self->_review_names($block, $type);
    $self->_fault(@$_) for _twice($block), $self->_is_open($block) ? () : $self->{places}->faults($block, $type);
    return;
}

# The lists of such a rule are not completely known.
sub _is_open ($self, $block) {
    return 1 if !$self->{source}->is_sound($block->{path});
    return $self->{rules}->type($block->{kind}, $block->{name})->{free};
}

# After such an upgrade the data would not state the version that it has.
sub _review_upgrade ($self, $block) {
    my $version = $self->{rules}->version // return;
    $self->_fault($block->{path}, compose('later-upgrade', name => $block->{name}, version => $version))
        if VEL::Version::compare($block->{name}, $version) > 0;
    return;
}

# A name that one rule, or one case, both requires and allows.
sub _twice ($block) {
    my @faults;
    for my $part ($block, grep { $_->{kind} eq 'CASE' } @{ $block->{blocks} }) {
        for my $what ('Parameters', 'Objects') {
            my $optional = $part->{fields}{"Optional $what"} // next;
            my %required = map { $_ => 1 } split_list($part->{fields}{"Required $what"});
            push @faults, map { [ "$part->{path}/Optional $what", compose('named-twice', name => $_) ] }
                grep { $required{$_} } split_list($optional);
        }
    }
    return @faults;
}

# --- Values: the bounds and defaults of a parameter as it is in one place --------

# For each parameter rule in a block: the rule, the resulting parameter, and the type that
# contains it.
sub _parameters_of ($self, $block) {
    return if $block->{kind} eq 'UPGRADE';
    return [ $block, $self->{rules}->general($block->{name}), undef ] if $block->{kind} eq 'PARAMETER';
    my $type = $self->{rules}->type($block->{kind}, $block->{name});
    my @found;
    for my $inner (@{ $block->{blocks} }) {
        my @cases = $inner->{kind} eq 'CASE' ? _case_of($type, $inner) : ();
        my @rules = $inner->{kind} eq 'CASE' ? @{ $inner->{blocks} } : $inner;
        my %variant = (cases => \@cases, parameters => {});
        push @found, map { [ $_, $type->parameter(\%variant, $_->{name}), $type ] } @rules;
    }
    return @found;
}

sub _case_of ($type, $inner) { return grep { $_->{label} eq $inner->{name} } @{ $type->{cases} } }

# A fault is reported at the rule that states its field, or else once at the rule that
# causes it.
sub _review_values ($self, $rule, $parameter, $type) {
    return if !$self->{source}->is_sound($rule->{path});
    for my $fault ($parameter->faults) {
        my ($field, $sentence) = @$fault;
        if (exists $rule->{fields}{$field}) {
            $self->_fault("$rule->{path}/$field", $sentence);
        }
        elsif (!$self->{reported}{ $rule->{name} }{"$field $sentence"}++) {
            $self->_fault($rule->{path}, $sentence);
        }
    }
    $self->_review_fields($rule, $parameter) if $type;
    return;
}

sub _note_own_faults ($self, $rule, $parameter, $type) {
    return if !$self->{source}->is_sound($rule->{path});
    $self->{reported}{ $rule->{name} }{"$_->[0] $_->[1]"} = 1
        for grep { exists $rule->{fields}{ $_->[0] } } $parameter->faults;
    return;
}

my %ONLY_FOR;
push @{ $ONLY_FOR{ $_->{only_for} } }, $_->{name} for grep { $_->{only_for} } VEL::Rules::Fields::entries('PARAMETER');

# A general rule may leave the type to other rules; a rule inside an object may not.
# Several fields of the wrong kind have one cause, the type, and so give one fault.
sub _review_fields ($self, $rule, $parameter) {
    return if $parameter->{untyped};
    my $is    = $parameter->{type} . ($parameter->{list} ? ' List' : '');
    my @wrong = $parameter->{type} =~ /^(?:Real|Integer)$/ ? () : 'numbers';
    push @wrong, 'lists' if !$parameter->{list};
    for my $what (@wrong) {
        my @fields = grep { exists $rule->{fields}{$_} } @{ $ONLY_FOR{$what} } or next;
        $self->_fault("$rule->{path}/$fields[0]", compose('useless-field', what => $what, type => $is, named(@fields)));
    }
    return;
}

# --- Names: what an object rule says about its parameters ------------------------

# A rule may describe parameters that only its heirs list.
sub _review_names ($self, $block, $type) {
    my $heirs = $self->{heirs};
    return if $self->_is_open($block) || $heirs->has_open_heir($block);
    my %listed = map { $_ => 1 } $type->listed_parameters;
    my $lists  = { type => $type->{type}, has => sub ($name) { $listed{$name} || $heirs->lists($block, $name) } };
    $lists->{all} = sub { [ sort keys %{ +{ %listed, map { $_ => 1 } $heirs->names($block) } } ] };
    for my $inner (@{ $block->{blocks} }) {
        $self->_review_case($inner, $type, $lists) if $inner->{kind} eq 'CASE';
        for my $rule ($inner->{kind} eq 'CASE' ? @{ $inner->{blocks} } : $inner) {
            $self->_fault($rule->{path}, _not_listed($rule->{name}, $lists)) if !$lists->{has}->($rule->{name});
        }
    }
    return;
}

sub _not_listed ($name, $lists) {
    my $hints = $lists->{hints} //= VEL::Suggest->new($lists->{all}->());
    my $near  = $hints->find($name);
    return compose('unlisted-parameter', type => $lists->{type}, name => $name, near => $near);
}

sub _review_case ($self, $inner, $type, $lists) {
    my ($case)  = _case_of($type, $inner) or return;
    my $switch  = $case->{parameter};
    my $fields  = $inner->{fields};
    return defined $fields->{'If Parameter'}
        ? $self->_fault("$inner->{path}/If Parameter", _not_listed($switch, $lists)) : ()
        if !$lists->{has}->($switch);
    return if $type->{cased}{$switch};    # another case may change what it may be
    my $parameter = $type->parameter($type->plain_variant, $switch);
    for my $value (split_list($fields->{'Is One Of'})) {
        my $fault = _value_fault($parameter, $value) // next;
        $self->_fault("$inner->{path}/Is One Of", $fault);
    }
    return;
}

# Why the parameter can never have this value.
sub _value_fault ($parameter, $value) {
    return undef if $parameter->{objects};
    my %places = (value => $value, parameter => $parameter->{name});
    return defined logical($value) ? undef : compose('impossible-logical', %places) if $parameter->{type} eq 'Logical';
    return undef if !$parameter->{values} || grep { $_ eq $value } @{ $parameter->{values} };
    return compose('impossible-case', %places, choice(nearest($value, @{ $parameter->{values} }), @{ $parameter->{values} }));
}

1;
