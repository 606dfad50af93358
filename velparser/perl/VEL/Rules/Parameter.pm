package VEL::Rules::Parameter;

use strict;
use warnings;
use feature 'signatures';

use List::Util qw(max min);

use VEL::Expression;
use VEL::Findings qw(problem sentence compose counted choice);
use VEL::Rules::Fields;
use VEL::Suggest;
use VEL::Units;
use VEL::Value qw(split_list logical is_integer quantity $NUMBER);

=head1 NAME

VEL::Rules::Parameter - what the rules say about one parameter in one place

=head1 DESCRIPTION

L<VEL::Rules::Type> makes it from all rules that apply to the parameter there.
The elements may be read directly: those of the fields of the rule (see
L<VEL::Rules::Fields>; C<type> is String, Integer, Real or Logical), and

    name         of the parameter
    ruled        1 if any rule describes it
    untyped      1 if its type is faulty, so that it is not known
    list         1 if the value is a list
    unitless     1 if its unit is faulty: units and bounds are not checked
    anything     1 if no value can be wrong

=cut

=head1 METHODS

=over

=item C<< VEL::Rules::Parameter->new($name, @rules) >>

Merges the fields of the rules. A later rule overrides an earlier one field by field.
Undefined rules are skipped. A bound, count or default that contradicts other fields is a
fault (see C<faults>) and is left out.

=cut

sub new ($class, $name, @rules) {
    my %field = map { %$_ } grep { defined } @rules;
    my $self  = bless VEL::Rules::Fields::compile('PARAMETER', \%field), $class;
    my $list  = $self->{type} =~ s/ List\z// ? 1 : 0;
    $self->{name}     = $name;
    $self->{ruled}    = (grep { defined } @rules) ? 1 : 0;
    $self->{list}     = $list;
    $self->{untyped}  = exists $field{'Type'}  && !defined $field{'Type'}  ? 1 : 0;
    $self->{unitless} = exists $field{'Units'} && !defined $field{'Units'} ? 1 : 0;
    $self->{allowed}  = { map { $_ => 1 } @{ $self->{values} } } if $self->{values};
    $self->{anything} = $self->{type} eq 'String' && !$list && !$self->{values} && !$self->{objects} ? 1 : 0;
    $self->_drop_faulty;
    return $self;
}

