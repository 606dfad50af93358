# The set-ups that ship: each loads, is as it says, and survives being saved.
use strict;
use warnings;
use feature 'signatures';
use Test::More;
use FindBin;
use lib "$FindBin::Bin/lib";

use VELTest;

my $folder = source_folder() . '/examples';

# An API that has loaded the lines.
sub loaded ($lines) {
    my $api   = with_libraries();
    my $error = $api->parseVELData($lines, 0);
    die $error if $error;
    return $api;
}

sub read_example ($name) {
    my @lines;
    my $error = API->new->readTextFile("$folder/$name", \@lines);
    die $error if $error;
    return \@lines;
}

# The saved text reads back to a tree that is saved as the same text.
sub survives ($api, $name) {
    my $saved = formatted($api->{database});
    is formatted(loaded(lines($saved))->{database}), $saved, "$name survives being saved and loaded";
    my @long = grep { length > 79 } split /\n/, $saved;
    is "@long", '', "$name is saved within 79 columns";
    return $saved;
}

my @right = qw(minimal.vel duct.vel cyclone.vel heat-exchanger.vel);

is join(' ', sort map { s{.*/}{}r } glob "$folder/*.vel"), join(' ', sort @right, qw(old-version.vel mistakes.vel)),
    'this test looks at every example';

for my $name (@right) {
    subtest $name => sub {
        my $api = loaded(read_example($name));
        is $api->updateSolverVEL, '', 'has the current version';
        is findings($api->{database}, 1), '', 'is valid';
        survives($api, $name);
    };
}

subtest 'sizes' => sub {
    is scalar @{ read_example('minimal.vel') }, 10, 'the smallest has ten lines';
    cmp_ok scalar @{ read_example('duct.vel') }, '>=', 300, 'a real one has hundreds of lines';
    my @domains = grep { /^  DOMAIN:/ } @{ read_example('heat-exchanger.vel') };
    cmp_ok scalar @domains, '>=', 2, 'the heat exchanger has two domains and more';
};

