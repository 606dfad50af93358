# Units: which exist, which are compatible, and how numbers are converted.
use strict;
use warnings;
use Test::More;
use File::Temp ();

use VEL::Units;

is VEL::Units::load(), '', 'the unit system is there';

for my $unit ('kg s^-1', 'm/s', 'W m^-2 K^-1', 'C', 'F', 'J kg^-1 C^-1', '1', '%', 'mbar', 'kPa', 'mmHg',
    'rev min^-1', 'rpm', 'deg', 'um', 'kilometer', 'h', 'day', 'g cm^-3', 'kJ', 'inch', 'ft', 'psi', 'cP m^-1',
    'Celsius', 'degree_Celsius', 'degreesC', 'Btu', 'IT_Btu', 'US_liquid_pint', 'millimeter_Hg', 'ton_TNT') {
    ok VEL::Units::exists_unit($unit), "$unit is a unit";
}
for my $text ('', 'kg/m3', 'm s-1', '2 m', 'm@5', 'm.s', 'kkg', 'mmm', 'METER', 'Meter', 'meTeR', 'kiloMeter', 'DegC', 'HP', 'Kg', 'm^0', 'm^10', 'm//s',
    'm/s/s', ' m', 'm  s', 'furlog', 'lg(re m)', 'm since 2000') {
    ok !VEL::Units::exists_unit($text), qq("$text" is none);
}

subtest 'a text that is much too long' => sub {
    my @said;
    local $SIG{__WARN__} = sub { push @said, @_ };
    ok VEL::Units::exists_unit('m' . ' m^-1 m' x 20), 'many factors make a unit';
    ok !VEL::Units::exists_unit('m' . ' m' x 70_000), 'too many factors do not';
    is "@said", '', 'without warnings';
};

for my $pair (['m', 'ft'], ['kg s^-1', 'g h^-1'], ['C', 'K'], ['F', 'C'], ['Pa', 'bar'], ['N m', 'J'], ['%', '1'],
    ['rev min^-1', 'rad s^-1'], ['deg', 'rad'], ['mrad', 'deg'], ['arcmin', 'degrees'], ['rps', 'rev min^-1'], ['sr', 'rad^2'], ['W', 'kJ h^-1'],
    ['m', 'm']) {
    ok VEL::Units::is_convertible(@$pair), "$pair->[0] goes with $pair->[1]";
    ok VEL::Units::is_convertible(reverse @$pair), "$pair->[1] goes with $pair->[0]";
}
for my $pair (['m', 's'], ['s', 'Hz'], ['Hz', 'rad s^-1'], ['rad', '1'], ['%', 'deg'], ['rps', 'Hz'], ['mrad', 'ppm'],
    ['N m rad^-1', 'J'], ['nonsense', 'nonsense'],
    ['K', 'J']) {
    ok !VEL::Units::is_convertible(@$pair), "$pair->[0] does not go with $pair->[1]";
}

sub converts {
    my ($number, $from, $to, $expected) = @_;
    my $result = VEL::Units::convert($number, $from, $to);
    ok abs($result - $expected) <= 1e-12 * abs $expected, "$number $from is $expected $to"
        or diag "got $result";
    return;
}
converts(100, 'C',             'K',             373.15);
converts(212, 'F',             'C',             100);
converts(1,   'J kg^-1 F^-1',  'J kg^-1 K^-1',  1.8);
converts(50,  '%',             '1',             0.5);
converts(60,  'rev min^-1',    'rad s^-1',      2 * atan2(0, -1));
converts(2,   'rps',           'rev min^-1',    120);
converts(30,  'arcmin',        'deg',           0.5);
converts(1,   'ft',            'm',             0.3048);
converts(1.5, 'bar',           'Pa',            150000);
is VEL::Units::convert(1, 'm', 's'), undef, 'what cannot be converted';

# A folder with a locale whose decimal sign is a comma, where one can be made.
sub comma_locale {
    my $folder = File::Temp->newdir;
    system "localedef -i de_DE -f UTF-8 $folder/de_DE.UTF-8 >/dev/null 2>&1";
    return -e "$folder/de_DE.UTF-8/LC_NUMERIC" ? $folder : undef;
}

subtest 'with a locale that has a decimal comma' => sub {
    my $folder = comma_locale() or plan skip_all => 'no such locale can be made here';
    local $ENV{LOCPATH} = "$folder";
    my $said = qx{$^X -MPOSIX=setlocale,LC_ALL,LC_NUMERIC,localeconv -MVEL::Units -e '
        setlocale(LC_ALL, "de_DE.UTF-8");
        print localeconv()->{decimal_point}, VEL::Units::convert("1.5", "bar", "Pa"), setlocale(LC_NUMERIC)'};
    is $said, ',150000de_DE.UTF-8', 'the unit system loads and converts, the locale stays';
};

subtest 'nothing is printed while it loads' => sub {
    my $said = qx{$^X -w -MVEL::Units -e 'print VEL::Units::load()' 2>&1};
    is $said, '', 'on either stream';
};

subtest 'later messages are printed' => sub {
    my $said = qx{$^X -w -MVEL::Units -e 'VEL::Units::load();
        VEL::Units::ut_get_converter(VEL::Units::_unit("m"), VEL::Units::_unit("s"))' 2>&1};
    is $said, "ut_get_converter(): Units not convertible\n", 'of the unit system itself';
    $said = qx{$^X -w -MVEL::Units -e 'unshift \@INC, sub { warn "other noise\\n" if \$_[1] eq "FFI/Platypus.pm"; return };
        VEL::Units::load()' 2>&1};
    is $said, "other noise\n", 'unknown warnings';
};

subtest 'if the unit system cannot be loaded' => sub {
    my $script = <<'PERL';
        unshift @INC, sub { die "not here\n" if $_[1] eq 'FFI/Platypus.pm'; return };
        require API;
        my $api = API->new;
        $api->parseVELData([ 'RULES:', 'OBJECT: A', 'Required Parameters = S', 'PARAMETER: S', 'Type = Real',
            'Units = m', 'Lower Bound = 0 [cm]', 'Default = 1 [mm]', 'END', 'END', 'END' ], 1);
        $api->parseVELData([ 'A: a', 'S = 1 [kg]', 'END', 'A: b', 'END' ], 0);
        my $validator = VEL::Validate->new($api->{database});
        print join "\n", $api->{model}->rules->faults, $validator->setUnitsChecking(1),
            $validator->setBoundsChecking(1), map { $validator->validateObject("/A:$_") // 'right' } qw(a b);
PERL
    open my $child, '-|', $^X, '-w', '-e', $script or die $!;
    my $said = do { local $/ = undef; readline $child };
    is $said, <<'TEXT' =~ s/\n\z//r, 'the checks say so and stay off, the others work';
The unit system cannot be loaded: not here
The unit system cannot be loaded: not here
right
/A:b: required parameter "S" is missing [missing-parameter]
TEXT
};

done_testing;