sub _drop_faulty ($self) {
    return if !defined($self->{lower} // $self->{upper} // $self->{maximum} // $self->{default});
    my @faults = $self->_find_faults or return;
    $self->{ VEL::Rules::Fields::by_name('PARAMETER')->{ $_->[0] }{element} } = undef for @faults;
    delete @$self{qw(lower_value upper_value)};
    $self->{faults} = \@faults;
    return;
}

=item C<faults>

The faults of the rules: a list of C<[field, sentence]> about bounds, counts and defaults
that contradict other fields.

=cut

sub faults ($self) { return @{ $self->{faults} // [] } }

sub _find_faults ($self) {
    return if VEL::Units::load();
    my @faults;
    for my $bound ($self->{unitless} ? () : qw(lower upper)) {
        my $text = $self->{$bound} // next;
        my (undef, $unit) = quantity($text);
        my $units = $self->{units} // '1';
        next if defined $unit ? VEL::Units::is_convertible($unit, $units) : $self->_may_be_bare;
        push @faults, [ ucfirst "$bound Bound",
            compose(defined $unit ? 'bound-of-other-quantity' : 'bound-without-unit', value => $text, unit => $unit, units => $units) ];
    }
    push @faults, [ 'Upper Bound', compose('empty-range', upper => $self->{upper}, lower => $self->{lower}) ]
        if !@faults && $self->_is_empty_range;
    push @faults,
        [ 'Maximum Entries', compose('empty-count', maximum => $self->{maximum}, minimum => $self->{minimum}) ]
        if defined $self->{minimum} && defined $self->{maximum} && $self->{minimum} > $self->{maximum};
    return (@faults, map { [ 'Default', sentence($_) ] } $self->_default_problems(!@faults));
}

# Whether a number needs no unit: the rule has no unit, or a dimensionless one.
sub _may_be_bare ($self) {
    my $units = $self->{units} // '1';
    return $self->{bare} //= $units eq '1' || VEL::Units::is_dimensionless($units) ? 1 : 0;
}

sub _is_empty_range ($self) {
    return 0 if !defined $self->{lower} || !defined $self->{upper} || $self->{unitless};
    my $units = $self->{units} // '1';
    my ($lower, $upper) = map { _measure(quantity($_), $units) // return 0 } @$self{qw(lower upper)};
    my $order = _compare($lower, $upper);
    return $order > 0 || ($order == 0 && $self->{exclusive}) ? 1 : 0;
}

# Names of objects and expressions are in the data, which is not loaded yet.
sub _default_problems ($self, $bounds) {
    return if !defined $self->{default} || $self->{objects} || $self->{untyped};
    return $self->problems($self->{default}, { units => 1, bounds => $bounds, expressions => sub { {} } });
}

=item C<problems($text, $asker)>

The problems of a value (see L<VEL::Findings>). A problem has the name of an C<object> if
the value is probably a misspelt form of it. The asker is a hash of

    units, bounds    whether these are checked
    objects          sub (types): the names of the existing objects of these types
                     (see object_names of VEL::Model)
    expressions      sub (): hash of the names that expressions may use
    used             array that receives the names of the objects and expressions that
                     the value uses

=cut

sub problems ($self, $text, $asker) {
    return if $self->{anything};
    return $self->_entry_problems($text, $asker) if !$self->{list};
    my @entries = split_list($text);
    my @count   = $self->_count_problems(scalar @entries);
    my @wrong   = map { $self->_entry_problems($_, $asker) } @entries;
    return (@count, @wrong) if !@wrong || $text !~ /;/;
    # With the right separator, these would not be the entries.
    $wrong[0]{within} = 'separate-entries';
    return @wrong;
}

sub _count_problems ($self, $count) {
    return problem('too-few-entries', counted($self->{minimum}), count => $count)
        if defined $self->{minimum} && $count < $self->{minimum};
    return problem('too-many-entries', counted($self->{maximum}), count => $count)
        if defined $self->{maximum} && $count > $self->{maximum};
    return;
}

sub _entry_problems ($self, $text, $asker) {
    return if $self->{allowed} && $self->{allowed}{$text};
    return $self->_object_problems($text, $asker) if $self->{objects};
    return problem('value-not-allowed', value => $text, choice($self->_near_value($text), @{ $self->{values} })) if $self->{values};
    return if $self->{type} eq 'String';
    return $self->_logical_problems($text) if $self->{type} eq 'Logical';
    return $self->_number_problems($text, $asker);
}

sub _near_value ($self, $text) {
    my $hints = $self->{hints} //= VEL::Suggest->new($self->{values});
    return $hints->find($text);
}

sub _object_problems ($self, $text, $asker) {
    my $names = $asker->{objects}->($self->{objects});
    if ($names->{set}{$text}) {
        push @{ $asker->{used} }, $text if $asker->{used};
        return;
    }
    my @known   = (@{ $self->{values} // [] }, @{ $names->{list} }[ 0 .. min($#{ $names->{list} }, 12) ]);
    my $value   = $self->{values} ? $self->_near_value($text) : undef;
    my $object  = defined $value ? undef : $names->{hints}->find($text);
    my $nearest = $value // $object;
    my $problem = problem(@known ? 'no-such-object' : 'no-object-at-all', value => $text, types => $self->{objects},
        near => $nearest, @known > 1 || !defined $nearest ? choice(undef, @known) : ());
    $problem->{object} = $object;
    return $problem;
}

sub _logical_problems ($self, $text) {
    return if defined logical($text);
    return problem('no-logical', value => $text);
}

sub _number_problems ($self, $text, $asker) {
    my ($number, $unit) = quantity($text);
    return $self->_text_problems($text, $asker) if !defined $number;
    return problem('no-integer', value => $text)
        if $self->{type} eq 'Integer' && !is_integer($number);
    if ($asker->{units}) {
        my @problems = $self->_unit_problems($text, $number, $unit);
        return @problems if @problems;
    }
    return $asker->{bounds} ? $self->_bound_problems($text, $number, $unit) : ();
}

# A text that is not a plain number: an expression, or other text.
sub _text_problems ($self, $text, $asker) {
    return problem('no-integer', value => $text) if $self->{type} eq 'Integer';
    my $known = $asker->{expressions}->();
    if ($self->{expressions} && VEL::Expression::is_name($text) && $known->{$text}) {
        push @{ $asker->{used} }, $text if $asker->{used};
        return;
    }
    return $self->_no_number($text)
        if !VEL::Expression::looks_like_one($text) || _lacks_brackets($text);
    return problem('expression', value => $text) if !$self->{expressions};
    return VEL::Expression::fault($text, $known, $asker->{used}) // ();
}

# Proposes what the user probably meant.
sub _no_number ($self, $text) {
    return problem('decimal-comma', value => $text) if $text =~ /^[+-]?[0-9]+,[0-9]+\s*(?:\[|\z)/;
    return problem('no-number', value => $text) if $self->_may_be_bare;
    my ($number, $unit) = _lacks_brackets($text);
    return problem('no-brackets', value => $text, number => $number, unit => $unit) if defined $unit;
    return problem('no-number', value => $text, units => $self->{units});
}

# Number and unit of a text such as "3 m s^-1".
sub _lacks_brackets ($text) {
    my ($number, $unit) = $text =~ /^($NUMBER)\s*([^\s\[\]].*)\z/ or return;
    return VEL::Units::exists_unit($unit) ? ($number, $unit) : ();
}

sub _unit_problems ($self, $text, $number, $unit) {
    my $units = $self->{units};
    return if $self->{unitless};
    return problem('open-bracket', value => $text) if ref $unit;
    if (!defined $units) {
        return if !defined $unit;
        return problem('needless-unit', unit => $unit, number => $number);
    }
    if (!defined $unit) {
        return if $self->_may_be_bare;
        return problem('missing-unit', number => $number, units => $units);
    }
    return if VEL::Units::is_convertible($unit, $units);
    my $key = VEL::Units::exists_unit($unit) ? 'other-quantity' : 'unknown-unit';
    return problem($key, unit => $unit, units => $units);
}

sub _bound_problems ($self, $text, $number, $unit) {
    return if !defined $self->{lower} && !defined $self->{upper};
    return if ref $unit || $self->{unitless};
    my $units = $self->{units} // '1';
    my $value = _measure($number, $unit, $units) // return;
    for my $side ([ lower => 'below-bound', 'on-lower-bound', -1 ], [ upper => 'above-bound', 'on-upper-bound', 1 ]) {
        my ($name, $beyond, $on, $sign) = @$side;
        next if !defined $self->{$name};
        my $bound = $self->{"${name}_value"} //= _measure(quantity($self->{$name}), $units) // next;
        my $side_of_bound = _compare($value, $bound);
        return problem($beyond, value => $text, bound => $self->{$name}) if $side_of_bound == $sign;
        return problem($on, value => $text, bound => $self->{$name}) if $self->{exclusive} && $side_of_bound == 0;
    }
    return;
}

# Numbers are equal if they differ only by the rounding of a unit conversion.
sub _compare ($one, $other) {
    my ($value, $bound) = ($one->[0], $other->[0]);
    return $value <=> $bound if abs($value) == 9**9**9;
    my $size = max(abs $value, abs $bound, $one->[1], $other->[1]);
    return abs($value - $bound) <= 1e-12 * $size ? 0 : $value <=> $bound;
}

# The number in those units, and the distance between the zeros of the two units: 32 [F] is
# near 0 [C] as the difference of larger numbers.
sub _measure ($number, $unit, $units) {
    return [ 0 + $number, 0 ] if !defined $unit || $unit eq $units;
    my $value = VEL::Units::convert($number, $unit, $units) // return undef;
    return [ $value, abs VEL::Units::convert(0, $unit, $units) ];
}

=back

=cut

1;