subtest 'old-version.vel' => sub {
    my $api = loaded(read_example('old-version.vel'));
    is $api->updateSolverVEL . "\n", <<'TEXT', 'the changes are listed, the version last';
/FLOW/FLUID:Pipe/Kind: added with the value "Fluid"
/FLOW/FLUID:Pipe: renamed to DOMAIN:Pipe
/FLOW/DOMAIN:Pipe/Material: renamed to "Substance"
/FLOW/DOMAIN:Pipe/PATCH:In: renamed to BOUNDARY:In
/FLOW/DOMAIN:Pipe/PATCH:Bleed: renamed to BOUNDARY:Bleed
/FLOW/DOMAIN:Pipe/PATCH:Out: renamed to BOUNDARY:Out
/FLOW/DOMAIN:Pipe/PATCH:Orifice Plate: renamed to BOUNDARY:Orifice Plate
/FLOW/DOMAIN:Pipe/PATCH:Pipe Wall: renamed to BOUNDARY:Pipe Wall
/FLOW/DOMAIN:Pipe/BOUNDARY:In/Patch Type: renamed to "Kind"
/FLOW/DOMAIN:Pipe/BOUNDARY:Bleed/Patch Type: renamed to "Kind"
/FLOW/DOMAIN:Pipe/BOUNDARY:Out/Patch Type: renamed to "Kind"
/FLOW/DOMAIN:Pipe/BOUNDARY:Orifice Plate/Patch Type: renamed to "Kind"
/FLOW/DOMAIN:Pipe/BOUNDARY:Pipe Wall/Patch Type: renamed to "Kind"
/FLOW/DOMAIN:Pipe/BOUNDARY:In/Kind: changed from "Inflow" to "Inlet"
/FLOW/DOMAIN:Pipe/BOUNDARY:Bleed/Kind: changed from "Inflow" to "Inlet"
/FLOW/DOMAIN:Pipe/BOUNDARY:Out/Kind: changed from "Outflow" to "Outlet"
/FLOW/DOMAIN:Pipe/BOUNDARY:Orifice Plate/Kind: changed from "Solid" to "Wall"
/FLOW/DOMAIN:Pipe/BOUNDARY:Pipe Wall/Kind: changed from "Solid" to "Wall"
/FLOW/PICTURE:Streamlines: removed with everything in it
/FLOW/DOMAIN:Pipe/BOUNDARY:In/Flow By: changed from "Mass" to "Mass Flow Rate"
/FLOW/DOMAIN:Pipe/BOUNDARY:Bleed/Flow By: changed from "Speed" to "Normal Speed"
/FLOW/DOMAIN:Pipe/BOUNDARY:Out/Flow By: changed from "Pressure" to "Static Pressure"
/FLOW/DOMAIN:Pipe/BOUNDARY:In/Flow By: moved to /FLOW/DOMAIN:Pipe/BOUNDARY:In/THROUGHFLOW/Given
/FLOW/DOMAIN:Pipe/BOUNDARY:Bleed/Flow By: moved to /FLOW/DOMAIN:Pipe/BOUNDARY:Bleed/THROUGHFLOW/Given
/FLOW/DOMAIN:Pipe/BOUNDARY:Out/Flow By: moved to /FLOW/DOMAIN:Pipe/BOUNDARY:Out/THROUGHFLOW/Given
/FLOW/DOMAIN:Pipe/BOUNDARY:In/Mass Flow Rate: moved to /FLOW/DOMAIN:Pipe/BOUNDARY:In/THROUGHFLOW/Mass Flow Rate
/FLOW/DOMAIN:Pipe/BOUNDARY:Bleed/Normal Speed: moved to /FLOW/DOMAIN:Pipe/BOUNDARY:Bleed/THROUGHFLOW/Normal Speed
/FLOW/DOMAIN:Pipe/BOUNDARY:Out/Relative Pressure: moved to /FLOW/DOMAIN:Pipe/BOUNDARY:Out/THROUGHFLOW/Relative Pressure
/FLOW/DOMAIN:Pipe/TURBULENCE/Closure: renamed to "Model"
/FLOW/DOMAIN:Pipe/TURBULENCE/Model: changed from "Energy and Dissipation" to "Two Equations"
/FLOW/SENSOR:Behind Bore: renamed to PROBE:Behind Bore
/FLOW/PROBE:Behind Bore/Place: renamed to "Position"
/FLOW/STOPPING/Iterations: renamed to "Largest Number of Iterations"
/FLOW/NUMERICS/Word Length: removed; it was "32"
/LANGUAGE/Version: changed from 1.0 to 3.0
TEXT
    is findings($api->{database}, 1), '', 'it is valid after the upgrade';
    my $saved = survives($api, 'the new text');
    is loaded(lines($saved))->updateSolverVEL, '', 'which needs no upgrade again';
};

