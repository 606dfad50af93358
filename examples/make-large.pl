#!/usr/bin/env perl
# Writes a large set-up to standard output: the air of an office building. Each room is
# a domain with its own supply, exhaust, windows and probes.
#
#     examples/make-large.pl [LINES] >large.vel      (20,000 lines by default)
#
# The same number of lines always gives the same text. The text is valid, so that
# measurements show the usual case.
use strict;
use warnings;

my $wanted = shift // 20_000;
die "make-large.pl: the number of lines must be 200 or more\n" if $wanted !~ /^[0-9]+$/ || $wanted < 200;

my ($depth, $lines) = (0, 0);

sub put {
    my ($text) = @_;
    $depth-- if $text eq 'END';
    print '  ' x $depth, $text, "\n";
    $depth++ if $text =~ /^[A-Z ]+:/;
    $lines++;
    return;
}

sub block {
    my ($head, @body) = @_;
    put($head);
    ref $_ ? $_->() : put($_) for @body;
    put('END');
    return;
}

sub wall {
    my ($name, $outside) = @_;
    block("BOUNDARY: $name", 'Kind = Wall', 'Location = ' . lc $name,
        sub { block('WALL SURFACE:', 'Friction = Sticking', 'Roughness = Smooth') },
        sub {
            block('WALL HEAT:', 'Given = Surroundings',
                "Transfer Coefficient = 1.4 [W m^-2 K^-1]", "Outside Temperature = $outside [K]");
        });
    return;
}

sub room {
    my ($number) = @_;
    my $flow = sprintf '%.4f', 0.03 + 0.001 * ($number % 17);
    block("DOMAIN: Room $number", 'Kind = Fluid', 'Substance = Air', 'Reference Pressure = 101325 [Pa]',
        sub { block('TURBULENCE:', 'Model = Two Equations', 'Length Variable = Frequency') },
        sub { block('HEAT:', 'Model = Thermal Energy', 'Viscous Heating = No') },
        sub {
            block('GRAVITY:', 'Acceleration = 0 [m s^-2], 0 [m s^-2], -9.81 [m s^-2]',
                'Buoyancy Model = Full Density');
        },
        sub {
            block("BOUNDARY: Supply $number", 'Kind = Inlet', "Location = supply $number",
                sub { block('THROUGHFLOW:', 'Given = Mass Flow Rate', "Mass Flow Rate = $flow [kg s^-1]") },
                sub { block('INFLOW TURBULENCE:', 'Given = Medium') },
                sub { block('INFLOW TEMPERATURE:', 'Given = Static', 'Temperature = Supply Temperature') });
        },
        sub {
            block("BOUNDARY: Exhaust $number", 'Kind = Outlet', "Location = exhaust $number",
                sub {
                    block('THROUGHFLOW:', 'Given = Static Pressure', "Relative Pressure = -@{[ $number % 5 ]} [Pa]");
                });
        },
        sub { wall("Front $number", 268.15 + $number % 9) },
        sub { wall("Window $number", 268.15 + $number % 9) },
        sub { wall("Corridor Side $number", 293.15) },
        sub {
            block("SOURCE: Persons $number", 'Kind = Heat',
                'Heat per Volume = ' . (1 + $number % 4) . ' * Heat of a Person');
        },
        sub {
            block('STARTING VALUES:', 'Speed Guess = 0.1 [m s^-1]', 'Relative Pressure = 0 [Pa]',
                'Temperature = 21 [C]');
        });
    return;
}

sub probe {
    my ($number) = @_;
    my ($x, $y) = (3.5 * ($number % 40), 5 * int($number / 40));
    block("PROBE: Seat $number", "Position = $x [m], $y [m], 1.1 [m]", 'Quantity = Temperature',
        "Domain = Room $number");
    block("REPORT: Air of Room $number", 'Quantity = Mass Flow', 'Measure = Sum',
        "Boundaries = Supply $number, Exhaust $number");
    return;
}

block('LANGUAGE:', 'Version = 3.0');
block('LIBRARY:', sub {
        block('EXPRESSIONS:', 'Supply Temperature = 291.15 [K]', 'Room Volume = 52.5 [m^3]',
            'Heat of a Person = 75 [W] / Room Volume');
});
put('FLOW:');
my ($tail, $room) = (14, 0);
while (1) {
    my $before = $lines;
    room(++$room);
    probe($room);
    last if $lines + ($lines - $before) + $tail > $wanted;
}
block('NUMERICS:', sub { block('ADVECTION:', 'Scheme = Bounded') });
block('STOPPING:', 'Largest Number of Iterations = 500', sub { block('TARGET:', 'Residual = 1e-4') });
my $lift = 0;
while ($lines + 6 < $wanted) {
    block('PROBE: Lift Shaft ' . ++$lift, "Position = 1 [m], 1 [m], $lift [m]", 'Quantity = Speed',
        "Domain = Room 1");
}
put('# end of the flow') while $lines + 1 < $wanted;
put('END');
