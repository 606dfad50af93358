# The libraries that ship: complete, in keeping with themselves, and every rule
# of them met by a value that it takes and by one that it refuses.
use strict;
use warnings;
use feature 'signatures';
use Test::More;
use FindBin;
use lib "$FindBin::Bin/lib";

use VEL::Model;
use VEL::Units;
use VELTest;

my $api      = with_libraries();
my $database = $api->{database};
my $rules    = VEL::Model->of($database)->rules;
my @types    = grep { $database->havePath("/RULES/$_->{kind}:$_->{type}") } $rules->types;

# The blocks of one kind in the libraries, by path.
sub blocks ($kind) {
    $database->getObjectsByType($kind, \my @paths);
    return @paths;
}

sub field ($path, $name) {
    my $text;
    $database->getStringValue("$path/$name", \$text);
    return $text;
}

subtest 'size' => sub {
    is join("\n", $rules->faults), '', 'no rule is wrong';
    cmp_ok scalar @types, '>=', 60, 'object types';
    cmp_ok scalar blocks('PARAMETER'), '>=', 250, 'parameters';
    is_deeply [ sort map { $_->{name} } $rules->upgrades ], [ 'Version 2.0', 'Version 3.0' ], 'upgrades';
};

# Every variant that a single case makes, and the plain one.
sub variants ($type) {
    my %seen;
    return grep { !$seen{$_}++ } $type->plain_variant, map {
        my $case = $_;
        map {
            my $value = $_;
            $type->variant(sub ($name) { return $name eq $case->{parameter} ? $value : undef })
        } @{ $case->{values} }
    } @{ $type->{cases} };
}

subtest 'everything is described' => sub {
    my @bare;
    for my $type (@types) {
        my $path = "/RULES/$type->{kind}:$type->{type}";
        push @bare, $path if !$type->{description} || !$type->{help};
        push @bare, "$path: no output priority" if !defined field($path, 'Output Ordering Priority');
        for my $variant (variants($type)) {
            push @bare, map { "$path/$_" }
                grep { !$type->parameter($variant, $_)->{description} } @{ $variant->{order} };
        }
    }
    is join("\n", @bare), '', 'types by description, help topic and priority, parameters by description';
};

subtest 'places' => sub {
    my (%inside, @odd);
    for my $type (@types) {
        $inside{ $type->{type} }{$_} = 1 for map { keys %{ $_->{objects} } } variants($type);
    }
    for my $type (@types) {
        my $word = $type->{type};
        push @odd, "$word: no rule says where it stands" if !$type->{parents};
        push @odd, map { "$word: $_ does not list it" }
            grep { $_ ne '/' && !$inside{$_}{$word} } keys %{ $type->{parents} };
    }
    for my $outer (sort keys %inside) {
        for my $word (sort keys %{ $inside{$outer} }) {
            my ($type) = grep { $_->{type} eq $word } @types;
            push @odd, "$outer lists $word, which may not stand there" if !$type->{parents}{$outer};
        }
    }
    is join("\n", @odd), '', 'lists of objects and parents agree';
};

