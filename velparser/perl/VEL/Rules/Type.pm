package VEL::Rules::Type;

use strict;
use warnings;
use feature 'signatures';

use VEL::Rules::Fields;
use VEL::Rules::Parameter;
use VEL::Value qw(logical);

=head1 NAME

VEL::Rules::Type - what the rules say about one type of object, with inherited fields

=head1 DESCRIPTION

The elements may be read directly: those of the fields of the rule (see
L<VEL::Rules::Fields>), and

    kind, type      OBJECT or SINGLETON, and the type word
    cases           its cases in rule order: a hash each, with its label and the elements
                    of its fields
    switches        the parameters that decide whether the cases apply
    cased           hash of the parameters for which some case has a rule

What is allowed in an object of the type depends on the cases that apply to it. All
objects with the same cases share one I<variant>, a hash:

    order             names of its parameters: required, optional, by case
    allowed           hash of these
    required          names of the required parameters
    required_objects  required types
    objects           hash of the types that its lists allow
    cases             the cases that apply

=cut

# The lists that a rule and its cases have.
my @LISTS = qw(required optional required_objects optional_objects);

=head1 METHODS

=over

=item C<< VEL::Rules::Type->new($kind, $type, $rule, $general) >>

C<$rule> is a hash of C<fields>, C<parameters> (name => list of field sets) and
C<cases> (a list of such hashes with C<label>). C<$general> has the rules that apply to
parameters everywhere, by name.

=cut

sub new ($class, $kind, $type, $rule, $general) {
    my $self = bless VEL::Rules::Fields::compile($kind, $rule->{fields}), $class;
    @$self{qw(kind type own general variants)} = ($kind, $type, $rule->{parameters}, $general, {});
    $self->{cases} = [ map { _case($_) } @{ $rule->{cases} } ];
    $self->_index_switches;
    return $self;
}

sub _case ($rule) {
    my $case = VEL::Rules::Fields::compile('CASE', $rule->{fields});
    @$case{qw(label own)} = @$rule{qw(label parameters)};
    return $case;
}

# For each switch and value the numbers of the cases that apply, so that finding the cases
# of an object takes one look-up for each switch.
sub _index_switches ($self) {
    my (@switches, %cases_of, %cased);
    for my $number (0 .. $#{ $self->{cases} }) {
        my $case   = $self->{cases}[$number];
        my $switch = $case->{parameter};
        push @switches, $switch if !$cases_of{$switch};
        push @{ $cases_of{$switch}{ $self->_switch_value($switch, $_) } }, $number
            for @{ $case->{values} };
        $cased{$_} = 1 for keys %{ $case->{own} };
    }
    @$self{qw(switches cases_of cased)} = (\@switches, \%cases_of, \%cased);
    return;
}

# Logicals are compared by their meaning, all other values exactly.
sub _switch_value ($self, $switch, $text) {
    $self->{logical}{$switch} //= $self->_merge($switch)->{type} eq 'Logical' ? 1 : 0;
    return $text if !$self->{logical}{$switch};
    return logical($text) // $text;
}

=item C<plain_variant>

The variant to which no case applies.

=cut

sub plain_variant ($self) { return $self->{plain} //= $self->_variant('') }

=item C<variant($value_of)>

The variant for an object. C<$value_of> is a sub that gives the text of a parameter by
name, or C<undef>.

=cut

sub variant ($self, $value_of) {
    return $self->{plain} // $self->plain_variant if !@{ $self->{switches} };
    my @numbers;
    for my $switch (@{ $self->{switches} }) {
        my $value = $value_of->($switch) // next;
        my $cases = $self->{cases_of}{$switch}{ $self->_switch_value($switch, $value) } // next;
        push @numbers, @$cases;
    }
    return $self->plain_variant if !@numbers;
    my $signature = @numbers > 1 ? join ',', sort { $a <=> $b } @numbers : $numbers[0];
    return $self->{variants}{$signature} //= $self->_variant($signature);
}

sub _variant ($self, $signature) {
    my @cases = @{ $self->{cases} }[ split /,/, $signature ];
    my @parts = ($self, @cases);
    my (%allowed, %objects);
    my @order = grep { !$allowed{$_}++ } map { @{ $_->{required} }, @{ $_->{optional} } } @parts;
    $objects{$_} = 1 for map { @{ $_->{required_objects} }, @{ $_->{optional_objects} } } @parts;
    return {
        order            => \@order,
        allowed          => \%allowed,
        required         => _once(map { @{ $_->{required} } } @parts),
        required_objects => _once(map { @{ $_->{required_objects} } } @parts),
        objects          => \%objects,
        cases            => \@cases,
        parameters       => {},
    };
}

sub _once (@names) {
    my %seen;
    return [ grep { !$seen{$_}++ } @names ];
}

=item C<parameter($variant, $name)>

The L<VEL::Rules::Parameter> for a parameter of an object, in its lists or not. It is kept
only if a rule describes it, because data may have many other names.

=item C<is_ruled($name)>

Whether any rule describes the parameter. If not, every value is correct.

=cut

sub parameter ($self, $variant, $name) {
    return $self->_merge($name) if !$self->is_ruled($name);
    return $variant->{parameters}{$name} //= $self->_merge($name, @{ $variant->{cases} });
}

sub is_ruled ($self, $name) {
    return exists $self->{general}{$name} || exists $self->{own}{$name} || exists $self->{cased}{$name};
}

sub _merge ($self, $name, @cases) {
    return VEL::Rules::Parameter->new($name, $self->{general}{$name},
        map { @{ $_->{own}{$name} // [] } } $self, @cases);
}

=item C<listed_parameters>

The names in its lists and in those of its cases. A name may occur more than once.

=cut

sub listed_parameters ($self) {
    return map { @{ $_->{required} }, @{ $_->{optional} } } $self, @{ $self->{cases} };
}

=item C<cases_with($list, $name)>

The cases, whether they apply or not, whose list (C<required>, C<optional>,
C<required_objects> or C<optional_objects>, or several) contains C<$name>.

=cut

sub cases_with ($self, $lists, $name) {
    my $naming = $self->{naming} //= $self->_index_names;
    my @numbers = map { @{ $naming->{$_}{$name} // [] } } @$lists or return;
    my %seen;
    return @{ $self->{cases} }[ grep { !$seen{$_}++ } sort { $a <=> $b } @numbers ];
}

# For each list and name the numbers of the cases. There may be many of each.
sub _index_names ($self) {
    my %naming;
    for my $number (0 .. $#{ $self->{cases} }) {
        my $case = $self->{cases}[$number];
        for my $list (@LISTS) {
            push @{ $naming{$list}{$_} }, $number for @{ $case->{$list} };
        }
    }
    return \%naming;
}

=back

=cut

1;
