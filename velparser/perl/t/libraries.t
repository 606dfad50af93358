# The libraries that ship: complete and in keeping with themselves. That every
# rule of them does what it says is shown in coverage.t.
use strict;
use warnings;
use feature 'signatures';
use Test::More;
use FindBin;
use lib "$FindBin::Bin/lib";

use VEL::Model;
use VEL::Units;
use VELTest;

use RuleSample;

my $api      = with_libraries();
my $database = $api->{database};
my $rules    = VEL::Model->of($database)->rules;
my $sample   = RuleSample->new($api);
my @types    = $sample->types;

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

subtest 'everything is described' => sub {
    my @bare;
    for my $type (@types) {
        my $path = "/RULES/$type->{kind}:$type->{type}";
        push @bare, $path if !$type->{description} || !$type->{help};
        push @bare, "$path: no output priority" if !defined field($path, 'Output Ordering Priority');
        for my $variant ($sample->variants($type)) {
            push @bare, map { "$path/$_" }
                grep { !$type->parameter($variant, $_)->{description} } @{ $variant->{order} };
        }
    }
    is join("\n", @bare), '', 'types by description, help topic and priority, parameters by description';
};

subtest 'places' => sub {
    my (%inside, @odd);
    for my $type (@types) {
        $inside{ $type->{type} }{$_} = 1 for map { keys %{ $_->{objects} } } $sample->variants($type);
    }
    for my $type (@types) {
        my $word = $type->{type};
        push @odd, "$word: no rule says where it is allowed" if !$type->{parents};
        push @odd, map { "$word: $_ does not list it" }
            grep { $_ ne '/' && !$inside{$_}{$word} } keys %{ $type->{parents} };
    }
    for my $outer (sort keys %inside) {
        for my $word (sort keys %{ $inside{$outer} }) {
            my ($type) = grep { $_->{type} eq $word } @types;
            push @odd, "$outer lists $word, which is not allowed there" if !$type->{parents}{$outer};
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
            push @odd, "$type->{type}: $case->{label}: $case->{parameter} is not a parameter"
                if !grep { $_->{allowed}{ $case->{parameter} } } $sample->variants($type);
            push @odd, map { "$type->{type}: $case->{label}: $_ is not a value" }
                grep { !$values{$_} } @{ $case->{values} };
        }
    }
    is join("\n", @odd), '', 'depend on parameters and values that exist';
};

subtest 'every rule has an effect' => sub {
    my @idle;
    for my $type (@types) {
        my %listed = map { $_ => 1 } map { @{ $_->{order} } } $sample->variants($type);
        push @idle, map { "$type->{type}: $_" } grep { !$listed{$_} } keys %{ $type->{own} };
    }
    is join("\n", sort @idle), '', 'every parameter rule is for a parameter that is listed';
};

# --- Units, held against another program that knows them ------------------------

subtest 'units' => sub {
    my %units = map { $_ => 1 } grep { defined && $_ ne '1' } map { field($_, 'Units') } blocks('PARAMETER');
    for my $name ('Lower Bound', 'Upper Bound', 'Default') {
        $units{$_} = 1 for map { (field($_, $name) // '') =~ /\[([^\]]+)\]/g } blocks('PARAMETER');
    }
    ok VEL::Units::exists_unit($_), "$_ is a unit" for sort keys %units;
    my %their_name = (rad => 'radian', h => 'hour');
    for my $unit (sort keys %units) {
        my $base = join ' ', base_units($unit);
        my ($from, $to) = map { s/\b(rad|h)\b/$their_name{$1}/gr } $unit, $base;
        same_as_theirs(1, $unit, $base, $from, $to);
    }
};

# What set-ups write in place of the units of the rules.
subtest 'units that users write' => sub {
    same_as_theirs(@$_) for (
        [ 100, 'C',            'K',            'tempC(100)',            'tempK' ],
        [ -40, 'F',            'C',            'tempF(-40)',            'tempC' ],
        [ 300, 'K',            'F',            'tempK(300)',            'tempF' ],
        [ 1,   'J kg^-1 C^-1', 'J kg^-1 K^-1', 'J kg^-1 degC^-1',       'J kg^-1 K^-1' ],
        [ 1,   'W m^-2 F^-1',  'W m^-2 K^-1',  'W m^-2 degF^-1',        'W m^-2 K^-1' ],
        [ 30,  '%',            '1',            '30 percent',            '1' ],
        [ 3000, 'rev min^-1',  'rad s^-1',     '3000 turn min^-1',      'radian s^-1' ],
        [ 1,   'bar',          'Pa',           'bar',                   'Pa' ],
        [ 1,   'atm',          'Pa',           'atm',                   'Pa' ],
        [ 1,   'psi',          'Pa',           'psi',                   'Pa' ],
        [ 750, 'mmHg',         'kPa',          '750 mmHg',              'kPa' ],
        [ 1,   'cP',           'Pa s',         'centipoise',            'Pa s' ],
        [ 1,   'l/min',        'm^3 s^-1',     'liter/min',             'm^3 s^-1' ],
        [ 1,   'ft',           'm',            'ft',                    'm' ],
        [ 1,   'inch',         'mm',           'inch',                  'mm' ],
        [ 1,   'um',           'm',            'micrometer',            'm' ],
        [ 1,   'lb',           'kg',           'lb',                    'kg' ],
        [ 1,   'g cm^-3',      'kg m^-3',      'g cm^-3',               'kg m^-3' ],
        [ 1,   'km/h',         'm s^-1',       'km/hour',               'm s^-1' ],
        [ 1,   'day',          's',            'day',                   's' ],
        [ 1,   'kW h',         'J',            'kW hour',               'J' ],
        [ 1,   'kcal',         'J',            '1000 calorie_IT',       'J' ],
        [ 90,  'degree',       'rad',          '90 degree',             'radian' ],
    );
};

sub same_as_theirs ($number, $from, $to, $their_from, $their_to) {
    my $theirs = qx{units --terse --compact '$their_from' '$their_to' 2>&1} // 'GNU units is not installed';
    my $ours   = VEL::Units::convert($number, $from, $to);
    my $same   = defined $ours && $theirs =~ /^[0-9.e+-]+$/ && abs($ours - $theirs) <= 1e-6 * abs $theirs;
    ok $same, "$number $from is as much $to for both" or diag 'ours: ', $ours // 'none', ", theirs: $theirs";
    return;
}

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
