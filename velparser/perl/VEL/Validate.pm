package VEL::Validate;

use strict;
use warnings;
use feature 'signatures';

use Scalar::Util qw(weaken);

use VEL::Findings qw(problem finding compose counted);
use VEL::Model;
use VEL::Path qw(split_path split_component name_at);
use VEL::Record qw(finding_lines);
use VEL::Suggest qw(nearest);
use VEL::Units;
use VEL::Version;

=head1 NAME

VEL::Validate - checks command data with the rules

=head1 SYNOPSIS

    my $validator = VEL::Validate->new($database);
    my $findings  = $validator->validateObject('/FLOW/DOMAIN:Duct');
    print "$findings\n" if $findings;

=head1 DESCRIPTION

A finding is a record (see L<VEL::Record>). As text it is one line: path, colon, space,
sentence, and an identifier in brackets. F<docs/findings.md> explains every identifier.

An object without findings is marked valid, and so are its parameters. An object with
findings is not marked, so that they are reported again until they are fixed. If something
that a mark depends on is removed (a required parameter, an object that others name), the
mark is removed.

One mistake gives one finding. If the value of a parameter is wrong, or the parameter is
missing, nothing is reported about items that depend on it through a case. If a required
name is misspelt, only the misspelt name is reported.

=head1 METHODS

=over

=item C<< VEL::Validate->new($database) >>

A validator for a L<VEL::Parser::Lite> object. The checks of units and bounds are off.

=cut

sub new ($class, $database) {
    my $self = bless {
        database => $database,
        model    => VEL::Model->of($database),
        units    => 0,
        bounds   => 0,
        marked   => 0,     # whether anything has been marked valid
        users    => {},    # name of an object or expression => paths of objects that use it
        under    => { path => '/', known => 1 },
    }, $class;
    $self->{compiled} = $self->{model}->compiled;
    my $validator = $self;
    weaken($validator);
    $self->{listener} = sub { $validator->_gone(@_) if $validator };
    $self->{model}->on_change($self->{listener});
    return $self;
}

=item C<validateObject($path)>

Checks one object (or C</>): its place, its own parameters, and whether anything is
missing. It does not check the child objects. Returns the findings as text, C<undef>
if there are none.

=item C<validateObjectRecords($path, $findings)>

The same, but fills the array with the findings.

=cut

sub validateObject ($self, $path) {
    my @findings = $self->_findings_at($path) or return undef;
    return finding_lines(@findings);
}

sub validateObjectRecords ($self, $path, $findings) {
    @$findings = $self->_findings_at($path);
    return undef;
}

sub _findings_at ($self, $path) {
    $self->_notice_new_rules;
    $path = $self->{model}->full_path($path);
    return $self->_no_object($path) if $path ne '/' && !$self->{database}->isObject($path);
    $self->{database}->getChildParamList($path, \my @names);
    @$self{qw(used doubts meant)} = ([], {}, {});
    my @findings = $self->_object_findings($path, \@names);
    if (@findings) {
        $self->{database}->setValid($path, 0) if $self->{database}->isValid($path) & 1;
        return @findings;
    }
    $self->_mark($path, \@names);
    return;
}

=item C<validateParam($path)>

Checks the value of one parameter. Returns the findings as text, C<undef> if there are
none.

=item C<validateParamRecords($path, $findings)>

The same, but fills the array with the findings.

=cut

sub validateParam ($self, $path) {
    my @findings = $self->_findings_of_parameter($path) or return undef;
    return finding_lines(@findings);
}

sub validateParamRecords ($self, $path, $findings) {
    @$findings = $self->_findings_of_parameter($path);
    return undef;
}

