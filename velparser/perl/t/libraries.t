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
                if !grep { $_->{allowed}{ $case->{parameter} } } $sample->variants($type);
            push @odd, map { "$type->{type}: $case->{label}: $_ is no value" }
                grep { !$values{$_} } @{ $case->{values} };
        }
    }
    is join("\n", @odd), '', 'hang on parameters and values that there are';
};

subtest 'no rule lies idle' => sub {
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