subtest 'mistakes.vel' => sub {
    my $lines = read_example('mistakes.vel');
    my $api   = loaded($lines);
    is findings($api->{database}, 1), <<'TEXT', 'twelve findings, each with path, sentence and identifier';
/FLOW/DOMAIN:Tee/Location: There is no REGION named "tee volumes"; did you mean tee volume? [no-such-object]
/FLOW/DOMAIN:Tee/Reference Pressure: Unit [bar s] has the wrong dimension; use [Pa] or a compatible unit [wrong-unit]
/FLOW/DOMAIN:Tee/TURBULENCE/Model: "Two Equation" is not allowed here; did you mean Two Equations? [not-allowed]
/FLOW/DOMAIN:Tee/HEAT/Viscous Heating: "perhaps" is not a logical value; use Yes or No [wrong-type]
/FLOW/DOMAIN:Tee/BOUNDARY:Hot: required parameter "Location" is missing [missing-parameter]
/FLOW/DOMAIN:Tee/BOUNDARY:Hot/THROUGHFLOW/Normal Speed: "2 * (Hot Speed" has a "(" without a ")"; add ")" [bad-expression]
/FLOW/DOMAIN:Tee/BOUNDARY:Hot/INFLOW TEMPERATURE/Temperature: 353.15 has no unit; write it as 353.15 [K] [missing-unit]
/FLOW/DOMAIN:Tee/BOUNDARY:Cold/THROUGHFLOW/Mass Flow Rate: -1 [kg s^-1] is below the lower bound 0 [kg s^-1] [below-bound]
/FLOW/DOMAIN:Tee/BOUNDARY:Out: required object THROUGHFLOW is missing [missing-object]
/FLOW/DOMAIN:Tee/BOUNDARY:Wall/Movng Frame: BOUNDARY has no parameter "Movng Frame"; did you mean Moving Frame? [unknown-parameter]
/FLOW/STOPPING/Largest Number of Iterations: "100.5" is not a whole number; use a value such as 10 [wrong-type]
/FLOW/STOPPING/PROBE:Outlet Centre: PROBE is not allowed in STOPPING; move it to FLOW [wrong-parent]
TEXT
    is scalar(grep { /# [0-9]+:/ } @$lines), 12, 'the comments of the file count the same number';
    survives($api, 'and so does the file');

    my @remedies = (
        [ setStringValue => '/FLOW/DOMAIN:Tee/Location',           'tee volume' ],
        [ setStringValue => '/FLOW/DOMAIN:Tee/Reference Pressure', '1 [bar]' ],
        [ setStringValue => '/FLOW/DOMAIN:Tee/TURBULENCE/Model',   'Two Equations' ],
        [ setStringValue => '/FLOW/DOMAIN:Tee/HEAT/Viscous Heating', 'No' ],
        [ createParam    => '/FLOW/DOMAIN:Tee/BOUNDARY:Hot/Location', 'hot in' ],
        [ setStringValue => '/FLOW/DOMAIN:Tee/BOUNDARY:Hot/THROUGHFLOW/Normal Speed', '2 * (Hot Speed)' ],
        [ setStringValue => '/FLOW/DOMAIN:Tee/BOUNDARY:Hot/INFLOW TEMPERATURE/Temperature', '80 [C]' ],
        [ setStringValue => '/FLOW/DOMAIN:Tee/BOUNDARY:Cold/THROUGHFLOW/Mass Flow Rate', '1 [kg s^-1]' ],
        [ setStringValue => '/FLOW/DOMAIN:Tee/BOUNDARY:Out/Kind',  'Wall' ],
        [ deleteParam    => '/FLOW/DOMAIN:Tee/BOUNDARY:Wall/Movng Frame' ],
        [ setStringValue => '/FLOW/STOPPING/Largest Number of Iterations', '100' ],
        [ deleteObj      => '/FLOW/STOPPING/PROBE:Outlet Centre' ],
    );
    my $database  = $api->{database};
    my $validator = validator($database);
    my @said      = split /\n/, findings_left($validator, $database);
    for my $remedy (@remedies) {
        my ($method, @arguments) = @$remedy;
        is $database->$method(@arguments), undef, "fixed: $arguments[0]";
        my @left = split /\n/, findings_left($validator, $database);
        is scalar @left, @said - 1, 'one finding less';
        my %said = map { $_ => 1 } @said;
        is join("\n", grep { !$said{$_} } @left), '', 'and no new finding';
        @said = @left;
    }
    is "@said", '', 'none is left';
    is findings($database, 1), '', 'nor after everything is checked again';
};

subtest 'make-large.pl' => sub {
    for my $count (200, 777, 2000) {
        my @lines = qx{$^X -w $folder/make-large.pl $count};
        is scalar @lines, $count, "$count lines";
        my $api = loaded(\@lines);
        is findings($api->{database}, 1), '', 'they are valid';
    }
    isnt system("$^X $folder/make-large.pl few 2>/dev/null"), 0, 'an argument that is not a number is refused';
};

done_testing;