sub _findings_of_parameter ($self, $path) {
    $self->_notice_new_rules;
    $path = $self->{model}->full_path($path);
    my $value;
    my $error = $self->{database}->getStringValue($path, \$value);
    return finding($path, problem('no-parameter-here'))
        if $error || $self->{database}->isObject($path);
    my ($owner, $name) = split_path($path);
    @$self{qw(used doubts meant)} = ([], {}, {});
    my @findings = $self->_parameter_findings($owner, $name, $value // '');
    $self->_mark_parameter($path) if !@findings;
    return @findings;
}

=item C<setUnitsChecking($on)>, C<setBoundsChecking($on)>

Switch these checks on (1) or off (0). Switching one on removes all marks. If the unit
system cannot be loaded, the checks stay off and the text says why.

=cut

sub setUnitsChecking  ($self, $on) { return $self->_switch('units',  $on) }
sub setBoundsChecking ($self, $on) { return $self->_switch('bounds', $on) }

=back

=cut

sub _switch ($self, $check, $on) {
    $on = $on ? 1 : 0;
    if ($on) {
        my $error = VEL::Units::load();
        return $error if $error;
    }
    $self->_forget_marks if $on && !$self->{$check};
    $self->{$check} = $on;
    return undef;
}

# --- Findings ---------------------------------------------------------------

sub _object_findings ($self, $path, $names) {
    my $model = $self->{model};
    return $self->_rules_findings if $path eq '/RULES';
    return if $path =~ m{^/RULES/};
    return ((map { $self->_parameter_findings('/', $_, '') } @$names), $self->_rules_findings)
        if $path eq '/';
    return if $model->rules->is_empty;
    my ($parent, $component) = split_path($path);
    return if !$self->_is_known_chain($parent);
    my $type = $model->type_of($path);
    return $self->_unknown_object($path, $parent, $component) if !$type;

    my $variant = $model->variant_at($path, $type);
    my @findings = $self->_place_findings($path, $parent, $type);
    for my $name (@$names) {
        next if ($type->{free} || $variant->{allowed}{$name}) && !$type->is_ruled($name);
        my $value;
        $self->{database}->getStringValue("$path/$name", \$value);
        push @findings, $self->_value_findings($path, $name, $value // '', $type, $variant);
    }
    push @findings, $self->_missing_findings($path, $type, $variant, $names);
    push @findings, $self->_version_findings($path) if $path eq '/LANGUAGE';
    $self->_recheck_children($path, $variant) if @{ $type->{cases} };
    return @findings;
}

# Reported with the top level, because the walk of the program skips /RULES.
sub _rules_findings ($self) {
    return if !$self->{model}->has_rules_in_data;
    return finding('/RULES', problem('rules-in-data'));
}

sub _no_object ($self, $path) {
    return finding($path, problem($self->{database}->havePath($path) ? 'no-object' : 'no-object-here'));
}

# Nothing is reported below an object of unknown type. The last answer is kept: in a walk of
# the tree it is that of the parent.
sub _is_known_chain ($self, $path) {
    my $last = $self->{under};
    my $known = 1;
    for (my $at = $path; $at ne '/'; ($at) = split_path($at)) {
        if ($at eq $last->{path}) {
            $known = $last->{known};
            last;
        }
        if (!$self->{model}->type_of($at)) {
            $known = 0;
            last;
        }
    }
    $self->{under} = { path => $path, known => $known };
    return $known;
}

sub _unknown_object ($self, $path, $parent, $component) {
    my $rules = $self->{model}->rules;
    my ($word, $name) = split_component($component);
    return finding($path, problem(defined $name ? 'takes-no-name' : 'needs-name', type => $word))
        if $rules->type(defined $name ? 'SINGLETON' : 'OBJECT', $word);
    my $outer = $parent eq '/' ? undef : $self->{model}->type_of($parent);
    my $near  = $self->_meant_type($word, $outer ? $self->{model}->variant_at($parent, $outer) : undef);
    return finding($path, problem('unknown-object', type => $word, near => $near));
}

# The known type nearest to a misspelt one: if possible, one that the parent, an object of
# that variant, may contain.
sub _meant_type ($self, $word, $outer) {
    my @known = sort map { $_->{type} } $self->{model}->rules->types;
    unshift @known, sort keys %{ $outer->{objects} } if $outer;
    return nearest($word, @known);
}

sub _place_findings ($self, $path, $parent, $type) {
    my ($word, $parents) = ($type->{type}, $type->{parents});
    if ($parents) {
        my $outer = $parent eq '/' ? undef : $self->{model}->type_of($parent);
        my $place = $outer ? $outer->{type} : '/';
        return finding($path, problem('wrong-parent', type => $word, place => VEL::Findings::place_name($place),
                places => [ map { VEL::Findings::target_name($_) } sort keys %$parents ]))
            if !$parents->{$place};
        return $self->_not_now($path, $parent, $outer, $word)
            if $outer && !$self->{model}->variant_at($parent, $outer)->{objects}{$word};
    }
    return defined $type->{maximum} ? $self->_count_findings($path, $type) : ();
}

sub _not_now ($self, $path, $parent, $outer, $word) {
    my @cases = $outer->cases_with([ 'required_objects', 'optional_objects' ], $word);
    return if $self->_is_doubtful($parent, $outer, @cases);
    my $problem = problem('object-not-allowed', type => $word, parent => $outer->{type}, conditions => _conditions(@cases));
    return finding($path, $problem, $self->_switches($parent, @cases));
}

# Whether one of these cases depends on a parameter that has a wrong value or is missing.
# That one mistake is the cause of everything that depends on it.
sub _is_doubtful ($self, $path, $type, @cases) {
    my $doubts = $self->{doubts}{$path} //= {};
    return scalar grep { $doubts->{$_} //= $self->_is_doubtful_switch($path, $type, $_) }
        map { $_->{parameter} } @cases;
}

sub _is_doubtful_switch ($self, $path, $type, $name) {
    my $variant = $self->{model}->variant_at($path, $type);
    my $value;
    $self->{database}->getStringValue("$path/$name", \$value);
    if (defined $value) {
        local $self->{used} = [];
        return $type->parameter($variant, $name)->problems($value, $self->_asker) ? 1 : 0;
    }
    return 1 if grep { $_ eq $name } @{ $variant->{required} };
    return 1 if $self->_is_misspelt($path, $type, $variant, $name);
    # This parameter may itself depend on another one.
    local $self->{doubts}{$path}{$name} = 0;
    return $self->_is_doubtful($path, $type, $type->cases_with(['required'], $name));
}

# Very large objects are not searched, because each of their child objects may ask for it.
my $FEW_NAMES = 100;

# Whether the object has an unknown parameter that is probably this one.
sub _is_misspelt ($self, $path, $type, $variant, $name) {
    $self->{database}->getChildParamList($path, \my @names);
    return 0 if @names > $FEW_NAMES;
    return scalar grep {
        !$variant->{allowed}{$_} && !$type->cases_with([ 'required', 'optional' ], $_)
            && (_meant_name($variant, $_) // '') eq $name
    } @names;
}

# How many answers are kept.
my $MOST_MEANT = 1000;

# The parameter of that variant nearest to an unknown name, or undef.
sub _meant_name ($variant, $name) {
    my $meant = $variant->{meant} //= {};
    return $meant->{$name} if exists $meant->{$name};
    %$meant = () if keys %$meant >= $MOST_MEANT;
    my $hints = $variant->{hints} //= VEL::Suggest->new($variant->{order});
    return $meant->{$name} = $hints->find($name);
}

# The conditions under which something is allowed, such as "Kind = Inlet, Outlet".
sub _conditions (@cases) {
    return [ map { compose('condition', parameter => $_->{parameter}, values => $_->{values}) } @cases ];
}

# The paths of the existing parameters on which these cases depend.
sub _switches ($self, $path, @cases) {
    my %seen;
    return grep { !$seen{$_}++ && $self->{database}->havePath($_) } map { "$path/$_->{parameter}" } @cases;
}

# The parameters whose values make a name required, if the rule itself does not.
sub _demanding ($self, $path, $type, $variant, $list, $name) {
    my @cases = $type->cases_with([$list], $name) or return;
    return if grep { $_ eq $name } @{ $type->{$list} };
    return $self->_switches($path, _holding($variant, @cases));
}

sub _holding ($variant, @cases) {
    my $holds = $variant->{holds} //= { map { $_ => 1 } @{ $variant->{cases} } };
    return grep { $holds->{$_} } @cases;
}

sub _count_findings ($self, $path, $type) {
    return if !$self->{model}->is_beyond_count($path, $type);
    return finding($path, problem('too-many', type => $type->{type}, counted($type->{maximum})),
        $self->{model}->first_of_type($path, $type));
}

sub _parameter_findings ($self, $owner, $name, $value) {
    my $model = $self->{model};
    return if $model->rules->is_empty;
    return finding("/$name", problem('parameter-at-top', name => $name)) if $owner eq '/';
    return if !$self->_is_known_chain($owner);
    my $type = $model->type_of($owner);
    return $self->_value_findings($owner, $name, $value, $type, $model->variant_at($owner, $type));
}

sub _value_findings ($self, $path, $name, $value, $type, $variant) {
    return $self->_unknown_parameter($path, $name, $type, $variant)
        if !$variant->{allowed}{$name} && !$type->{free};
    my $parameter = $variant->{parameters}{$name} // $type->parameter($variant, $name);
    return if $parameter->{anything};
    my @problems = $parameter->problems($value, $self->_asker) or return;
    # A case may have changed what the value may be.
    my @switches = $self->_switches($path, grep { $_->{own}{$name} } @{ $variant->{cases} });
    return map { finding("$path/$name", $_, @switches, $self->_meant_objects($parameter, $_->{object})) } @problems;
}

# The path of the object that is probably meant by a misspelt name.
sub _meant_objects ($self, $parameter, $name) {
    return defined $name ? $self->{model}->object_path($parameter->{objects}, $name) : ();
}

# What the check of a value needs to know; made once for each set of rules.
sub _asker ($self) {
    my $asker = $self->{asker} //= do {
        my $validator = $self;
        weaken($validator);
        {   objects     => sub ($types) { $validator->{model}->object_names($types) },
            expressions => sub { $validator->{model}->expression_names },
        };
    };
    @$asker{qw(units bounds used)} = @$self{qw(units bounds used)};
    return $asker;
}

sub _unknown_parameter ($self, $path, $name, $type, $variant) {
    my @cases = $type->cases_with([ 'required', 'optional' ], $name);
    return if $self->_is_doubtful($path, $type, @cases);
    return finding("$path/$name", problem('parameter-of-case', name => $name, conditions => _conditions(@cases)),
        $self->_switches($path, @cases)) if @cases;
    my $near = _meant_name($variant, $name);
    $self->{meant}{$near} = 1 if defined $near;
    return finding("$path/$name", problem('unknown-parameter', type => $type->{type}, name => $name, near => $near));
}

# A misspelt name has its own finding and is not missing.
sub _missing_findings ($self, $path, $type, $variant, $names) {
    my @findings;
    if (@{ $variant->{required} }) {
        my %missing = map { $_ => 1 } @{ $variant->{required} };
        delete @missing{ @$names, keys %{ $self->{meant} } };
        push @findings, map { finding($path, problem('missing-parameter', name => $_),
                $self->_demanding($path, $type, $variant, 'required', $_)) } grep { $missing{$_} } @{ $variant->{required} };
    }
    return (@findings, map { finding($path, problem('missing-object', type => $_),
                $self->_demanding($path, $type, $variant, 'required_objects', $_)) } $self->_missing_types($path, $variant));
}

sub _missing_types ($self, $path, $variant) {
    return if !@{ $variant->{required_objects} };
    $self->{database}->getChildObjectList($path, \my @objects);
    my %have = map { (split_component($_))[0] => 1 } @objects;
    my @missing = grep { !$have{$_} } @{ $variant->{required_objects} } or return;
    my $rules   = $self->{model}->rules;
    my @unknown = grep { !$rules->type('OBJECT', $_) && !$rules->type('SINGLETON', $_) } sort keys %have;
    my %meant   = map { $_ => 1 } grep { defined } map { $self->_meant_type($_, $variant) } @unknown;
    return grep { !$meant{$_} } @missing;
}

sub _version_findings ($self, $path) {
    my $version = $self->{model}->rules->version // return;
    my $stated;
    $self->{database}->getStringValue("$path/Version", \$stated);
    return if !defined $stated || VEL::Version::compare($stated, $version) <= 0;
    return finding("$path/Version", problem('newer-version', stated => $stated, version => $version));
}

# --- Marks ------------------------------------------------------------------

sub _mark ($self, $path, $names) {
    my $database = $self->{database};
    my $below = $path eq '/' ? '' : $path;
    for my $name (@$names) {
        $database->setValid("$below/$name", 1);
        $database->setValid("$below/$name", 2);
    }
    $database->setValid($path, 1);
    $self->{marked} = 1;
    $self->{users}{$_}{$path} = 1 for @{ $self->{used} };
    return;
}

# A parameter has no subtree, so the subtree mark is set with it.
sub _mark_parameter ($self, $path) {
    $self->{database}->setValid($path, $_) for 1, 2;
    $self->{marked} = 1;
    return;
}

# If a case no longer applies, child objects may not be allowed that were allowed when they
# were checked.
sub _recheck_children ($self, $path, $variant) {
    my $database = $self->{database};
    my @objects;
    $database->getChildObjectList($path, \@objects);
    for my $object (@objects) {
        my $type = $self->{model}->type_of("/$object") // next;
        next if !$type->{parents} || $variant->{objects}{ $type->{type} };
        $database->setValidEx("$path/$object", 0, 1) if $database->isValid("$path/$object") & 1;
    }
    return;
}

# Called if an object or parameter was removed (or an object was added, which affects no
# mark), or if command data states rules, which is a finding.
sub _gone ($self, $path, $code, $new, $old) {
    my $database = $self->{database};
    if ($path =~ m{^/RULES(?:/|\z)}) {
        $database->setValid('/', 0);
        return;
    }
    return if $code == 1 || !$self->{marked};
    my ($parent) = split_path($path);
    my $users = delete $self->{users}{ name_at($path) } // {};
    for my $user ($parent, keys %$users) {
        $database->setValidEx($user, 0, 1) if $database->isValid($user) > 0;
    }
    return;
}

sub _notice_new_rules ($self) {
    $self->{model}->refresh;
    return if $self->{compiled} == $self->{model}->compiled;
    $self->{compiled} = $self->{model}->compiled;
    $self->{under} = { path => '/', known => 1 };
    $self->_forget_marks;
    return;
}

sub _forget_marks ($self) {
    return if !$self->{marked};
    $self->{model}->clear_marks;
    $self->{marked}   = 0;
    $self->{users} = {};
    return;
}

1;
