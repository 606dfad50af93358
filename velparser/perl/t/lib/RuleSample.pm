package RuleSample;

use strict;
use warnings;
use feature 'signatures';

use VEL::Model;

=head1 NAME

RuleSample - command data made from rules: an object of each type, as they want it

=head1 DESCRIPTION

One sample at a time is in the database, in the place that its rule names,
with every parameter that it may have; objects that values refer to are there
too, all of them named C<Sample>.

=cut

sub new ($class, $api) {
    my $database = $api->{database};
    my $model    = VEL::Model->of($database);
    my @types = grep { $database->havePath("/RULES/$_->{kind}:$_->{type}") } $model->rules->types;
    return bless { database => $database, model => $model, types => \@types }, $class;
}

# Those that a library describes, objects before singletons.
sub types ($self) { return @{ $self->{types} } }

# Every variant that one value of one case makes, and the plain one.
sub variants ($self, $type) {
    my %seen;
    return grep { !$seen{$_}++ } $type->plain_variant, map {
        my $case = $_;
        map {
            my $value = $_;
            $type->variant(sub ($name) { return $name eq $case->{parameter} ? $value : undef })
        } @{ $case->{values} }
    } @{ $type->{cases} };
}

# Loads an object of that variant, in place of the sample before; its path.
sub load ($self, $type, $variant) {
    $self->clear;
    my $path = $self->_make_place($type) . '/' . component($type);
    $self->_must($self->{database}->createObject($path, 0));
    my %switch = map { $_->{parameter} => $_->{values}[0] } @{ $variant->{cases} };
    $self->_fill($path, $type, %switch);
    return $path;
}

sub clear ($self) {
    $self->{database}->getChildObjectList('/', \my @objects);
    $self->_must($self->{database}->deleteObj("/$_")) for grep { $_ ne 'RULES' } @objects;
    return;
}

# What is in a path.
sub component ($type) { return $type->{kind} eq 'OBJECT' ? "$type->{type}:Sample" : $type->{type} }

sub type_named ($self, $word) {
    my ($type) = grep { $_->{type} eq $word } $self->types;
    return $type;
}

# The objects around one of this type, with the parameter set that allows it there.
sub _make_place ($self, $type) {
    my ($place) = sort keys %{ $type->{parents} // { '/' => 1 } };
    return '' if $place eq '/';
    my $outer = $self->type_named($place);
    my $path  = $self->_make_place($outer) . '/' . component($outer);
    $self->_must($self->{database}->createObject($path, 0));
    if (!$outer->plain_variant->{objects}{ $type->{type} }) {
        my ($case) = $outer->cases_with([ 'required_objects', 'optional_objects' ], $type->{type});
        $self->_must($self->{database}->createParam("$path/$case->{parameter}", $case->{values}[0]));
    }
    return $path;
}

# All that the object may have, switches of other cases left out unless they
# are required.
sub _fill ($self, $path, $type, %values) {
    my $database = $self->{database};
    $self->_must($database->createParam("$path/$_", $values{$_})) for sort keys %values;
    my $variant  = $self->{model}->variant_at($path, $type);
    my %required = map { $_ => 1 } @{ $variant->{required} };
    my %switch   = map { $_ => 1 } @{ $type->{switches} };
    for my $name (@{ $variant->{order} }) {
        next if exists $values{$name} || ($switch{$name} && !$required{$name});
        my $parameter = $type->parameter($variant, $name);
        $self->_make_named(@{ $parameter->{objects} // [] });
        $self->_must($database->createParam("$path/$name", good_value($parameter)));
    }
    for my $word (@{ $variant->{required_objects} }) {
        $self->_must($database->createObject("$path/" . component($self->type_named($word)), 0));
    }
    return $self->_fill_new_required($path, $type);
}

# A required switch may have let another case hold.
sub _fill_new_required ($self, $path, $type) {
    my $database = $self->{database};
    my $variant  = $self->{model}->variant_at($path, $type);
    for my $name (grep { !$database->havePath("$path/$_") } @{ $variant->{required} }) {
        my $parameter = $type->parameter($variant, $name);
        $self->_make_named(@{ $parameter->{objects} // [] });
        $self->_must($database->createParam("$path/$name", good_value($parameter)));
    }
    for my $word (@{ $variant->{required_objects} }) {
        my $child = "$path/" . component($self->type_named($word));
        $self->_must($database->createObject($child, 0)) if !$database->havePath($child);
    }
    return;
}

sub _make_named ($self, @words) {
    my $database = $self->{database};
    for my $word (grep { !$database->havePath("/$_:Sample") } @words) {
        $self->_must($database->createObject("/$word:Sample", 0));
    }
    return;
}

sub _must ($self, $error) {
    die "$error\n" if $error;
    return;
}

# A value that the rule takes.
sub good_value ($parameter) {
    return $parameter->{default} if defined $parameter->{default};
    return good_list($parameter, $parameter->{minimum} || 1);
}

sub good_list ($parameter, $count) {
    my $entry = $parameter->{objects} ? 'Sample' : $parameter->{values} ? $parameter->{values}[0]
        : good_entry($parameter);
    return join ', ', ($entry) x $count;
}

sub good_entry ($parameter) {
    return 'anything' if $parameter->{type} eq 'String';
    return 'Yes'      if $parameter->{type} eq 'Logical';
    my ($low, $high) = map { defined ? /^([^ ]+)/ : undef } @$parameter{qw(lower upper)};
    my $number = defined $low && defined $high ? ($low + $high) / 2
        : defined $low ? $low + 1 : defined $high ? $high - 1 : 2;
    return int $number if $parameter->{type} eq 'Integer';
    return with_unit($parameter, $number);
}

sub with_unit ($parameter, $number) {
    my $units = $parameter->{units} // '1';
    return $units eq '1' ? $number : "$number [$units]";
}

1;