subtest 'cases' => sub {
    my @odd;
    for my $type (@types) {
        for my $case (@{ $type->{cases} }) {
            my $switch = $type->parameter($type->plain_variant, $case->{parameter});
            my %values = map { $_ => 1 } $switch->{type} eq 'Logical' ? qw(Yes No) : @{ $switch->{values} // [] };
            push @odd, "$type->{type}: $case->{label}: $case->{parameter} is no parameter"
                if !grep { $_->{allowed}{ $case->{parameter} } } variants($type);
            push @odd, map { "$type->{type}: $case->{label}: $_ is no value" }
                grep { !$values{$_} } @{ $case->{values} };
        }
    }
    is join("\n", @odd), '', 'hang on parameters and values that there are';
};

subtest 'no rule lies idle' => sub {
    my @idle;
    for my $type (@types) {
        my %listed = map { $_ => 1 } map { @{ $_->{order} } } variants($type);
        push @idle, map { "$type->{type}: $_" } grep { !$listed{$_} } keys %{ $type->{own} };
    }
    is join("\n", sort @idle), '', 'every parameter rule is for a parameter that is listed';
};

# --- Data made from the rules -------------------------------------------------

# The headers around an object of the type, outermost first, each with the
# parameter that lets the next stand in it.
sub chain ($type) {
    my ($place) = sort keys %{ $type->{parents} };
    return () if $place eq '/';
    my ($outer) = grep { $_->{type} eq $place } @types;
    my ($case) = $outer->cases_with([ 'required_objects', 'optional_objects' ], $type->{type});
    my @switch = $case && !$outer->plain_variant->{objects}{ $type->{type} }
        ? "$case->{parameter} = $case->{values}[0]" : ();
    return (chain($outer), [ header($outer), @switch ]);
}

sub header ($type) { return $type->{kind} eq 'OBJECT' ? "$type->{type}: Sample" : "$type->{type}:" }

sub good_value ($parameter) {
    return $parameter->{default} if defined $parameter->{default};
    my $one = $parameter->{objects} ? 'Sample' : $parameter->{values} ? $parameter->{values}[0] : good_entry($parameter);
    return join ', ', ($one) x ($parameter->{minimum} || 1);
}

sub good_entry ($parameter) {
    return 'anything' if $parameter->{type} eq 'String';
    return 'Yes'      if $parameter->{type} eq 'Logical';
    my ($low, $high) = map { defined ? /^([^ ]+)/ : undef } @$parameter{qw(lower upper)};
    my $number = defined $low && defined $high ? ($low + $high) / 2
        : defined $low ? $low + 1 : defined $high ? $high - 1 : 2;
    $number = int $number if $parameter->{type} eq 'Integer';
    return $parameter->{type} eq 'Real' && $parameter->{units} && $parameter->{units} ne '1'
        ? "$number [$parameter->{units}]" : $number;
}

# One that no rule but that of free text takes.
my $BAD_VALUE = '?';

sub is_free_text ($parameter) {
    return $parameter->{type} eq 'String' && !$parameter->{values} && !$parameter->{objects};
}

# The findings about one object with these parameters, without the path.
sub findings_of ($type, $variant, %values) {
    my @chain = chain($type);
    my %named = map { $_ => 1 } map { @{ $type->parameter($variant, $_)->{objects} // [] } } @{ $variant->{order} };
    my @text = (
        (map { @$_ } @chain), header($type),
        (map { "$_ = $values{$_}" } sort keys %values),
        (map { my $word = $_; (header(grep { $_->{type} eq $word } @types), 'END') } @{ $variant->{required_objects} }),
        ('END') x (1 + @chain),
        map { ("$_: Sample", 'END') } sort keys %named,
    );
    my $error = $database->loadVELData(\@text);
    die "$type->{type}: $error" if $error;
    my $path = join '', map { '/' . s/^([^:]*):\s*(.*)$/$2 eq '' ? $1 : "$1:$2"/er } map({ $_->[0] } @chain), header($type);
    my $validator = VEL::Validate->new($database);
    $validator->$_(1) for 'setUnitsChecking', 'setBoundsChecking';
    my $findings = $validator->validateObject($path) // '';
    $database->getChildObjectList('/', \my @objects);
    $database->deleteObj("/$_") for grep { $_ ne 'RULES' } @objects;
    return $findings =~ s/^\Q$path\E//gmr;
}

# The values that make a variant hold.
sub switches ($variant) { return map { $_->{parameter} => $_->{values}[0] } @{ $variant->{cases} } }

subtest 'every rule takes what it should and refuses the rest' => sub {
    my (@refused, @taken, %touched);
    for my $type (@types) {
        for my $variant (variants($type)) {
            my %good = map { $_ => good_value($type->parameter($variant, $_)) } @{ $variant->{order} };
            $good{anything} = 1 if $type->{free};
            delete @good{ map { $_->{parameter} } grep { my $case = $_; !grep { $_ == $case } @{ $variant->{cases} } } @{ $type->{cases} } };
            %good = (%good, switches($variant));
            my $findings = findings_of($type, $variant, %good);
            $findings =~ s/^: required parameter "[^"]+" is missing \[missing-parameter\]\n?//gm;
            push @refused, "$type->{type}: $findings" if $findings ne '';
            $touched{"$type->{type}/$_"} = 1 for keys %good;

            my @strict = grep { exists $good{$_} && !is_free_text($type->parameter($variant, $_)) } @{ $variant->{order} };
            my %switch = switches($variant);
            my %bad = (%good, map { $_ => $BAD_VALUE } grep { !exists $switch{$_} } @strict);
            my $complaints = findings_of($type, $variant, %bad);
            push @taken, "$type->{type}/$_" for grep { $bad{$_} eq $BAD_VALUE && $complaints !~ m{^/\Q$_\E: }m } @strict;
        }
    }
    is join("\n", @refused), '', 'no finding about right values';
    is join("\n", @taken),   '', 'a finding about every wrong one';

    my @untouched = sort grep { !$touched{$_} }
        map { my $type = $_; map { "$type->{type}/$_" } map { @{ $_->{order} } } variants($type) } @types;
    is join("\n", @untouched), '', 'no parameter was left out';
};

subtest 'an unknown name is refused everywhere' => sub {
    for my $type (grep { !$_->{free} } @types) {
        like findings_of($type, $type->plain_variant, 'Not a Parameter' => 1), qr/\[unknown-parameter\]/, $type->{type};
    }
};

# --- Units, held against another program that knows them ------------------------

subtest 'units' => sub {
    my %units = map { $_ => 1 } grep { defined && $_ ne '1' } map { field($_, 'Units') } blocks('PARAMETER');
    for my $name ('Lower Bound', 'Upper Bound', 'Default') {
        $units{$_} = 1 for map { (field($_, $name) // '') =~ /\[([^\]]+)\]/g } blocks('PARAMETER');
    }
    ok VEL::Units::exists_unit($_), "$_ is a unit" for sort keys %units;
    my ($program) = grep { -x } map { "$_/units" } split /:/, $ENV{PATH};
    return diag 'GNU units is not installed' if !$program;
    my %their_name = (rev => 'turn', rad => 'radian', h => 'hour');
    for my $unit (sort keys %units) {
        my $base = join ' ', base_units($unit);
        my ($from, $to) = map { s/\b(rev|rad|h)\b/$their_name{$1}/gr } $unit, $base;
        my $factor = qx{$program --terse --compact '$from' '$to' 2>&1};
        my $ours = VEL::Units::convert(1, $unit, $base);
        ok defined $ours && $factor =~ /^[0-9.e+-]+$/ && abs($ours - $factor) <= 1e-6 * abs $factor,
            "1 $unit is as much $base for both" or diag $factor, ' ', $ours // 'nothing';
    }
};

# The unit in terms of kg, m, s, K, kmol and rad.
sub base_units ($unit) {
    my %of = (
        Pa => [ 'kg', 'm^-1', 's^-2' ], J => [ 'kg', 'm^2', 's^-2' ], W => [ 'kg', 'm^2', 's^-3' ],
        N => [ 'kg', 'm', 's^-2' ], h => ['s'], degree => ['rad'], mol => ['kmol'], kg => ['kg'],
    );
    my %power;
    for my $factor (split / /, $unit) {
        my ($name, $power) = $factor =~ /^([A-Za-z]+)(?:\^(-?[0-9]+))?$/;
        for my $part (@{ $of{$name} // [$name] }) {
            my ($base, $own) = $part =~ /^([A-Za-z]+)(?:\^(-?[0-9]+))?$/;
            $power{$base} += ($own // 1) * ($power // 1);
        }
    }
    return map { $power{$_} == 1 ? $_ : "$_^$power{$_}" } grep { $power{$_} } sort keys %power;
}

done_testing;
